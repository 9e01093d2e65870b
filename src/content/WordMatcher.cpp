#include "content/WordMatcher.h"

#include <algorithm>

#include "language/UnicodeText.h"

namespace quester {

WordMatcher::WordMatcher(const std::vector<std::string>& words, bool allWords, bool caseSensitive)
    : allWords(allWords), caseSensitive(caseSensitive) {
    // A word of marks alone folds to nothing, and nothing is in every text.
    for (const std::string& word : words) {
        std::string needle = prepared(word);
        if (!needle.empty()) needles.push_back(std::move(needle));
    }
}

std::string WordMatcher::prepared(std::string_view text) const {
    return caseSensitive ? composed(text) : folded(text, true);
}

bool WordMatcher::matchesPrepared(std::string_view preparedText) const {
    const auto holds = [&](const std::string& needle) { return preparedText.find(needle) != std::string_view::npos; };
    return allWords ? std::all_of(needles.begin(), needles.end(), holds)
                    : std::any_of(needles.begin(), needles.end(), holds);
}

}  // namespace quester
