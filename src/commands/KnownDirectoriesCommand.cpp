#include "commands/KnownDirectoriesCommand.h"

#include "query/QuerySearchArguments.h"

namespace quester {

CommandPtr KnownDirectoriesCommand::create(std::string_view commandName, const VariableArguments& args,
                                           const TemplateFlags&) {
    const auto* path = argumentAt<std::string>(args, 0);
    if (!path) return nullptr;
    if (commandName == "remembered") return std::make_shared<KnownDirectoriesCommand>(*path, false);
    if (commandName == "rememberedShallow") return std::make_shared<KnownDirectoriesCommand>(*path, true);
    return nullptr;
}

// The folder is listed directly, so its items count as inside any location.
void KnownDirectoriesCommand::commandImpQuerySearchArguments(QuerySearchArguments& to) const {
    to.checkPathForResults = false;
}

}  // namespace quester
