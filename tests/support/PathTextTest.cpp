#include "support/PathText.h"

#include <gtest/gtest.h>

namespace quester {
namespace {

TEST(PathText, PrefixesCoverWholeComponents) {
    EXPECT_TRUE(isSameOrBelow("/usr", "/usr"));
    EXPECT_TRUE(isSameOrBelow("/usr/x", "/usr/"));
    EXPECT_FALSE(isSameOrBelow("/users", "/usr"));
    EXPECT_TRUE(isSameOrBelow("/anything", "/"));
    EXPECT_FALSE(isSameOrBelow("/a", ""));
    EXPECT_FALSE(isStrictlyBelow("/usr/", "/usr"));
    EXPECT_TRUE(isStrictlyBelow("/usr/x", "/usr"));
}

TEST(PathText, ComponentsExtensionsAndJoins) {
    EXPECT_EQ(pathComponents("//a///b/"), (std::vector<std::string>{"a", "b"}));
    for (const char* path : {"//a///b/", "/", "", "a/b", "/a"}) {
        EXPECT_EQ(pathComponentCount(path), pathComponents(path).size()) << path;
    }
    EXPECT_EQ(lastPathComponent("/a/b.txt/"), "b.txt");
    EXPECT_EQ(lastPathComponent("/"), "/");
    EXPECT_EQ(pathExtension("/a/Foo.app"), "app");
    EXPECT_EQ(pathExtension("/a/.hidden"), "");
    EXPECT_EQ(pathExtension("/a/name."), "");
    EXPECT_EQ(pathExtension("/a.b/name"), "");
    EXPECT_EQ(parentPath("/a/b"), "/a");
    EXPECT_EQ(parentPath("/a"), "/");
    EXPECT_EQ(parentPath("/"), "");
    EXPECT_EQ(joinPath("/", "x"), "/x");
    EXPECT_EQ(joinPath("/a/", "/x"), "/a/x");
    EXPECT_EQ(joinPath("/a", ""), "/a");
}

}  // namespace
}  // namespace quester
