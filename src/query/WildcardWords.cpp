#include "query/WildcardWords.h"

#include "language/UnicodeText.h"
#include "query/SearchResult.h"
#include "support/PathText.h"

namespace quester {

namespace {

std::vector<std::string> blankSeparatedPieces(std::string_view name) {
    std::vector<std::string> pieces;
    size_t start = 0;
    while (start <= name.size()) {
        size_t end = name.find(' ', start);
        if (end == std::string_view::npos) end = name.size();
        if (end > start) pieces.push_back(lowercased(name.substr(start, end - start)));
        start = end + 1;
    }
    return pieces;
}

}  // namespace

WildcardWords::WildcardWords(std::vector<SentenceComponent> words) : wildcardWords(std::move(words)) {
    for (const auto& word : wildcardWords) {
        if (word.wildcard == SentenceComponent::Wildcard::prefix) prefixWords.push_back(word.textLowered);
        if (word.wildcard == SentenceComponent::Wildcard::suffix) suffixWords.push_back(word.textLowered);
    }
}

CommandApplyResult WildcardWords::commandImpApply(SearchResult& to, SearchDataSourceDelegate*, const QueryContainer&) {
    return checkWildCardsFor(lowercased(lastPathComponent(to.url.path())));
}

CommandApplyResult WildcardWords::checkWildCardsFor(std::string_view name) const {
    auto pieces = blankSeparatedPieces(name);
    if (prefixWords.size() == 1 && !name.starts_with(prefixWords.front())) return CommandApplyResult::exclude;
    if (suffixWords.size() == 1 && !name.ends_with(suffixWords.front())) return CommandApplyResult::exclude;
    for (const auto& piece : pieces) {
        for (const auto& prefix : prefixWords) {
            if (piece.find(prefix) != std::string::npos && !piece.starts_with(prefix))
                return CommandApplyResult::exclude;
        }
        for (const auto& suffix : suffixWords) {
            if (piece.find(suffix) != std::string::npos && !piece.ends_with(suffix)) return CommandApplyResult::exclude;
        }
    }
    return CommandApplyResult::accept;
}

}  // namespace quester
