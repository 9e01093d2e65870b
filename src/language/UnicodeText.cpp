#include "language/UnicodeText.h"

#include <unicode/brkiter.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utext.h>
#include <unicode/utf8.h>

#include <memory>

#include "support/Utf8Text.h"

namespace quester {

namespace {

// One character break iterator per thread: creating one costs far more than a parse.
icu::BreakIterator* characterIterator() {
    thread_local std::unique_ptr<icu::BreakIterator> iterator = [] {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::BreakIterator> made(
            icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
        return U_SUCCESS(status) ? std::move(made) : nullptr;
    }();
    return iterator.get();
}

// Cuts at code points when no break iterator is at hand, so text still splits.
std::vector<std::string_view> codePoints(std::string_view text) {
    std::vector<std::string_view> result;
    int32_t i = 0;
    const auto length = static_cast<int32_t>(text.size());
    while (i < length) {
        const int32_t start = i;
        UChar32 c;
        U8_NEXT(text.data(), i, length, c);
        (void)c;
        result.push_back(text.substr(static_cast<size_t>(start), static_cast<size_t>(i - start)));
    }
    return result;
}

// ASCII has no clusters but CR LF, which is all most queries hold.
std::vector<std::string_view> asciiGraphemes(std::string_view text) {
    std::vector<std::string_view> result;
    result.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        const size_t width = (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ? 2 : 1;
        result.push_back(text.substr(i, width));
        i += width - 1;
    }
    return result;
}

std::string toUtf8(const icu::UnicodeString& text) {
    std::string out;
    text.toUTF8String(out);
    return out;
}

// Canonically equal texts in one form (NFC): an "é" typed as one character and
// one stored as "e" and a combining accent, as some file systems and copies
// leave names, compare equal. Text already composed, nearly all, isn't copied.
void compose(icu::UnicodeString& text) {
    UErrorCode status = U_ZERO_ERROR;
    static const icu::Normalizer2* const nfc = icu::Normalizer2::getNFCInstance(status);
    if (nfc == nullptr || nfc->isNormalized(text, status) || U_FAILURE(status)) return;
    icu::UnicodeString normal = nfc->normalize(text, status);
    if (U_SUCCESS(status)) text = std::move(normal);
}

}  // namespace

std::vector<std::string_view> graphemes(std::string_view text) {
    if (isASCII(text)) return asciiGraphemes(text);
    icu::BreakIterator* iterator = characterIterator();
    if (iterator == nullptr) return codePoints(text);
    UErrorCode status = U_ZERO_ERROR;
    UText* utext = utext_openUTF8(nullptr, text.data(), static_cast<int64_t>(text.size()), &status);
    if (U_FAILURE(status)) return codePoints(text);
    iterator->setText(utext, status);
    std::vector<std::string_view> result;
    if (U_SUCCESS(status)) {
        int32_t start = iterator->first();
        for (int32_t end = iterator->next(); end != icu::BreakIterator::DONE; start = end, end = iterator->next()) {
            result.push_back(text.substr(static_cast<size_t>(start), static_cast<size_t>(end - start)));
        }
    }
    utext_close(utext);
    return U_SUCCESS(status) ? result : codePoints(text);
}

int graphemeCount(std::string_view text) {
    if (isASCII(text)) return static_cast<int>(asciiGraphemes(text).size());
    return static_cast<int>(graphemes(text).size());
}

namespace {

// Non-ASCII `text` read by ICU, lowered when asked, composed, and written to
// `out`, whose room is reused.
void composeThroughICU(std::string_view text, bool lower, std::string& out) {
    icu::UnicodeString unicode =
        icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
    if (lower) unicode.toLower(icu::Locale::getRoot());
    compose(unicode);
    out.clear();
    unicode.toUTF8String(out);
}

}  // namespace

std::string lowercased(std::string_view text) {
    std::string out;
    lowercaseInto(text, out);
    return out;
}

void lowercaseInto(std::string_view text, std::string& out) {
    if (!isASCII(text)) return composeThroughICU(text, true, out);
    out.assign(text);
    for (char& c : out) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
}

std::string composed(std::string_view text) {
    std::string scratch;
    return std::string(composeInto(text, scratch));
}

std::string_view composeInto(std::string_view text, std::string& scratch) {
    if (isASCII(text)) return text;
    composeThroughICU(text, false, scratch);
    return scratch;
}

std::string folded(std::string_view text, bool foldCase) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* nfkd = icu::Normalizer2::getNFKDInstance(status);
    const icu::Normalizer2* nfc = icu::Normalizer2::getNFCInstance(status);
    if (U_FAILURE(status)) return foldCase ? lowercased(text) : std::string(text);
    icu::UnicodeString unicode =
        icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
    icu::UnicodeString decomposed = nfkd->normalize(unicode, status);
    icu::UnicodeString stripped;
    for (int32_t i = 0; i < decomposed.length();) {
        const UChar32 c = decomposed.char32At(i);
        if (u_charType(c) != U_NON_SPACING_MARK) stripped.append(c);
        i += U16_LENGTH(c);
    }
    if (foldCase) stripped.foldCase();
    icu::UnicodeString composed = nfc->normalize(stripped, status);
    return U_SUCCESS(status) ? toUtf8(composed) : toUtf8(stripped);
}

bool beginsWithWhiteSpace(std::string_view character) {
    if (character.empty()) return false;
    int32_t i = 0;
    UChar32 c;
    U8_NEXT(character.data(), i, static_cast<int32_t>(character.size()), c);
    return c >= 0 && (u_isUWhiteSpace(c) || c == '\n' || c == '\r');
}

}  // namespace quester
