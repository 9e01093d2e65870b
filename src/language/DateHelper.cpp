#include "language/DateHelper.h"

#include <unicode/dtfmtsym.h>

#include "language/UnicodeText.h"

namespace quester {

namespace {

std::vector<std::string> namesOf(const icu::UnicodeString* names, int32_t count) {
    std::vector<std::string> result;
    for (int32_t i = 0; i < count && i < 12; ++i) {
        std::string text;
        names[i].toUTF8String(text);
        result.push_back(lowercased(text));
    }
    return result;
}

// Full and short month names of one locale; empty when ICU has none.
std::pair<std::vector<std::string>, std::vector<std::string>> monthNames(const icu::Locale& locale) {
    UErrorCode status = U_ZERO_ERROR;
    icu::DateFormatSymbols symbols(locale, status);
    if (U_FAILURE(status)) return {};
    int32_t fullCount = 0;
    int32_t shortCount = 0;
    const icu::UnicodeString* full = symbols.getMonths(fullCount);
    const icu::UnicodeString* abbreviated = symbols.getShortMonths(shortCount);
    return {namesOf(full, fullCount), namesOf(abbreviated, shortCount)};
}

}  // namespace

const DateHelper& DateHelper::shared() {
    static const DateHelper helper;
    return helper;
}

DateHelper::DateHelper() {
    auto [localFull, localShort] = monthNames(icu::Locale::getDefault());
    auto [englishFull, englishShort] = monthNames(icu::Locale::getEnglish());
    fullNames = localFull.size() == 12 ? localFull : englishFull;
    shortNames = localShort.size() == 12 ? localShort : englishShort;
    for (const auto* list : {&localFull, &localShort, &englishFull, &englishShort}) {
        for (size_t i = 0; i < list->size(); ++i) lookup.emplace_back((*list)[i], static_cast<int>(i) + 1);
    }
}

std::optional<int> DateHelper::monthIndexFromWord(std::string_view word) const {
    for (const auto& [name, index] : lookup) {
        if (name == word) return index;
    }
    return std::nullopt;
}

}  // namespace quester
