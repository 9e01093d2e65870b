#include <gtest/gtest.h>

#include "platform/FSUtilities.h"
#include "platform/PlatformProfile.h"
#include "stores/FavoriteFolders.h"
#include "stores/GroupStore.h"
#include "stores/IgnoreItems.h"
#include "stores/PreferenceKey.h"
#include "stores/RecentItems.h"
#include "stores/RecentLocations.h"
#include "stores/SavedSearches.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using json = nlohmann::json;

class UserStoresTest : public ::testing::Test {
protected:
    UserStoresTest() { preferences.registerDefaults(Preferences::registeredDefaultsTable()); }

    std::string storePath() const { return (dir.path() / "config" / Preferences::fileName).string(); }
    void storeFile(const std::string& text) {
        dir.write("config/preferences.json", text);
        preferences.reload();
    }

    testing::TempDir dir;
    MainLoop loop;
    NotificationCenter center{loop};
    Preferences preferences{storePath(), center};
};

TEST_F(UserStoresTest, SettingsParseByTheirTypeAndRefuseOthersWithTheTypeTheyTake) {
    const PreferenceKey* limit = PreferenceKey::find("historyMaxCount");
    ASSERT_NE(limit, nullptr);
    EXPECT_EQ(limit->defaultValue, json(20));
    EXPECT_EQ(*limit->parse("+30"), json(30));
    EXPECT_EQ(limit->parse("3.5").error().message, "historyMaxCount takes a whole number, not '3.5'");
    EXPECT_FALSE(limit->parse("").ok());
    EXPECT_EQ(*PreferenceKey::find("historyEnabled")->parse("No"), json(false));
    EXPECT_FALSE(PreferenceKey::find("historyEnabled")->parse("maybe").ok());
    EXPECT_EQ(*PreferenceKey::find("iconSizeSlider")->parse("120.5"), json(120.5));
    EXPECT_FALSE(PreferenceKey::find("iconSizeSlider")->parse("nan").ok());
    EXPECT_EQ(*PreferenceKey::find("lastSearchlocationPopupSelectedItemName")->parse("42"), json("42"));
    EXPECT_EQ(PreferenceKey::find("history"), nullptr) << "a store's key is no setting";
    EXPECT_EQ(Preferences::registeredDefaultsTable()["nettworkDiskCachingOnly"], true);
}

TEST_F(UserStoresTest, SavedSearchesRoundTripDropMalformedMapsAndMakeUniqueNames) {
    storeFile(R"({"savedSearches": [
        {"id": "1", "userName": "Budget", "queryString": "budget", "searchHidden": false, "location": "home"},
        {"id": "2", "userName": "Broken", "queryString": "x", "searchHidden": "no", "location": ""},
        {"userName": "Budget-1", "queryString": "b1", "searchHidden": true, "location": ""}]})");
    SavedSearches saved(preferences, center);
    const auto contents = saved.contents();
    ASSERT_EQ(contents.size(), 2u);
    EXPECT_EQ(contents.at("1").location, "home");
    EXPECT_EQ(saved.makeUniqueName("Budget"), "Budget-2");
    EXPECT_EQ(saved.makeUniqueName("Taxes"), "Taxes");
    const std::string idOfTheOneWithout = saved.itemNamed("Budget-1")->id;
    EXPECT_NE(saved.itemNamed("Budget-1")->id, idOfTheOneWithout) << "a map without id gets a new one at each load";

    SavedSearchItem item{"9", "Tax", "tax : modified this year", true, "", {"/srv/a", "/srv/b"}, true};
    ASSERT_TRUE(saved.save(item).ok());
    item.dirty = false;
    EXPECT_EQ(SavedSearches(preferences, center).contents().at("9"), item);
    EXPECT_EQ(*saved.remove("9"), true);
    EXPECT_EQ(*saved.remove("9"), false);
}

