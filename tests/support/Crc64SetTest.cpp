#include <gtest/gtest.h>

#include <random>
#include <unordered_set>

#include "support/Crc64Set.h"

namespace quester {
namespace {

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
