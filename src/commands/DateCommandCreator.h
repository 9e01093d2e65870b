#pragma once

#include "query/CommandFactory.h"

namespace quester {

// Makes a DateCommand from any of the date sentences. args[0] is always the
// DateCommandWhat; the values after it follow the command name (months, years
// and days as integers, time units, DateCommandWhen values). A date that
// can't be built makes no command.
class DateCommandCreator final : public CommandFactory {
public:
    std::vector<std::string> commandNames() const override;
    CommandPtr create(std::string_view commandName, const VariableArguments& args,
                      const TemplateFlags& flags) const override;

    // The words the auto-completion offers for dates.
    static const std::vector<std::string>& commandAutoCompletionWords();
};

}  // namespace quester
