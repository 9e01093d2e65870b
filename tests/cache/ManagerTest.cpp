#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include <nlohmann/json.hpp>

#include "cache/ContentIndexBuild.h"
#include "cache/ContentIndexManager.h"
#include "platform/Url.h"
#include "stores/Preferences.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

namespace fs = std::filesystem;
using testing::TempDir;

class ManagerTest : public ::testing::Test {
protected:
    ManagerTest() : preferences(config.str() + "/preferences.json"), manager(preferences, data.str()) {}
    TempDir config;
    TempDir data;
    TempDir tree;
    Preferences preferences;
    ContentIndexManager manager;
};

TEST_F(ManagerTest, NamesTakeASuffixWhenTheFileIsTaken) {
    std::string name = ContentIndexManager::suggestNiceName(tree.str() + "/Photos");
    EXPECT_TRUE(name == "Photos" || name.starts_with("Photos on ")) << name;  // the temp folder may be a mount
    std::string root = ContentIndexManager::suggestNiceName("/");
    EXPECT_TRUE(root == "Boot Drive" || root == Url("/", true).volumeName()) << root;
    EXPECT_EQ(ContentIndexManager::suggestNiceName("/srv/Shared.qscache"), "Shared");
    EXPECT_EQ(*manager.newLocalIndex("Photos"), data.str() + "/Photos.qscache");
    std::ofstream(data.str() + "/Photos.qscache") << "";
    std::ofstream(data.str() + "/Photos-1.qscache") << "";
    EXPECT_EQ(*manager.newLocalIndex("Photos"), data.str() + "/Photos-2.qscache");
    for (int i = 2; i <= 99; ++i) std::ofstream(data.str() + "/Photos-" + std::to_string(i) + ".qscache") << "";
    EXPECT_FALSE(manager.newLocalIndex("Photos"));
}

TEST_F(ManagerTest, TheListSurvivesAReloadAndARemoval) {
    tree.write("a/x.txt");
    auto made = manager.newIndex(tree.str() + "/a", "Alpha", ContentIndexMode::textDocuments, CachingUpdatesTag::day);
    ASSERT_TRUE(made);
    Uuid id = (*made)->id();
    ContentIndexManager reloaded(preferences, data.str());
    reloaded.load();
    ASSERT_EQ(reloaded.indexes().size(), 1u);
    ContentIndex& alpha = *reloaded.indexes()[0];
    EXPECT_EQ(alpha.id(), id);
    EXPECT_EQ(alpha.displayName(), "Alpha");
    EXPECT_EQ(alpha.targetURL(), tree.str() + "/a");
    EXPECT_EQ(alpha.updatesEvery(), CachingUpdatesTag::day);
    EXPECT_EQ(alpha.documentInfo().lastIndexMode, ContentIndexMode::textDocuments);
    auto saved = nlohmann::json::parse(*preferences.stringValue("SavedIndexInfo"));
    EXPECT_EQ(saved[0]["targetURL"], "file://" + tree.str() + "/a");
    EXPECT_EQ(saved[0]["updatesEvery"], 200);
    ASSERT_TRUE(reloaded.remove(alpha));
    EXPECT_FALSE(fs::exists(data.str() + "/Alpha.qscache"));
    ContentIndexManager empty(preferences, data.str());
    empty.load();
    EXPECT_TRUE(empty.indexes().empty());
}

TEST_F(ManagerTest, ABreadcrumbLeftByACrashSetsTheCacheAsideAndItComesBackEmpty) {
    for (int i = 0; i < 5; ++i) tree.write("a/f" + std::to_string(i));
    auto made = manager.newIndex(tree.str() + "/a", "Alpha", ContentIndexMode::off, CachingUpdatesTag::week);
    ASSERT_TRUE(made);
    ContentIndexBuild::Options options;
    options.pauseReason = [] { return std::optional<std::string>(); };
    ASSERT_TRUE(ContentIndexBuild::build(**made, options));
    std::string file = (*made)->localDBFile();
    for (int crash = 0; crash < 2; ++crash) {
        std::ofstream(ContentIndexManager::breadcrumbPath(file)) << "";
        ContentIndexManager reloaded(preferences, data.str());
        reloaded.load();
        ASSERT_EQ(reloaded.indexes().size(), 1u);
        EXPECT_TRUE(fs::exists(file + ".corrupt"));
        EXPECT_FALSE(fs::exists(ContentIndexManager::breadcrumbPath(file)));
        EXPECT_FALSE(reloaded.indexes()[0]->documentInfo().numberOfFSItems);
    }
}

TEST_F(ManagerTest, DueFollowsTheTimingAndTheCachingSwitch) {
    tree.write("a/x");
    auto made = manager.newIndex(tree.str() + "/a", "A", ContentIndexMode::off, CachingUpdatesTag::week);
    ASSERT_TRUE(made);
    ContentIndex& index = **made;
    EXPECT_FALSE(manager.isDue(index)) << "caching is off by default";
    ASSERT_TRUE(preferences.setValue("diskCatalogCaching", true));
    EXPECT_TRUE(manager.isDue(index)) << "never built";
    index.mutableDocumentInfo().lastUpdated = DocumentInfo{}.lastUpdated + 1e12;  // far in the future
    EXPECT_FALSE(manager.isDue(index));
    index.setUpdatesEvery(CachingUpdatesTag::never);
    index.mutableDocumentInfo().lastUpdated = DocumentInfo::distantPast;
    EXPECT_FALSE(manager.isDue(index));
    index.setUpdatesEvery(CachingUpdatesTag::defaultTiming);
    ASSERT_TRUE(preferences.setValue("updateCachesEvery", 200));
    EXPECT_EQ(manager.updateTiming(index), CachingUpdatesTag::day);
    EXPECT_TRUE(manager.isDue(index));
}

}  // namespace
}  // namespace quester
