#include "language/SpelledNumber.h"

#include <unicode/rbnf.h>

#include <charconv>
#include <memory>

namespace quester {

namespace {

// Formatters are not safe to share between threads; one per thread, made once.
icu::RuleBasedNumberFormat* spellOutFormat() {
    thread_local std::unique_ptr<icu::RuleBasedNumberFormat> format = [] {
        UErrorCode status = U_ZERO_ERROR;
        auto made =
            std::make_unique<icu::RuleBasedNumberFormat>(icu::URBNF_SPELLOUT, icu::Locale::getEnglish(), status);
        if (U_FAILURE(status)) return std::unique_ptr<icu::RuleBasedNumberFormat>();
        // Lenient parsing reads "twenty five" as 25; strict parsing as 2005.
        made->setLenient(true);
        return made;
    }();
    return format.get();
}

bool hasDigit(std::string_view text) {
    for (char c : text) {
        if (c >= '0' && c <= '9') return true;
    }
    return false;
}

std::optional<double> decimalNumber(std::string_view text) {
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    double value = 0;
    const auto [last, error] = std::from_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
    if (error != std::errc() || last != text.data() + text.size()) return std::nullopt;
    return value;
}

}  // namespace

std::optional<double> spelledNumber(std::string_view text) {
    if (text.empty()) return std::nullopt;
    if (hasDigit(text)) return decimalNumber(text);
    icu::RuleBasedNumberFormat* format = spellOutFormat();
    if (format == nullptr) return std::nullopt;
    const icu::UnicodeString unicode =
        icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
    icu::Formattable result;
    icu::ParsePosition position(0);
    format->parse(unicode, result, position);
    if (position.getIndex() != unicode.length()) return std::nullopt;
    UErrorCode status = U_ZERO_ERROR;
    const double value = result.getDouble(status);
    if (U_FAILURE(status)) return std::nullopt;
    return value;
}

}  // namespace quester
