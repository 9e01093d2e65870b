#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/ItemAttributes.h"
#include "testing/FileFlags.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using Names = std::vector<std::string>;

TEST(ItemAttributes, TagsAreTheTrimmedNamesBetweenCommas) {
    testing::TempDir dir;
    auto path = dir.write("a.txt").string();
    EXPECT_EQ(ItemAttributes::tagNames(path), Names{}) << "no attribute";
    if (!testing::setTags(path, "Red, Dark Blue,,work ")) GTEST_SKIP() << "no user attributes here";
    EXPECT_EQ(ItemAttributes::tagNames(path), (Names{"Red", "Dark Blue", "work"}));

    auto folder = dir.mkdir("tagged").string();
    ASSERT_TRUE(testing::setTags(folder, "green"));
    EXPECT_EQ(ItemAttributes::tagNames(folder), Names{"green"}) << "folders carry tags too";
    std::filesystem::create_symlink(path, dir.path() / "link");
    EXPECT_EQ(ItemAttributes::tagNames(dir.str() + "/link"), (Names{"Red", "Dark Blue", "work"}));
    EXPECT_EQ(ItemAttributes::tagNames(dir.str() + "/missing"), Names{});
}

TEST(ItemAttributes, ReadOnlyForEveryoneCountsAsLocked) {
    testing::TempDir dir;
    auto path = dir.write("a.txt").string();
    EXPECT_FALSE(ItemAttributes::isUserImmutable(path));
    ::chmod(path.c_str(), 0444);
    EXPECT_TRUE(ItemAttributes::isUserImmutable(path));
    ::chmod(path.c_str(), 0400 | 0020);
    EXPECT_FALSE(ItemAttributes::isUserImmutable(path)) << "the group may still write";
    EXPECT_FALSE(ItemAttributes::isUserImmutable(dir.str() + "/missing"));
}

TEST(ItemAttributes, TheImmutableFlagLocksAWritableFile) {
    testing::TempDir dir;
    auto path = dir.write("a.txt").string();
    if (!testing::setImmutable(path, true)) GTEST_SKIP() << "setting the immutable flag needs root";
    const bool locked = ItemAttributes::isUserImmutable(path);
    testing::setImmutable(path, false);
    EXPECT_TRUE(locked);
    EXPECT_FALSE(ItemAttributes::isUserImmutable(path));
}

}  // namespace
}  // namespace quester
