#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <random>
#include <string>
#include <unordered_set>
#include <vector>

#include "support/Crc64.h"
#include "support/Crc64Set.h"

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
    for (const std::string& text : std::initializer_list<std::string>{
             "/", "/home/user/Documents/budget 2024.xlsx", "/tmp/caf\xC3\xA9/na\xC3\xAFve.txt",
             std::string("\0\xFF\x80", 3), std::string(1000, 'x')}) {
        EXPECT_EQ(static_cast<std::uint64_t>(crc64(text)), slowCrc64(text)) << text;
    }
}

TEST(Crc64, goingOnFromTheCrcOfAPrefixGivesTheCrcOfTheWhole) {
    const std::string path = "/home/user/Documents/budget 2024.xlsx";
    for (std::size_t split : {std::size_t(0), std::size_t(1), std::size_t(7), std::size_t(20), path.size()}) {
        EXPECT_EQ(crc64(path.substr(split), crc64(path.substr(0, split))), crc64(path)) << split;
    }
}

TEST(Crc64Set, insertTellsWhetherTheKeyIsNewAndZeroIsAKeyLikeAnyOther) {
    Crc64Set set;
    EXPECT_FALSE(set.contains(0));
    EXPECT_TRUE(set.insert(0));
    EXPECT_FALSE(set.insert(0));
    EXPECT_TRUE(set.insert(-1));
    EXPECT_TRUE(set.insert(1));
    EXPECT_FALSE(set.insert(-1));
    EXPECT_TRUE(set.contains(0));
    EXPECT_TRUE(set.contains(1));
    EXPECT_FALSE(set.contains(2));
    EXPECT_EQ(set.size(), 3u);
}

// Keys that differ only in their high or only in their low bits would share
// slots without mixing; through many growths the set must agree with a plain
// set about every key inserted and about keys never inserted.
TEST(Crc64Set, agreesWithAPlainSetThroughGrowth) {
    std::mt19937_64 random(7);
    std::vector<std::int64_t> keys;
    for (std::int64_t i = 0; i < 20000; ++i) {
        keys.push_back(i << 40);
        keys.push_back(i);
        keys.push_back(static_cast<std::int64_t>(random()));
    }
    Crc64Set set;
    std::unordered_set<std::int64_t> plain;
    for (std::int64_t key : keys) {
        ASSERT_EQ(set.insert(key), plain.insert(key).second) << key;
        ASSERT_FALSE(set.insert(key)) << key;
    }
    EXPECT_EQ(set.size(), plain.size());
    for (std::int64_t key : keys) EXPECT_TRUE(set.contains(key)) << key;
    for (int i = 0; i < 20000; ++i) {
        const auto absent = static_cast<std::int64_t>(random());
        EXPECT_EQ(set.contains(absent), plain.contains(absent)) << absent;
    }
}

}  // namespace
}  // namespace quester
