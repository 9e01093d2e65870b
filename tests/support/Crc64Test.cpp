#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <string>

#include "support/Crc64.h"

namespace quester {
namespace {

// Bit by bit, straight from the definition, to check the table-driven form.
std::uint64_t slowCrc64(const std::string& text) {
    std::uint64_t crc = 0;
    for (unsigned char byte : text) {
        crc ^= static_cast<std::uint64_t>(byte) << 56;
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc >> 63) ? (crc << 1) ^ 0x42F0E1EBA9EA3693ULL : crc << 1;
        }
    }
    return crc;
}

TEST(Crc64, PublishedCheckValueEmptyTextAndTopBitSet) {
    EXPECT_EQ(static_cast<std::uint64_t>(crc64("123456789")), 0x6C40DF5F0B497347ULL);
    EXPECT_EQ(crc64(""), 0);
    // The value is handed out as a signed integer, not truncated or clamped.
    std::int64_t value = crc64("b");
    EXPECT_EQ(static_cast<std::uint64_t>(value), 0x939E303D987B47D7ULL);
    EXPECT_LT(value, 0);
}

TEST(Crc64, AgreesWithTheBitwiseDefinitionOnPathsAndUtf8) {
    for (const std::string& text : std::initializer_list<std::string>{"/", "/home/user/Documents/budget 2024.xlsx", "/tmp/caf\xC3\xA9/na\xC3\xAFve.txt",
                             std::string("\0\xFF\x80", 3), std::string(1000, 'x')}) {
        EXPECT_EQ(static_cast<std::uint64_t>(crc64(text)), slowCrc64(text)) << text;
    }
}

}  // namespace
}  // namespace quester
