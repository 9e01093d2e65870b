#pragma once

#include "query/CommandBase.h"

namespace quester {

// Makes the search words match names in the case typed.
class CaseSensitive final : public CommandBase<CaseSensitive> {
public:
    std::string commandToString() const override { return "case sensitive"; }
    std::string commandExample() const override { return "case sensitive"; }
    CommandApplyResult commandImpApply(SearchResult&, SearchDataSourceDelegate*, const QueryContainer&) override {
        return CommandApplyResult::accept;
    }
    bool commandIsOnlyAFilter() const override { return true; }
    std::optional<AvailableHelpFileNames> helpFileName() const override {
        return AvailableHelpFileNames::CaseSensitivity;
    }
    bool sameParameters(const CaseSensitive&) const { return true; }
    CommandRole commandRole() const override { return CommandRole::caseSensitive; }
};

}  // namespace quester
