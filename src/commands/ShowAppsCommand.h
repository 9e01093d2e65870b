#pragma once

#include "query/CommandBase.h"

namespace quester {

// Lists the applications ("show apps") or games ("show games") of the machine.
// The list is kept by one shared source of the sources layer, which stands
// above this one: that source enters itself here when it is made
// (`setSharedDataSource`), and every command of this class supplies it.
class ShowAppsCommand final : public CommandBase<ShowAppsCommand> {
public:
    enum class Category { apps, games };

    // "listApps" or "listGames".
    static CommandPtr create(std::string_view commandName, const VariableArguments& args, const TemplateFlags& flags);

    // The source that lists the applications; any thread. Until one is set the
    // command supplies none, and a query of it alone has nothing to search.
    static void setSharedDataSource(std::shared_ptr<SearchDataSource> source);

    explicit ShowAppsCommand(Category category) : category(category) {}

    std::string commandToString() const override { return "apps"; }
    std::string commandExample() const override { return "show apps"; }
    CommandApplyResult commandImpApply(SearchResult&, SearchDataSourceDelegate*, const QueryContainer&) override {
        return CommandApplyResult::skip;
    }
    bool commandStopsWordBasedSearches() const override { return stopsWordBasedSearches; }
    std::vector<std::shared_ptr<SearchDataSource>> suppliedDataSources() const override;
    std::optional<AvailableHelpFileNames> helpFileName() const override { return AvailableHelpFileNames::ShowApps; }
    bool sameParameters(const ShowAppsCommand&) const { return true; }

    Category category;
    bool stopsWordBasedSearches = true;
};

}  // namespace quester
