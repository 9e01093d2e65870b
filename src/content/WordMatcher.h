#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quester {

// Tests texts for search words the way container searches compare: without
// regard to case and diacritics, or exactly (canonically equal texts still
// equal) when case-sensitive. Words are prepared once; empty ones are dropped.
// Immutable after construction, so one matcher may serve several threads.
class WordMatcher {
public:
    WordMatcher(const std::vector<std::string>& words, bool allWords, bool caseSensitive);

    // False when every word was empty: such a search finds nothing.
    bool hasWords() const { return !needles.empty(); }
    // Whether `text` holds any word, or every word with `allWords`.
    bool matches(std::string_view text) const { return matchesPrepared(prepared(text)); }
    // `text` in the form the words are compared in. Preparing is the costly
    // part, and prepared texts joined by a newline are the prepared form of
    // the joined texts, so a caller testing parts and their whole prepares
    // each part once.
    std::string prepared(std::string_view text) const;
    // `matches` for a text that went through `prepared`.
    bool matchesPrepared(std::string_view preparedText) const;

private:
    std::vector<std::string> needles;
    bool allWords;
    bool caseSensitive;
};

}  // namespace quester
