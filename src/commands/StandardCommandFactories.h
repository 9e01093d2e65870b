#pragma once

#include <functional>
#include <string>
#include <vector>

#include "query/CommandFactory.h"

namespace quester {

// A factory made of its name, the template command names it serves and a
// function that builds the command.
class FunctionCommandFactory final : public CommandFactory {
public:
    using CreateFunction = std::function<CommandPtr(std::string_view commandName, const VariableArguments& args,
                                                    const TemplateFlags& flags)>;

    FunctionCommandFactory(std::string factoryName, std::vector<std::string> names, CreateFunction function)
        : factoryName(std::move(factoryName)), names(std::move(names)), function(std::move(function)) {}

    const std::string& name() const { return factoryName; }
    std::vector<std::string> commandNames() const override { return names; }
    CommandPtr create(std::string_view commandName, const VariableArguments& args,
                      const TemplateFlags& flags) const override;

private:
    std::string factoryName;
    std::vector<std::string> names;
    CreateFunction function;
};

// The fixed, ordered table of the 27 factories of the language, built once on
// first use and read-only after. For a command name two factories serve, the
// earlier wins.
const CommandFactories& standardCommandFactories();

}  // namespace quester
