#pragma once

#include "query/CommandBase.h"

namespace quester {

// A command that tests nothing: a query with it and no words lists everything.
class ShowAllFiles final : public CommandBase<ShowAllFiles> {
public:
    std::string commandToString() const override { return "show all files"; }
    std::string commandExample() const override { return "show all files"; }
    CommandApplyResult commandImpApply(SearchResult&, SearchDataSourceDelegate*, const QueryContainer&) override {
        return CommandApplyResult::accept;
    }
    std::optional<AvailableHelpFileNames> helpFileName() const override { return std::nullopt; }
    bool sameParameters(const ShowAllFiles&) const { return true; }
};

}  // namespace quester
