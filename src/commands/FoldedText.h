#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace quester {

// A half-open range of a text in Unicode code points.
struct TextRange {
    std::size_t start = 0;
    std::size_t end = 0;

    bool operator==(const TextRange&) const = default;
};

// A text for word search that ignores diacritics ("cafe" finds "café", typed
// composed or with a combining accent) and, unless asked to keep it, case.
// Holds the text as code points and a folded copy with, for each of its code
// points, the original one it came from, so that a hit in the folded copy
// maps back to a range of the original. Const after construction.
class FoldedText {
public:
    FoldedText(std::u32string text, bool foldCase);

    const std::u32string& original() const { return text; }

    // Every hit of `word`, each search beginning behind the last hit; with
    // `wholeWords` a hit counts only when it stands alone and the search goes
    // on behind one that doesn't.
    std::vector<TextRange> rangesOf(std::string_view word, bool wholeWords) const;
    // The first hit of `word`, whole or not.
    std::optional<TextRange> firstRangeOf(std::string_view word) const;
    // Whether the characters around `range`, where there are any, are white
    // space, line breaks or punctuation.
    bool isWholeWord(TextRange range) const;

    // UTF-8 as code points, a bad byte read as U+FFFD.
    static std::u32string decode(std::string_view utf8);
    static std::string encode(std::u32string_view text);

private:
    using FoldCache = std::unordered_map<char32_t, std::u32string>;

    std::u32string fold(std::u32string_view piece, FoldCache& cache) const;
    std::size_t asciiRunAt(std::size_t start) const;
    void appendASCIIRun(std::size_t start, std::size_t length);
    std::size_t originOf(std::size_t foldedIndex) const;
    std::optional<TextRange> rangeAt(std::size_t foldedStart, std::size_t foldedLength) const;

    std::u32string text;
    bool foldCase;
    std::u32string folded;
    // 32 bits: a document's text is far below 4 billion code points, and this
    // list is as long as the text. Empty when the text is ASCII: then each
    // folded character stands where its original does.
    std::vector<std::uint32_t> origin;
};

}  // namespace quester
