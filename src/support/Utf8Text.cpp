#include "support/Utf8Text.h"

#include <unicode/utf8.h>

#include <cstdint>

namespace quester {

bool isValidUTF8(std::string_view text) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto length = static_cast<std::int32_t>(text.size());
    for (std::int32_t index = 0; index < length;) {
        UChar32 scalar = 0;
        U8_NEXT(bytes, index, length, scalar);
        if (scalar < 0) return false;
    }
    return true;
}

std::string repairedUTF8(std::string_view text) {
    std::string repaired;
    repaired.reserve(text.size());
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto length = static_cast<std::int32_t>(text.size());
    for (std::int32_t index = 0; index < length;) {
        const std::int32_t start = index;
        UChar32 scalar = 0;
        U8_NEXT(bytes, index, length, scalar);
        if (scalar < 0) {
            repaired += "\uFFFD";
        } else {
            repaired.append(text.data() + start, static_cast<std::size_t>(index - start));
        }
    }
    return repaired;
}

}  // namespace quester
