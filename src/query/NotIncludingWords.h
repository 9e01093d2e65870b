#pragma once

#include <string>
#include <vector>

#include "query/CommandBase.h"

namespace quester {

// The words typed with a leading minus before the colon ("-dogs"). The query
// container makes it; in a search its effect comes through the query's boolean
// expression, where each such word stands under a NOT.
class NotIncludingWords final : public CommandBase<NotIncludingWords> {
public:
    explicit NotIncludingWords(std::vector<std::string> rawWords);

    std::string commandToString() const override;
    std::string commandExample() const override { return "-dogs"; }
    CommandApplyResult commandImpApply(SearchResult& to, SearchDataSourceDelegate* feedback,
                                       const QueryContainer& forQuery) override;
    bool commandIsOnlyAFilter() const override { return true; }
    std::optional<AvailableHelpFileNames> helpFileName() const override { return AvailableHelpFileNames::NOT; }
    // Made from the words alone, never an editor row: it replaces nothing.
    bool sameParameters(const NotIncludingWords&) const { return false; }

    const std::vector<std::string>& rawWords() const { return raw; }
    // The words without their minus, lower-case.
    const std::vector<std::string>& words() const { return excluded; }

private:
    std::vector<std::string> raw;
    std::vector<std::string> excluded;
};

}  // namespace quester
