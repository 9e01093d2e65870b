#pragma once

#include "commands/LengthLimit.h"
#include "query/CommandBase.h"

namespace quester {

// A bound on the length of the item's name: "max name length 20", "min name length 5".
class NameLengthCommand final : public CommandBase<NameLengthCommand> {
public:
    // "nameMaxLength" or "nameMinLength"; args[0] is the integer count.
    static CommandPtr create(std::string_view commandName, const VariableArguments& args, const TemplateFlags& flags);

    NameLengthCommand(LengthChoice choice, int count) : choice(choice), count(count) {}

    std::string commandToString() const override { return lengthCommandText("name", choice, count, false); }
    std::string commandExample() const override { return lengthCommandText("name", choice, count, true); }
    CommandApplyResult commandImpApply(SearchResult& to, SearchDataSourceDelegate* feedback,
                                       const QueryContainer& forQuery) override;
    bool commandSupportsBooleanCombination() const override { return true; }
    std::optional<AvailableHelpFileNames> helpFileName() const override { return AvailableHelpFileNames::NamePathLength; }
    bool sameParameters(const NameLengthCommand& other) const { return choice == other.choice; }

    LengthChoice choice;
    int count;
};

}  // namespace quester
