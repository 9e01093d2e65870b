#include <gtest/gtest.h>

#include <ctime>
#include <filesystem>
#include <fstream>

#include <nlohmann/json.hpp>

#include "cache/ContentIndexBuild.h"
#include "cache/ContentIndexManager.h"
#include "cache/DataConvertible.h"
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

TEST_F(ManagerTest, ASharedCacheSetAsideAfterACrashComesBackFromItsSharedCopy) {
    for (int i = 0; i < 5; ++i) tree.write("a/f" + std::to_string(i));
    auto made = manager.newIndex(tree.str() + "/a", "Alpha", ContentIndexMode::off, CachingUpdatesTag::week);
    ASSERT_TRUE(made);
    TempDir shared;
    ASSERT_TRUE(manager.setSharedCopy(**made, shared.str()));
    std::string copy = shared.str() + "/Alpha.qscache";
    EXPECT_EQ((*made)->remoteDBBookmark()->path, copy) << "a folder takes a file of the cache's name";
    ContentIndexBuild::Options options;
    options.pauseReason = [] { return std::optional<std::string>(); };
    ASSERT_TRUE(ContentIndexBuild::build(**made, options));
    ASSERT_TRUE(fs::exists(copy));
    std::string file = (*made)->localDBFile();

    std::ofstream(ContentIndexManager::breadcrumbPath(file)) << "";
    ContentIndexManager reloaded(preferences, data.str());
    reloaded.load();
    ASSERT_EQ(reloaded.indexes().size(), 1u);
    EXPECT_TRUE(fs::exists(file + ".corrupt"));
    EXPECT_EQ(reloaded.indexes()[0]->documentInfo().numberOfFSItems, 5);
    EXPECT_EQ(reloaded.indexes()[0]->remoteDBBookmark(), (*made)->remoteDBBookmark());

    fs::remove(file);
    ContentIndexManager again(preferences, data.str());
    again.load();
    ASSERT_EQ(again.indexes().size(), 1u);
    EXPECT_EQ(again.indexes()[0]->documentInfo().numberOfFSItems, 5) << "a missing local file is brought back";

    EXPECT_FALSE(again.setSharedCopy(*again.indexes()[0], file)) << "not its own file";
    EXPECT_FALSE(again.setSharedCopy(*again.indexes()[0], shared.str() + "/missing/x.qscache"));
    ASSERT_TRUE(again.setSharedCopy(*again.indexes()[0], std::nullopt));
    auto saved = nlohmann::json::parse(*preferences.stringValue("SavedIndexInfo"));
    EXPECT_FALSE(saved[0].contains("remoteDBBookmark"));
    EXPECT_TRUE(fs::exists(copy)) << "the shared copy's file stays";
}

TEST_F(ManagerTest, MalformedFieldsOfTheListReadAsAbsent) {
    tree.write("a/x");
    ASSERT_TRUE(manager.newIndex(tree.str() + "/a", "A", ContentIndexMode::off, CachingUpdatesTag::day));
    auto saved = nlohmann::json::parse(*preferences.stringValue("SavedIndexInfo"));
    saved[0]["updatesEvery"] = "day";
    saved.push_back({{"localDBFilePath", 7}});
    auto decoded = ContentIndexManager::decodeSavedIndexInfo(saved.dump());
    ASSERT_TRUE(decoded);
    ASSERT_EQ(decoded->size(), 1u) << "an entry without a file is dropped";
    EXPECT_EQ((*decoded)[0].setup.updatesEvery, CachingUpdatesTag::week);
    EXPECT_FALSE(ContentIndexManager::decodeSavedIndexInfo("{\"not\": \"a list\"}"));
    for (nlohmann::json bad : {nlohmann::json("text"), nlohmann::json{{"path", 3}},
                               nlohmann::json{{"path", "relative"}, {"diskKey", "k"}, {"pathOnDisk", ""}},
                               nlohmann::json{{"path", "/x"}, {"diskKey", ""}, {"pathOnDisk", "x"}}}) {
        saved[0]["remoteDBBookmark"] = bad;
        ASSERT_TRUE(preferences.setValue("SavedIndexInfo", saved.dump()));
        ContentIndexManager reloaded(preferences, data.str());
        reloaded.load();
        ASSERT_EQ(reloaded.indexes().size(), 1u) << bad;
        EXPECT_FALSE(reloaded.indexes()[0]->remoteDBBookmark()) << bad;
    }
}

