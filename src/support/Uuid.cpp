#include "support/Uuid.h"

#include <random>

namespace quester {

namespace {

int hexDigitValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

bool isDashPosition(size_t index) {
    return index == 8 || index == 13 || index == 18 || index == 23;
}

}  // namespace

Uuid Uuid::random() {
    thread_local std::mt19937_64 generator{std::random_device{}()};
    Uuid uuid;
    for (size_t i = 0; i < uuid.value.size(); i += 8) {
        std::uint64_t bits = generator();
        for (size_t j = 0; j < 8; ++j) uuid.value[i + j] = static_cast<std::uint8_t>(bits >> (8 * j));
    }
    uuid.value[6] = static_cast<std::uint8_t>((uuid.value[6] & 0x0F) | 0x40);  // version 4
    uuid.value[8] = static_cast<std::uint8_t>((uuid.value[8] & 0x3F) | 0x80);  // RFC 4122 variant
    return uuid;
}

std::optional<Uuid> Uuid::fromString(std::string_view text) {
    if (text.size() != 36) return std::nullopt;
    Uuid uuid;
    size_t byteIndex = 0;
    for (size_t i = 0; i < text.size();) {
        if (isDashPosition(i)) {
            if (text[i] != '-') return std::nullopt;
            ++i;
            continue;
        }
        int high = hexDigitValue(text[i]);
        int low = hexDigitValue(text[i + 1]);
        if (high < 0 || low < 0 || isDashPosition(i + 1)) return std::nullopt;
        uuid.value[byteIndex++] = static_cast<std::uint8_t>(high * 16 + low);
        i += 2;
    }
    return uuid;
}

std::string Uuid::toString() const {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string text;
    text.reserve(36);
    for (size_t i = 0; i < value.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
        text += digits[value[i] >> 4];
        text += digits[value[i] & 0x0F];
    }
    return text;
}

}  // namespace quester
