#pragma once

#include "query/CommandBase.h"

namespace quester {

// Lets the search report hidden items; the search manager reads its presence.
class ShowInvisibleItems final : public CommandBase<ShowInvisibleItems> {
public:
    std::string commandToString() const override { return "show invisible items"; }
    std::string commandExample() const override { return "show invisible items"; }
    CommandApplyResult commandImpApply(SearchResult&, SearchDataSourceDelegate*, const QueryContainer&) override {
        return CommandApplyResult::accept;
    }
    bool commandIsOnlyAFilter() const override { return true; }
    std::optional<AvailableHelpFileNames> helpFileName() const override {
        return AvailableHelpFileNames::ShowInvisibleItems;
    }
    CommandRole commandRole() const override { return CommandRole::showInvisibleItems; }
    bool sameParameters(const ShowInvisibleItems&) const { return true; }
};

}  // namespace quester
