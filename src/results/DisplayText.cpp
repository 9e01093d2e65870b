#include "results/DisplayText.h"

#include <unicode/locid.h>
#include <unicode/numberformatter.h>
#include <unicode/utf8.h>

#include <array>

#include "support/PathText.h"

namespace quester {

namespace {

struct ByteUnit {
    const char* name;
    double size;
    int fractionDigits;
};

// Kilobytes show whole numbers; larger units show more digits as they grow.
constexpr std::array<ByteUnit, 5> byteUnits{{
    {"PB", 1e15, 2},
    {"TB", 1e12, 2},
    {"GB", 1e9, 2},
    {"MB", 1e6, 1},
    {"KB", 1e3, 0},
}};

icu::number::LocalizedNumberFormatter numberFormatter(int fractionDigits) {
    return icu::number::NumberFormatter::withLocale(icu::Locale::getDefault())
        .precision(icu::number::Precision::maxFraction(fractionDigits))
        .roundingMode(UNUM_ROUND_HALFUP)
        .grouping(UNUM_GROUPING_AUTO);
}

// Every row formats its size: a formatter made for each call costs far more
// than the formatting, so each thread keeps one per precision in use.
std::string formatNumber(double value, int fractionDigits) {
    thread_local const std::array<icu::number::LocalizedNumberFormatter, 3> formatters{
        numberFormatter(0), numberFormatter(1), numberFormatter(2)};
    UErrorCode status = U_ZERO_ERROR;
    const auto& formatter = formatters.at(static_cast<std::size_t>(fractionDigits));
    const icu::UnicodeString text = formatter.formatDouble(value, status).toString(status);
    std::string utf8;
    if (U_SUCCESS(status)) text.toUTF8String(utf8);
    return utf8;
}

bool isControlCharacter(UChar32 c) {
    return c < 0x20 || (c >= 0x7f && c < 0xa0);
}

// `text` with each ill-formed sequence, and each scalar that `replaced`
// answers true for, as `replacement`.
template <typename Replaced>
std::string withReplacements(std::string_view text, std::string_view replacement, Replaced replaced) {
    std::string result;
    result.reserve(text.size());
    const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
    const auto length = static_cast<int32_t>(text.size());
    for (int32_t i = 0; i < length;) {
        const int32_t start = i;
        UChar32 c = 0;
        U8_NEXT(bytes, i, length, c);
        if (c < 0 || replaced(c)) {
            result += replacement;
        } else {
            result.append(text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(i - start)));
        }
    }
    return result;
}

}  // namespace

std::string nameWithoutExtension(std::string_view path) {
    std::string name = lastPathComponent(path);
    const std::string extension = pathExtension(name);
    if (!extension.empty()) name.resize(name.size() - extension.size() - 1);
    return name;
}

std::string fileSizeText(std::uint64_t bytes) {
    if (bytes == 1) return "1 byte";
    const double value = static_cast<double>(bytes);
    for (const auto& unit : byteUnits) {
        if (value >= unit.size) return formatNumber(value / unit.size, unit.fractionDigits) + " " + unit.name;
    }
    return formatNumber(value, 0) + " bytes";
}

std::string displaySizeText(std::uint64_t bytes) {
    return bytes == 0 ? "--" : fileSizeText(bytes);
}

std::string withReplacementCharacters(std::string_view text) {
    return withReplacements(text, "\uFFFD", [](UChar32) { return false; });
}

std::string terminalSafeText(std::string_view text) {
    return withReplacements(text, "?", isControlCharacter);
}

}  // namespace quester
