#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "language/SentenceComponent.h"
#include "query/CommandBase.h"

namespace quester {

// The search words typed with a "*" ("rep*", "*.txt"). The query container makes
// it; it has no wording of its own and never replaces another command.
class WildcardWords final : public CommandBase<WildcardWords> {
public:
    explicit WildcardWords(std::vector<SentenceComponent> words);

    std::string commandToString() const override { return {}; }
    std::string commandExample() const override { return {}; }
    CommandApplyResult commandImpApply(SearchResult& to, SearchDataSourceDelegate* feedback,
                                       const QueryContainer& forQuery) override;
    bool commandIsOnlyAFilter() const override { return true; }
    std::optional<AvailableHelpFileNames> helpFileName() const override { return AvailableHelpFileNames::Wildcards; }
    bool sameParameters(const WildcardWords&) const { return false; }

    // The test on a lower-case file name: with exactly one prefix (suffix) the
    // name must begin (end) with it, and no blank-separated piece may hold a
    // prefix anywhere but at its start, or a suffix anywhere but at its end.
    CommandApplyResult checkWildCardsFor(std::string_view name) const;

    const std::vector<SentenceComponent>& words() const { return wildcardWords; }
    const std::vector<std::string>& prefixes() const { return prefixWords; }
    const std::vector<std::string>& suffixes() const { return suffixWords; }

private:
    std::vector<SentenceComponent> wildcardWords;
    std::vector<std::string> prefixWords;
    std::vector<std::string> suffixWords;
};

}  // namespace quester
