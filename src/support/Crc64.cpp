#include "support/Crc64.h"

#include <array>

namespace quester {
namespace {

constexpr std::uint64_t kPolynomial = 0x42F0E1EBA9EA3693ULL;

using Table = std::array<std::uint64_t, 256>;

constexpr Table makeTable() {
    Table table{};
    for (std::uint64_t byte = 0; byte < 256; ++byte) {
        std::uint64_t crc = byte << 56;
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc & (1ULL << 63)) ? (crc << 1) ^ kPolynomial : crc << 1;
        }
        table[byte] = crc;
    }
    return table;
}

// tables[k][b]: the register after the byte b and then k zero bytes, so that
// eight bytes are taken with eight lookups and no shift chain between them.
constexpr std::array<Table, 8> makeTables() {
    std::array<Table, 8> tables{};
    tables[0] = makeTable();
    for (std::size_t k = 1; k < 8; ++k) {
        for (std::size_t byte = 0; byte < 256; ++byte) {
            const std::uint64_t previous = tables[k - 1][byte];
            tables[k][byte] = (previous << 8) ^ tables[0][previous >> 56];
        }
    }
    return tables;
}

constexpr std::array<Table, 8> kTables = makeTables();

std::uint64_t bigEndianWord(const unsigned char* bytes) {
    std::uint64_t word = 0;
    for (int i = 0; i < 8; ++i) word = (word << 8) | bytes[i];
    return word;
}

}  // namespace

std::int64_t crc64(std::string_view text, std::int64_t startingFrom) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    std::size_t left = text.size();
    auto crc = static_cast<std::uint64_t>(startingFrom);
    for (; left >= 8; bytes += 8, left -= 8) {
        crc ^= bigEndianWord(bytes);
        crc = kTables[7][crc >> 56] ^ kTables[6][(crc >> 48) & 0xFF] ^ kTables[5][(crc >> 40) & 0xFF] ^
              kTables[4][(crc >> 32) & 0xFF] ^ kTables[3][(crc >> 24) & 0xFF] ^ kTables[2][(crc >> 16) & 0xFF] ^
              kTables[1][(crc >> 8) & 0xFF] ^ kTables[0][crc & 0xFF];
    }
    for (; left > 0; ++bytes, --left) crc = kTables[0][((crc >> 56) ^ *bytes) & 0xFF] ^ (crc << 8);
    return static_cast<std::int64_t>(crc);
}

}  // namespace quester
