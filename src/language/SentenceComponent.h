#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quester {

// A half-open range of character indices, counted in user-perceived characters
// (grapheme clusters), never bytes: "é" typed as e + combining accent is one.
struct CharacterRange {
    int lowerBound = 0;
    int upperBound = 0;

    int length() const { return upperBound - lowerBound; }
    bool operator==(const CharacterRange&) const = default;
};

// One word of a typed sentence, as the tokeniser cut it. A plain value, cheap to
// copy apart from `parent`, which holds the one component a word was split from.
struct SentenceComponent {
    enum class Wildcard {
        none,
        prefix,  // typed "rep*": names beginning with the word
        suffix,  // typed "*.txt": names ending with the word
    };

    std::string textLowered;
    std::string textOriginalCase;
    CharacterRange position;  // quotes excluded
    bool isAfterAColon = false;
    bool wasInQuotes = false;
    std::vector<SentenceComponent> parent;  // zero or one entries
    Wildcard wildcard = Wildcard::none;

    bool operator==(const SentenceComponent& other) const;

    // Cuts `text` into words: blanks part words outside double quotes, `\"` is a
    // literal quote, "*" at either end sets the wildcard, the first unquoted ":"
    // starts the command area, and with `splitParens` "(" and ")" are words of
    // their own. Never fails: any text gives some list, maybe empty.
    static std::vector<SentenceComponent> parseWords(std::string_view text, const SentenceComponent* parent = nullptr,
                                                     bool splitParens = false);

    // "and", "or" in any case, or "NOT" typed in capitals; never a quoted word.
    bool isBooleanOperator() const;
};

// How a list of words starts with another: `numberOfWordsUsed` counts the words of
// the list (before quote expansion) that the match took.
struct SentenceCompareResult {
    bool matched = false;
    int numberOfWordsUsed = 0;
};

// Rebuilds a sentence: ": " before the first command-area word, quotes kept.
std::string toString(const std::vector<SentenceComponent>& words);

// Quoted phrases split into their single words, each knowing its phrase as parent.
std::vector<SentenceComponent> expandedQuotedItems(const std::vector<SentenceComponent>& words);

// Whether `words` starts with `other`, word by word, after expanding quotes on both.
SentenceCompareResult compare(std::span<const SentenceComponent> words, const std::vector<SentenceComponent>& other);

// Each word's position as (start, length).
std::vector<std::pair<int, int>> partLocationsToRanges(const std::vector<SentenceComponent>& words);

}  // namespace quester

template <>
struct std::hash<quester::SentenceComponent> {
    std::size_t operator()(const quester::SentenceComponent& component) const noexcept;
};
