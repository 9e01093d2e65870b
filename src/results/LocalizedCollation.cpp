#include "results/LocalizedCollation.h"

#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <memory>
#include <vector>

namespace quester {

namespace {

// The default locale without a variant: the "POSIX" variant, which a C or
// POSIX environment gives, collates in code point order, capitals first.
icu::Locale collationLocale() {
    const icu::Locale& locale = icu::Locale::getDefault();
    return icu::Locale(locale.getLanguage(), locale.getCountry());
}

std::unique_ptr<icu::Collator> makeCollator(bool numeric) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Collator> collator(icu::Collator::createInstance(collationLocale(), status));
    if (U_FAILURE(status) || !collator) {
        status = U_ZERO_ERROR;
        collator.reset(icu::Collator::createInstance(icu::Locale::getRoot(), status));
    }
    // Secondary strength keeps accents apart and lets case go.
    collator->setStrength(icu::Collator::SECONDARY);
    collator->setAttribute(UCOL_NUMERIC_COLLATION, numeric ? UCOL_ON : UCOL_OFF, status);
    return collator;
}

std::string sortKey(const icu::Collator& collator, std::string_view text) {
    const icu::UnicodeString unicode =
        icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
    std::vector<uint8_t> buffer(64 + static_cast<std::size_t>(unicode.length()) * 4);
    int32_t length = collator.getSortKey(unicode, buffer.data(), static_cast<int32_t>(buffer.size()));
    if (length > static_cast<int32_t>(buffer.size())) {
        buffer.resize(static_cast<std::size_t>(length));
        length = collator.getSortKey(unicode, buffer.data(), length);
    }
    // The key ends in a zero byte, which adds nothing to an ordering.
    if (length > 0) --length;
    return std::string(reinterpret_cast<const char*>(buffer.data()), static_cast<std::size_t>(length));
}

const icu::Collator& standardCollator() {
    thread_local const std::unique_ptr<icu::Collator> collator = makeCollator(true);
    return *collator;
}

const icu::Collator& caseInsensitiveCollator() {
    thread_local const std::unique_ptr<icu::Collator> collator = makeCollator(false);
    return *collator;
}

}  // namespace

std::string LocalizedCollation::standardKey(std::string_view text) {
    return sortKey(standardCollator(), text);
}

std::string LocalizedCollation::caseInsensitiveKey(std::string_view text) {
    return sortKey(caseInsensitiveCollator(), text);
}

int LocalizedCollation::localizedStandardCompare(std::string_view a, std::string_view b) {
    return standardKey(a).compare(standardKey(b));
}

}  // namespace quester
