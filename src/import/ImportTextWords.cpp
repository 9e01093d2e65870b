#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include "import/ImportText.h"
#include "language/UnicodeText.h"

// The word splitting of imported text, apart from the reader table in
// ImportText.cpp: the cache build and the content search split words in
// the main program, which must not pull the document readers (and the
// libraries they load) in with them.

namespace quester {

namespace {

constexpr std::size_t longestWord = 32;

// Joiners glue emoji and scripts into one character, so they never split.
bool splitsWords(UChar32 scalar) {
    if (scalar < 0) return true;
    if (scalar == 0x200C || scalar == 0x200D) return false;
    if (scalar >= 0xE000 && scalar <= 0xF8FF) return true;
    if (u_isUWhiteSpace(scalar)) return true;
    int8_t type = u_charType(scalar);
    return type == U_CONTROL_CHAR || type == U_FORMAT_CHAR || type == U_UNASSIGNED ||
           u_hasBinaryProperty(scalar, UCHAR_NONCHARACTER_CODE_POINT);
}

bool isCombiningMark(UChar32 scalar) {
    return (U_GET_GC_MASK(scalar) & U_GC_M_MASK) != 0;
}

bool isTrimmed(UChar32 scalar) {
    return (U_GET_GC_MASK(scalar) & (U_GC_P_MASK | U_GC_S_MASK)) != 0;
}

// `word` without punctuation and symbols at either end.
std::string_view trimmed(std::string_view word) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(word.data());
    int32_t length = static_cast<int32_t>(word.size());
    int32_t start = 0;
    while (start < length) {
        int32_t next = start;
        UChar32 scalar;
        U8_NEXT(bytes, next, length, scalar);
        if (!isTrimmed(scalar)) break;
        start = next;
    }
    int32_t end = length;
    while (end > start) {
        int32_t previous = end;
        UChar32 scalar;
        U8_PREV(bytes, start, previous, scalar);
        if (!isTrimmed(scalar)) break;
        end = previous;
    }
    return word.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start));
}

// Characters as a reader sees them: combining marks belong to the letter before.
std::size_t characterCount(std::string_view word) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(word.data());
    int32_t length = static_cast<int32_t>(word.size());
    std::size_t count = 0;
    for (int32_t index = 0; index < length;) {
        UChar32 scalar;
        U8_NEXT(bytes, index, length, scalar);
        if (!isCombiningMark(scalar)) ++count;
    }
    return count;
}

void addWord(std::string_view piece, std::string& lowered, std::vector<std::string>& words) {
    if (piece.empty()) return;
    lowercaseInto(piece, lowered);
    std::string_view word = trimmed(lowered);
    if (!word.empty() && characterCount(word) <= longestWord) words.emplace_back(word);
}

}  // namespace

std::vector<std::string> ImportText::wordsFromText(std::string_view text) {
    std::vector<std::string> words;
    std::string lowered;
    const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
    int32_t length = static_cast<int32_t>(text.size());
    int32_t pieceStart = 0;
    for (int32_t index = 0; index < length;) {
        int32_t start = index;
        UChar32 scalar;
        if (bytes[index] < 0x80) {
            scalar = bytes[index++];
        } else {
            U8_NEXT(bytes, index, length, scalar);
        }
        if (!splitsWords(scalar)) continue;
        // A mark on a separator makes a character that is not all separator.
        if (index < length && bytes[index] >= 0x80) {
            int32_t peek = index;
            UChar32 following;
            U8_NEXT(bytes, peek, length, following);
            if (following >= 0 && isCombiningMark(following)) continue;
        }
        addWord(text.substr(static_cast<std::size_t>(pieceStart), static_cast<std::size_t>(start - pieceStart)),
                lowered, words);
        pieceStart = index;
    }
    addWord(text.substr(static_cast<std::size_t>(pieceStart)), lowered, words);
    return words;
}

}  // namespace quester
