#include "support/Crc64.h"

#include <array>

namespace quester {
namespace {

constexpr std::uint64_t kPolynomial = 0x42F0E1EBA9EA3693ULL;

constexpr std::array<std::uint64_t, 256> makeTable() {
    std::array<std::uint64_t, 256> table{};
    for (std::uint64_t byte = 0; byte < 256; ++byte) {
        std::uint64_t crc = byte << 56;
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc & (1ULL << 63)) ? (crc << 1) ^ kPolynomial : crc << 1;
        }
        table[byte] = crc;
    }
    return table;
}

constexpr std::array<std::uint64_t, 256> kTable = makeTable();

}  // namespace

std::int64_t crc64(std::string_view text) {
    std::uint64_t crc = 0;
    for (unsigned char byte : text) {
        crc = kTable[((crc >> 56) ^ byte) & 0xFF] ^ (crc << 8);
    }
    return static_cast<std::int64_t>(crc);
}

}  // namespace quester
