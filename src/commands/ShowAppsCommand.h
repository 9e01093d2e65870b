#pragma once

#include "query/CommandBase.h"

namespace quester {

// Lists the applications ("show apps") or games ("show games") of the machine.
// The application list is a source of its own, which the apps subsystem wires in.
class ShowAppsCommand final : public CommandBase<ShowAppsCommand> {
public:
    enum class Category { apps, games };

    // "listApps" or "listGames".
    static CommandPtr create(std::string_view commandName, const VariableArguments& args, const TemplateFlags& flags);

    explicit ShowAppsCommand(Category category) : category(category) {}

    std::string commandToString() const override { return "apps"; }
    std::string commandExample() const override { return "show apps"; }
    CommandApplyResult commandImpApply(SearchResult&, SearchDataSourceDelegate*, const QueryContainer&) override {
        return CommandApplyResult::skip;
    }
    bool commandStopsWordBasedSearches() const override { return stopsWordBasedSearches; }
    std::optional<AvailableHelpFileNames> helpFileName() const override { return AvailableHelpFileNames::ShowApps; }
    bool sameParameters(const ShowAppsCommand&) const { return true; }

    Category category;
    bool stopsWordBasedSearches = true;
};

}  // namespace quester
