#include "commands/ShowAppsCommand.h"

namespace quester {

CommandPtr ShowAppsCommand::create(std::string_view commandName, const VariableArguments&, const TemplateFlags&) {
    if (commandName == "listApps") return std::make_shared<ShowAppsCommand>(Category::apps);
    if (commandName == "listGames") return std::make_shared<ShowAppsCommand>(Category::games);
    return nullptr;
}

}  // namespace quester
