#pragma once

#include "query/CommandBase.h"

namespace quester {

// Makes the search words, joined, match a whole name.
class ExactNameCommand final : public CommandBase<ExactNameCommand> {
public:
    std::string commandToString() const override { return "exact"; }
    std::string commandExample() const override { return "exact"; }
    CommandApplyResult commandImpApply(SearchResult&, SearchDataSourceDelegate*, const QueryContainer&) override {
        return CommandApplyResult::accept;
    }
    std::optional<AvailableHelpFileNames> helpFileName() const override { return AvailableHelpFileNames::ExactNames; }
    CommandRole commandRole() const override { return CommandRole::exactName; }
    bool sameParameters(const ExactNameCommand&) const { return true; }
};

}  // namespace quester