TEST_F(ManagerTest, CachesForAnItemAreThoseWhoseTargetHoldsItOnTheRecordedDisk) {
    tree.mkdir("a/b");
    tree.mkdir("ab");
    auto outer = manager.newIndex(tree.str() + "/a", "Outer", ContentIndexMode::off, CachingUpdatesTag::week);
    auto inner = manager.newIndex(tree.str() + "/a/b", "Inner", ContentIndexMode::off, CachingUpdatesTag::week);
    ASSERT_TRUE(outer && inner);
    std::string item = tree.str() + "/a/b/c.txt";
    tree.write("a/b/c.txt");
    EXPECT_EQ(manager.cachesForItem(item), (std::vector<ContentIndex*>{*outer, *inner}));
    EXPECT_EQ(manager.cachesForItem(tree.str() + "/a"), std::vector<ContentIndex*>{*outer});
    EXPECT_TRUE(manager.cachesForItem(tree.str() + "/ab").empty()) << "whole path components";
    (*inner)->mutableDocumentInfo().diskKey = "unplugged 1000 ext4";
    EXPECT_EQ(manager.cachesForItem(item), std::vector<ContentIndex*>{*outer});
    EXPECT_EQ(manager.cacheWithID((*inner)->id()), *inner);
    EXPECT_FALSE(manager.isIndexing());
}

// Seconds since 2001 of a local time of day on 2026-03-10.
double march10At(int hour, int minute) {
    std::tm local{};
    local.tm_year = 126;
    local.tm_mon = 2;
    local.tm_mday = 10;
    local.tm_hour = hour;
    local.tm_min = minute;
    local.tm_isdst = -1;
    return ReferenceDate::fromUnixSeconds(static_cast<double>(std::mktime(&local))).secondsSince2001;
}

TEST_F(ManagerTest, TheDailyRunStartsOnceAtItsTimeAndACancelEndsIt) {
    for (const char* name : {"a", "b", "c"}) {
        tree.mkdir(name);
        ASSERT_TRUE(manager.newIndex(tree.str() + "/" + name, name, ContentIndexMode::off, CachingUpdatesTag::never));
    }
    ASSERT_TRUE(preferences.setValue("fileContentCachingUpdateTime", "03:30"));
    EXPECT_FALSE(manager.startScheduldedRefreshIfNeeded(march10At(3, 30))) << "the run is off";
    ASSERT_TRUE(preferences.setValue("fileContentCachingTimeUpdatesEnabled", true));
    EXPECT_FALSE(manager.startScheduldedRefreshIfNeeded(march10At(3, 29)));
    ASSERT_TRUE(manager.startScheduldedRefreshIfNeeded(march10At(3, 30)));
    EXPECT_FALSE(manager.startScheduldedRefreshIfNeeded(march10At(3, 30) + 50)) << "one run at a time";

    ContentIndex* first = manager.performNextTimedIndexRefresh();
    ASSERT_EQ(first, manager.indexes()[0].get());
    first->stateLock().setValue(ContentIndex::ContentIndexLMDBState::building);
    EXPECT_EQ(manager.performNextTimedIndexRefresh(), nullptr) << "the first is still at work";
    first->stateLock().setValue(ContentIndex::ContentIndexLMDBState::none);
    ContentIndex* second = manager.performNextTimedIndexRefresh();
    ASSERT_EQ(second, manager.indexes()[1].get());
    second->shouldCancel = true;
    EXPECT_EQ(manager.performNextTimedIndexRefresh(), nullptr) << "a cancel ends the run";

    EXPECT_FALSE(manager.startScheduldedRefreshIfNeeded(march10At(3, 31))) << "started today already";
    EXPECT_FALSE(manager.startScheduldedRefreshIfNeeded(march10At(23, 0)));
    ASSERT_TRUE(manager.startScheduldedRefreshIfNeeded(march10At(3, 30) + 86400 + 7200))
        << "a timer that missed the minute starts the next day's run when it comes";
    second->shouldCancel = false;  // as its next build starts
    int refreshed = 0;
    while (manager.performNextTimedIndexRefresh()) ++refreshed;
    EXPECT_EQ(refreshed, 3);
    ASSERT_TRUE(preferences.setValue("fileContentCachingUpdateTime", "3h"));
    EXPECT_FALSE(manager.startScheduldedRefreshIfNeeded(march10At(3, 30) + 2 * 86400));
}

}  // namespace
}  // namespace quester