TEST_F(UserStoresTest, IgnoreItemsMatchWholeComponentsPathPiecesAndExtensionsAnywhere) {
    storeFile(R"({"ignoreFolders": ["node_modules", "/Volumes/Backup/old", 7, "build/tmp"],
                  "ignoreExtensions": ["photoslibrary", "bak"]})");
    IgnoreItems list(preferences);
    ASSERT_EQ(list.pathComponents().size(), 3u) << "the element that isn't text is dropped";
    EXPECT_TRUE(list.ignores("/home/u/web/node_modules/lib/a.js"));
    EXPECT_FALSE(list.ignores("/home/u/web/node_modules2/a.js")) << "a component that merely contains it";
    EXPECT_TRUE(list.ignores("/media/Backup/old-stuff/a.txt")) << "the /Volumes/ prefix went; a piece matches anywhere";
    EXPECT_TRUE(list.ignores("/home/u/build/tmpfiles/x")) << "a piece with a / spans components";
    EXPECT_TRUE(list.ignores("/home/u/Pictures/My.photoslibrary/originals/1.jpg"));
    EXPECT_TRUE(list.ignores("/home/u/notes.bak"));
    EXPECT_FALSE(list.ignores("/home/u/notes.BAK")) << "case matters";
    Preferences nothingStored("");
    EXPECT_FALSE(IgnoreItems(nothingStored).ignores("/home/u/node_modules/a.bak")) << "an empty list lets all through";

    ASSERT_TRUE(list.addFileExtension(".tmp").ok());
    ASSERT_TRUE(list.addFileExtension(".").ok());
    ASSERT_TRUE(list.add("node_modules").ok());
    EXPECT_EQ(preferences.stringList("ignoreExtensions"), (std::vector<std::string>{"photoslibrary", "bak", "tmp"}));
    EXPECT_EQ(list.pathComponents().size(), 3u);

    std::vector<std::string> rows;
    for (const auto& item : list.itemsForDisplay()) rows.push_back(item.text);
    EXPECT_EQ(rows, (std::vector<std::string>{"Extensions", ".bak", ".photoslibrary", ".tmp", "Files & Folders",
                                              "Backup/old", "build/tmp", "node_modules"}));
    ASSERT_TRUE(list.changeDisplayItemValue(1, ". b a k!", true).ok());
    EXPECT_TRUE(IgnoreItems(preferences).containsExtension("bak"));
    EXPECT_EQ(*list.removeText(IgnoreItemType::pathExtension, ".tmp"), true);
    EXPECT_EQ(*list.removeText(IgnoreItemType::pathComponent, "nowhere"), false);
    EXPECT_FALSE(IgnoreItems(preferences).containsExtension("tmp"));
}

TEST_F(UserStoresTest, FavouriteKeywordsTakeTheFirstWordAndCountUpWhenTaken) {
    FavoriteFolders favorites(preferences, center);
    EXPECT_EQ(*favorites.add("/home/u/Work Projects/"), "work");
    EXPECT_EQ(*favorites.add("/srv/work"), "work-1");
    EXPECT_EQ(*favorites.add("/mnt/Work"), "work-2") << "not work-1-2";
    EXPECT_EQ(*favorites.add("/mnt/x", std::string("docs")), "docs");
    EXPECT_EQ(favorites.folderForKeyword("work-1"), "/srv/work");
    EXPECT_EQ(favorites.downloadsName(), std::nullopt);
    favorites.startup("/home/u");
    EXPECT_EQ(favorites.folderForKeyword("desktop"), "/home/u/Desktop/");
    EXPECT_EQ(favorites.downloadsName(), "downloads");
    EXPECT_EQ(*favorites.remove("docs"), true);

    storeFile(R"({"RememberedFolders": {"good": "/a", "bad": 3}})");
    EXPECT_EQ(favorites.keyFolderPairs(), (std::map<std::string, std::string>{{"good", "/a"}}));
}

TEST_F(UserStoresTest, RecentLocationsKeepTheNewestFirstWithinTheirLimit) {
    ASSERT_TRUE(preferences.setValue("recentItemsMaxCount", 3).ok());
    RecentLocations recent(preferences);
    for (const char* path : {"/a", "/b", "/c", "/b", "/d"}) ASSERT_TRUE(recent.add(path).ok());
    EXPECT_EQ(recent.contents(), (std::vector<std::string>{"/d", "/c", "/b"}));
}

