#include "commands/FoldedText.h"

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <numeric>

#include "support/Utf8Text.h"

namespace quester {

namespace {

bool isMark(char32_t c) {
    return u_charType(static_cast<UChar32>(c)) == U_NON_SPACING_MARK;
}

bool isWordBoundary(char32_t c) {
    const auto scalar = static_cast<UChar32>(c);
    return u_isUWhiteSpace(scalar) || u_ispunct(scalar) || c == U'\n' || c == U'\r';
}

// One code point decomposed by compatibility, its marks dropped, and case
// folded when asked: "É" → "e", "ﬁ" → "fi", "ß" → "ss".
std::u32string foldCodePoint(char32_t c, bool foldCase) {
    if (c < 0x80) {
        if (foldCase && c >= U'A' && c <= U'Z') c += U'a' - U'A';
        return std::u32string(1, c);
    }
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* nfkd = icu::Normalizer2::getNFKDInstance(status);
    if (U_FAILURE(status)) return std::u32string(1, c);
    icu::UnicodeString decomposed = nfkd->normalize(icu::UnicodeString(static_cast<UChar32>(c)), status);
    if (U_FAILURE(status)) return std::u32string(1, c);
    icu::UnicodeString stripped;
    for (int32_t i = 0; i < decomposed.length(); i = decomposed.moveIndex32(i, 1)) {
        const UChar32 part = decomposed.char32At(i);
        if (!isMark(static_cast<char32_t>(part))) stripped.append(part);
    }
    if (foldCase) stripped.foldCase();
    std::u32string result;
    for (int32_t i = 0; i < stripped.length(); i = stripped.moveIndex32(i, 1)) {
        result += static_cast<char32_t>(stripped.char32At(i));
    }
    return result;
}

}  // namespace

FoldedText::FoldedText(std::u32string text, bool foldCase) : text(std::move(text)), foldCase(foldCase) {
    // An ASCII text folds character for character: the folded copy is as
    // long as the original and needs no list of where each character came from.
    if (asciiRunAt(0) == this->text.size()) {
        appendASCIIRun(0, this->text.size());
        return;
    }
    FoldCache cache;
    folded.reserve(this->text.size());
    origin.reserve(this->text.size());
    for (std::size_t index = 0; index < this->text.size();) {
        // Most of most documents is ASCII: it folds in place a run at a time,
        // with no lookup.
        if (const std::size_t run = asciiRunAt(index); run > 0) {
            appendASCIIRun(index, run);
            origin.resize(origin.size() + run);
            std::iota(origin.end() - static_cast<std::ptrdiff_t>(run), origin.end(), static_cast<std::uint32_t>(index));
            index += run;
            continue;
        }
        const std::u32string piece = fold(std::u32string_view(&this->text[index], 1), cache);
        folded += piece;
        origin.insert(origin.end(), piece.size(), static_cast<std::uint32_t>(index));
        ++index;
    }
}

std::size_t FoldedText::asciiRunAt(std::size_t start) const {
    const auto begin = text.begin() + static_cast<std::ptrdiff_t>(start);
    return static_cast<std::size_t>(std::find_if(begin, text.end(), [](char32_t c) { return c >= 0x80; }) - begin);
}

void FoldedText::appendASCIIRun(std::size_t start, std::size_t length) {
    const std::size_t at = folded.size();
    folded.resize(at + length);
    const char32_t caseShift = foldCase ? U'a' - U'A' : 0;
    for (std::size_t i = 0; i < length; ++i) {
        const char32_t c = text[start + i];
        folded[at + i] = c + (c - U'A' < 26 ? caseShift : 0);
    }
}

std::size_t FoldedText::originOf(std::size_t foldedIndex) const {
    return origin.empty() ? foldedIndex : origin[foldedIndex];
}

std::u32string FoldedText::fold(std::u32string_view piece, FoldCache& cache) const {
    std::u32string result;
    for (char32_t c : piece) {
        if (c < 0x80) {
            result += foldCodePoint(c, foldCase);
            continue;
        }
        auto known = cache.find(c);
        if (known == cache.end()) known = cache.emplace(c, foldCodePoint(c, foldCase)).first;
        result += known->second;
    }
    return result;
}

// A hit that starts or ends inside what one original character folded to
// covers that whole character, and the marks that follow it.
std::optional<TextRange> FoldedText::rangeAt(std::size_t foldedStart, std::size_t foldedLength) const {
    if (foldedLength == 0) return std::nullopt;
    TextRange range{originOf(foldedStart), originOf(foldedStart + foldedLength - 1) + 1};
    while (range.end < text.size() && isMark(text[range.end])) ++range.end;
    return range;
}

std::vector<TextRange> FoldedText::rangesOf(std::string_view word, bool wholeWords) const {
    FoldCache cache;
    const std::u32string needle = fold(decode(word), cache);
    std::vector<TextRange> ranges;
    if (needle.empty()) return ranges;
    for (std::size_t at = folded.find(needle); at != std::u32string::npos;
         at = folded.find(needle, at + needle.size())) {
        const TextRange range = *rangeAt(at, needle.size());
        if (!wholeWords || isWholeWord(range)) ranges.push_back(range);
    }
    return ranges;
}

std::optional<TextRange> FoldedText::firstRangeOf(std::string_view word) const {
    FoldCache cache;
    const std::u32string needle = fold(decode(word), cache);
    if (needle.empty()) return std::nullopt;
    const std::size_t at = folded.find(needle);
    if (at == std::u32string::npos) return std::nullopt;
    return rangeAt(at, needle.size());
}

bool FoldedText::isWholeWord(TextRange range) const {
    const bool startsAlone = range.start == 0 || isWordBoundary(text[range.start - 1]);
    return startsAlone && (range.end >= text.size() || isWordBoundary(text[range.end]));
}

std::u32string FoldedText::decode(std::string_view utf8) {
    // An ASCII start widens byte by byte, as vector code; the rest, if any,
    // goes through the decoder.
    const std::size_t asciiLength = asciiPrefixLength(utf8);
    std::u32string decoded(asciiLength, U'\0');
    for (std::size_t i = 0; i < asciiLength; ++i) decoded[i] = static_cast<unsigned char>(utf8[i]);
    if (asciiLength == utf8.size()) return decoded;
    decoded.reserve(utf8.size());
    const auto* bytes = reinterpret_cast<const uint8_t*>(utf8.data());
    const auto length = static_cast<int32_t>(utf8.size());
    for (auto offset = static_cast<int32_t>(asciiLength); offset < length;) {
        UChar32 c = 0;
        U8_NEXT(bytes, offset, length, c);
        decoded += c < 0 ? U'\uFFFD' : static_cast<char32_t>(c);
    }
    return decoded;
}

std::string FoldedText::encode(std::u32string_view text) {
    std::string encoded;
    encoded.reserve(text.size());
    for (char32_t c : text) {
        uint8_t bytes[U8_MAX_LENGTH];
        int32_t length = 0;
        UBool failed = false;
        U8_APPEND(bytes, length, U8_MAX_LENGTH, static_cast<UChar32>(c), failed);
        if (failed) continue;
        encoded.append(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length));
    }
    return encoded;
}

}  // namespace quester
