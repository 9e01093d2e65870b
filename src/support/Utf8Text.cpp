#include "support/Utf8Text.h"

#include <unicode/utf8.h>

#include <cstdint>
#include <cstring>

namespace quester {

// Documents are mostly ASCII: runs of it are passed over 32 bytes at a time,
// which the compiler turns into vector loads.
std::size_t asciiPrefixLength(std::string_view text) {
    constexpr std::uint64_t highBits = 0x8080808080808080ULL;
    const char* data = text.data();
    std::size_t index = 0;
    for (; index + 32 <= text.size(); index += 32) {
        std::uint64_t words[4];
        std::memcpy(words, data + index, sizeof words);
        if (((words[0] | words[1] | words[2] | words[3]) & highBits) != 0) break;
    }
    while (index < text.size() && static_cast<unsigned char>(data[index]) < 0x80) ++index;
    return index;
}

bool isASCII(std::string_view text) {
    return asciiPrefixLength(text) == text.size();
}

bool isValidUTF8(std::string_view text) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto length = static_cast<std::int32_t>(text.size());
    for (std::int32_t index = 0; index < length;) {
        if (bytes[index] < 0x80) {
            index += static_cast<std::int32_t>(asciiPrefixLength(text.substr(static_cast<std::size_t>(index))));
            continue;
        }
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