TEST_F(UserStoresTest, RecentItemsSkipRootsAndHiddenItemsMoveRepeatsAndArePurgedOnceADay) {
    testing::TempDir tree;
    ManualClock clock;
    RecentItems recent(preferences, center, clock);
    std::vector<Url> urls;
    for (int i = 0; i < 25; ++i) urls.emplace_back(tree.write("file" + std::to_string(i)).string());
    ASSERT_TRUE(recent.addPopularItem({Url("/", true), Url(tree.write(".hidden").string()), urls[0]}).ok());
    ASSERT_EQ(recent.items().size(), 1u);
    clock.advance(std::chrono::seconds(5));
    ASSERT_TRUE(recent.addPopularItem(urls).ok());
    const auto items = recent.items();
    ASSERT_EQ(items.size(), 25u);
    EXPECT_EQ(items.front().path, urls[0].path()) << "a repeat replaces its older entry";
    EXPECT_EQ(std::chrono::floor<std::chrono::milliseconds>(items.front().lastSeen),
              std::chrono::floor<std::chrono::milliseconds>(clock.now()));
    EXPECT_EQ(recent.itemsForDisplay().front().path, urls[0].path());

    ASSERT_TRUE(recent.purge().ok());
    EXPECT_EQ(recent.items().size(), 25u) << "the first purge only stores its date";
    ASSERT_TRUE(recent.purge().ok());
    EXPECT_EQ(recent.items().size(), 25u) << "one purge a day";
    clock.advance(std::chrono::hours(25));
    ASSERT_TRUE(recent.purge().ok());
    EXPECT_EQ(recent.items().size(), RecentItems::maxCount);
    ASSERT_TRUE(recent.remove(urls[0].path()).ok());
    EXPECT_EQ(recent.items().size(), RecentItems::maxCount - 1);

    storeFile(R"({"recentSmartItems": "[{\"path\": \"/a\", \"lastSeen\": 1.5}, {\"path\": 2}]"})");
    EXPECT_EQ(recent.items().size(), 1u);
}

TEST_F(UserStoresTest, GroupsRoundTripAndAMalformedGroupIsDroppedWhileTheOthersLoad) {
    testing::TempDir tree;
    const Url folder(tree.mkdir("docs").string(), true);
    FSUtilities fsUtilities(PlatformProfile::linux());
    GroupStore store(preferences);
    auto made = store.newGroup("Work");
    ASSERT_TRUE(made.ok());
    std::set<Uuid> added;
    auto changed = store.change(made->id, [&](GroupModel& group) {
        added = group.add({folder}, fsUtilities);
        EXPECT_TRUE(group.add({folder}, fsUtilities).empty()) << "a member is added once";
    });
    ASSERT_TRUE(changed.ok());
    ASSERT_EQ(changed->urls.size(), 1u);
    EXPECT_TRUE(added.contains(changed->urls[0].id));
    EXPECT_TRUE(changed->urls[0].diskKey.has_value());
    EXPECT_EQ(store.groupNamed("Work"), *changed);
    EXPECT_FALSE(changed->toStored().contains("cacheIDs"));

    GroupModel group = *changed;
    const Uuid cache = Uuid::random();
    group.addCaches({cache});
    group.addCaches({cache, cache});
    EXPECT_EQ(group.cacheIDs->size(), 1u);
    group.remove({cache, group.urls[0].id});
    EXPECT_TRUE(group.urls.empty());
    EXPECT_TRUE(group.cacheIDs->empty());
    EXPECT_EQ(GroupModel::fromStored(group.toStored()), group);

    json stored = *preferences.jsonValue(GroupStore::key);
    stored.push_back({{"id", "not a uuid"}, {"name", "Broken"}, {"urls", json::array()}});
    stored.push_back({{"id", Uuid::random().toString()}, {"name", "Odd"}, {"urls", {{{"id", "x"}}}}});
    ASSERT_TRUE(preferences.setValue(GroupStore::key, stored).ok());
    ASSERT_EQ(store.content().size(), 1u);
    ASSERT_TRUE(store.removeGroup(made->id).ok());
    EXPECT_TRUE(store.content().empty());
}

}  // namespace
}  // namespace quester
