#include "commands/ShowAppsCommand.h"

#include "support/Locked.h"

namespace quester {
namespace {

Locked<std::shared_ptr<SearchDataSource>>& sharedDataSource() {
    static Locked<std::shared_ptr<SearchDataSource>> source;
    return source;
}

}  // namespace

CommandPtr ShowAppsCommand::create(std::string_view commandName, const VariableArguments&, const TemplateFlags&) {
    if (commandName == "listApps") return std::make_shared<ShowAppsCommand>(Category::apps);
    if (commandName == "listGames") return std::make_shared<ShowAppsCommand>(Category::games);
    return nullptr;
}

void ShowAppsCommand::setSharedDataSource(std::shared_ptr<SearchDataSource> source) {
    sharedDataSource().setValue(std::move(source));
}

std::vector<std::shared_ptr<SearchDataSource>> ShowAppsCommand::suppliedDataSources() const {
    auto source = sharedDataSource().value();
    if (!source) return {};
    return {std::move(source)};
}

}  // namespace quester
