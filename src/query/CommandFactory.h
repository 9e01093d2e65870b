#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "language/VariableParserResult.h"
#include "query/Command.h"

namespace quester {

// Turns a matched template into a command. Factories are immutable values made
// once; `create` may run on any thread.
class CommandFactory {
public:
    virtual ~CommandFactory() = default;

    // The template command names this factory serves.
    virtual std::vector<std::string> commandNames() const = 0;

    // The command for `commandName` made from the values of the template's variables
    // (`args`, in template order, see VariableParserResult.h) and its flags. Null when
    // the arguments make no command: no error, the words just stay unrecognised.
    virtual CommandPtr create(std::string_view commandName, const VariableArguments& args,
                              const TemplateFlags& flags) const = 0;

    bool implementsCommand(std::string_view name) const {
        auto names = commandNames();
        return std::find(names.begin(), names.end(), name) != names.end();
    }
};

// The ordered table of factories: for a name served twice, the first wins.
using CommandFactories = std::vector<std::shared_ptr<const CommandFactory>>;

}  // namespace quester
