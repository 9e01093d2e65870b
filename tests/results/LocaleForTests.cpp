#include <unicode/locid.h>

namespace {

// Sizes and collation follow the default locale; the tests expect English.
struct EnglishLocale {
    EnglishLocale() {
        UErrorCode status = U_ZERO_ERROR;
        icu::Locale::setDefault(icu::Locale("en_US"), status);
    }
} englishLocale;

}  // namespace
