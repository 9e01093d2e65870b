#include "commands/LockedCommand.h"

namespace quester {

CommandPtr LockedCommand::create(std::string_view commandName, const VariableArguments&, const TemplateFlags&) {
    if (commandName == "locked") return std::make_shared<LockedCommand>(false);
    if (commandName == "lockedExcluding") return std::make_shared<LockedCommand>(true);
    return nullptr;
}

}  // namespace quester
