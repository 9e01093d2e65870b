#pragma once

#include "query/CommandBase.h"

namespace quester {

// Makes each search word match only a whole word of a name.
class WholeWords final : public CommandBase<WholeWords> {
public:
    std::string commandToString() const override { return "whole words"; }
    std::string commandExample() const override { return "whole words"; }
    CommandApplyResult commandImpApply(SearchResult&, SearchDataSourceDelegate*, const QueryContainer&) override {
        return CommandApplyResult::accept;
    }
    std::optional<AvailableHelpFileNames> helpFileName() const override { return AvailableHelpFileNames::WholeWords; }
    CommandRole commandRole() const override { return CommandRole::wholeWords; }
    bool sameParameters(const WholeWords&) const { return true; }
};

}  // namespace quester
