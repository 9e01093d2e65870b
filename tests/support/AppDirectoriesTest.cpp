#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/AppDirectories.h"
#include "testing/EnvironmentVariable.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using testing::EnvironmentVariable;
namespace fs = std::filesystem;

TEST(AppDirectories, QuesterHomeHoldsAllThreeFoldersAndCreatesThem) {
    quester::testing::TempDir home;
    EnvironmentVariable questerHome("QUESTER_HOME", home.str() + "/nested/deeper");
    EnvironmentVariable xdgCache("XDG_CACHE_HOME", home.str() + "/ignored");

    auto config = AppDirectories::configDirectory();
    auto caches = AppDirectories::appCachesDirectory();
    auto data = AppDirectories::applicationSupportDirectory();
    ASSERT_TRUE(config && caches && data);
    EXPECT_EQ(*config, home.str() + "/nested/deeper/config");
    EXPECT_EQ(*caches, home.str() + "/nested/deeper/cache");
    EXPECT_EQ(*data, home.str() + "/nested/deeper/data");
    EXPECT_TRUE(fs::is_directory(*config));
    EXPECT_TRUE(fs::is_directory(*caches));
    EXPECT_TRUE(fs::is_directory(*data));
    EXPECT_FALSE(fs::exists(home.path() / "ignored"));
}

TEST(AppDirectories, XdgVariablesWhenQuesterHomeIsUnset) {
    quester::testing::TempDir root;
    EnvironmentVariable questerHome("QUESTER_HOME", std::nullopt);
    EnvironmentVariable xdgConfig("XDG_CONFIG_HOME", root.str() + "/conf");
    EnvironmentVariable xdgCache("XDG_CACHE_HOME", root.str() + "/cache/");
    EnvironmentVariable xdgData("XDG_DATA_HOME", root.str() + "/share");

    EXPECT_EQ(AppDirectories::configDirectory().valueOr(""), root.str() + "/conf/quester");
    EXPECT_EQ(AppDirectories::appCachesDirectory().valueOr(""), root.str() + "/cache/quester");
    EXPECT_EQ(AppDirectories::applicationSupportDirectory().valueOr(""), root.str() + "/share/quester");
}

// The default search and "show apps" both take the home from here, so they
// agree on one folder: $HOME as the shell has it, the password entry without it.
TEST(AppDirectories, HomeIsTheHomeVariableThenThePasswordEntry) {
    {
        EnvironmentVariable home("HOME", "/srv/elsewhere");
        EXPECT_EQ(AppDirectories::homeDirectory(), "/srv/elsewhere");
    }
    EnvironmentVariable home("HOME", "");
    EXPECT_FALSE(AppDirectories::homeDirectory().empty());
}

TEST(AppDirectories, AFileInTheWayIsAnError) {
    quester::testing::TempDir home;
    home.write("cache", "not a folder");
    EnvironmentVariable questerHome("QUESTER_HOME", home.str());
    auto caches = AppDirectories::appCachesDirectory();
    ASSERT_FALSE(caches);
    EXPECT_FALSE(caches.isNotFound());
}

TEST(AppDirectories, ScriptsLiveInTheDataFolderAndAreRemembered) {
    quester::testing::TempDir home;
    EnvironmentVariable questerHome("QUESTER_HOME", home.str());
    auto scripts = AppDirectories::applicationScriptsDirectory();
    ASSERT_TRUE(scripts);
    EXPECT_EQ(*scripts, home.str() + "/data/scripts");
    EXPECT_TRUE(fs::is_directory(*scripts));
    EXPECT_EQ(AppDirectories::applicationScriptsDirectory().valueOr(""), *scripts);
}

TEST(AppDirectories, RemoveItemNoThrowRemovesTreesAndAnswersFalseForNothing) {
    quester::testing::TempDir root;
    root.write("tree/a/b/file.txt", "x");
    EXPECT_TRUE(AppDirectories::removeItem_NoThrow((root.path() / "tree").string()));
    EXPECT_FALSE(fs::exists(root.path() / "tree"));
    EXPECT_FALSE(AppDirectories::removeItem_NoThrow((root.path() / "tree").string()));
    auto file = root.write("single.txt", "y");
    EXPECT_TRUE(AppDirectories::removeItem_NoThrow(file.string()));
    EXPECT_FALSE(fs::exists(file));
}

}  // namespace
}  // namespace quester
