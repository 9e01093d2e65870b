#include "query/NotIncludingWords.h"

#include "language/UnicodeText.h"
#include "query/SearchResult.h"
#include "support/PathText.h"

namespace quester {

NotIncludingWords::NotIncludingWords(std::vector<std::string> rawWords) : raw(std::move(rawWords)) {
    for (const auto& word : raw) excluded.push_back(lowercased(word.starts_with('-') ? word.substr(1) : word));
}

std::string NotIncludingWords::commandToString() const {
    std::string text;
    for (const auto& word : excluded) {
        if (!text.empty()) text += ' ';
        text += "-" + word;
    }
    return text;
}

CommandApplyResult NotIncludingWords::commandImpApply(SearchResult& to, SearchDataSourceDelegate*,
                                                      const QueryContainer&) {
    std::string name = lowercased(lastPathComponent(to.url.path()));
    for (const auto& word : excluded) {
        if (name.find(word) != std::string::npos) return CommandApplyResult::exclude;
    }
    return CommandApplyResult::accept;
}

}  // namespace quester
