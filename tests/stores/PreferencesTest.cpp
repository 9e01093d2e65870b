#include "stores/Preferences.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

#include "support/AppDirectories.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using json = nlohmann::json;
using namespace std::chrono_literals;

json readFile(const std::filesystem::path& path) {
    std::ifstream in(path);
    return json::parse(in);
}

class PreferencesTest : public ::testing::Test {
protected:
    std::string storePath() const { return (dir.path() / "config" / Preferences::fileName).string(); }

    testing::TempDir dir;
    MainLoop loop;
    NotificationCenter center{loop};
};

TEST_F(PreferencesTest, FirstLaunchAnswersFromTheTableAndStoresTheOneTimeValues) {
    Preferences prefs(storePath(), center);
    prefs.startup("120");
    EXPECT_TRUE(prefs.boolValue("sizeIsVisible"));
    EXPECT_FALSE(prefs.boolValue("tagsIsVisible"));
    EXPECT_TRUE(prefs.boolValue("sidebarShouldShowDownloads"));
    EXPECT_TRUE(prefs.boolValue("nettworkDiskCachingOnly"));
    EXPECT_EQ(prefs.integerValue("updateCachesEvery"), 500);
    EXPECT_EQ(prefs.integerValue("historyMaxCount"), 20);
    EXPECT_DOUBLE_EQ(prefs.doubleValue("iconSizeSlider"), 290.0);
    EXPECT_EQ(prefs.stringValue("lastSearchlocationPopupSelectedItemName"), "in home");
    EXPECT_EQ(prefs.resultsViewStyle(), 2);

    json file = readFile(storePath());
    EXPECT_EQ(file["showInMenuBar"], true);
    EXPECT_EQ(file["bringToFrontHotKey"], false);
    EXPECT_EQ(file["lastVersion"], 120);
    EXPECT_EQ(file["isNewVersion"], true);
    EXPECT_FALSE(file.contains("sizeIsVisible")) << "defaults are never written";
}

TEST_F(PreferencesTest, TheTableHasEveryKeyWithItsType) {
    json table = Preferences::registeredDefaultsTable();
    EXPECT_EQ(table.size(), 38u);
    for (const char* key :
         {"updateCachesEvery", "resultsViewStyle", "recentItemsMaxCount", "historyMaxCount", "listTextSize"}) {
        EXPECT_TRUE(table[key].is_number_integer()) << key;
    }
    EXPECT_TRUE(table["iconSizeSlider"].is_number_float());
    EXPECT_EQ(table["checkForLocalConnections"], true);
    EXPECT_EQ(table["fileContentCachingTimeUpdatesEnabled"], false);
}

TEST_F(PreferencesTest, SecondLaunchKeepsTheUsersChoice) {
    {
        Preferences first(storePath(), center);
        first.startup("120");
        ASSERT_TRUE(first.setValue("showInMenuBar", false).ok());
    }
    Preferences second(storePath(), center);
    second.startup("120");
    EXPECT_FALSE(second.boolValue("showInMenuBar"));
    EXPECT_TRUE(second.hasStoredValue("showInMenuBar"));
    EXPECT_FALSE(second.boolValue("bringToFrontHotKey"));
}

TEST_F(PreferencesTest, StoredResultsViewStyleOfThreeOrMoreReadsAsAutomatic) {
    Preferences prefs(storePath(), center);
    prefs.startup("1");
    ASSERT_TRUE(prefs.setValue("resultsViewStyle", 7).ok());
    EXPECT_EQ(prefs.resultsViewStyle(), 2);
    ASSERT_TRUE(prefs.setValue("resultsViewStyle", 3).ok());
    EXPECT_EQ(prefs.resultsViewStyle(), 2);
    ASSERT_TRUE(prefs.setValue("resultsViewStyle", 1).ok());
    EXPECT_EQ(prefs.resultsViewStyle(), 1);
}

TEST_F(PreferencesTest, BuildCheck) {
    Preferences prefs(storePath(), center);
    prefs.setIsNewBuild("200");
    EXPECT_EQ(prefs.integerValue("lastVersion"), 200);
    EXPECT_TRUE(prefs.boolValue("isNewVersion"));

    prefs.setIsNewBuild("200");
    EXPECT_FALSE(prefs.boolValue("isNewVersion"));
    EXPECT_EQ(prefs.integerValue("lastVersion"), 200);

    prefs.setIsNewBuild("+150");
    EXPECT_FALSE(prefs.boolValue("isNewVersion"));
    EXPECT_EQ(prefs.integerValue("lastVersion"), 200);

    ASSERT_TRUE(prefs.setValue("isNewVersion", true).ok());
    for (const char* notANumber : {"2.0.1", "", "abc", "12a", "+"}) prefs.setIsNewBuild(notANumber);
    EXPECT_TRUE(prefs.boolValue("isNewVersion"));
    EXPECT_EQ(prefs.integerValue("lastVersion"), 200);

    prefs.setIsNewBuild("201");
    EXPECT_TRUE(prefs.boolValue("isNewVersion"));
    EXPECT_EQ(Preferences(storePath(), center).integerValue("lastVersion"), 201);
}

TEST_F(PreferencesTest, ReadersFallBackToZeroFalseOrNone) {
    Preferences prefs(storePath(), center);
    EXPECT_FALSE(prefs.boolValue("unknown"));
    EXPECT_EQ(prefs.integerValue("unknown"), 0);
    EXPECT_EQ(prefs.doubleValue("unknown"), 0.0);
    EXPECT_EQ(prefs.stringValue("unknown"), std::nullopt);
    EXPECT_EQ(prefs.stringList("unknown"), std::nullopt);
    EXPECT_EQ(prefs.jsonValue("unknown"), std::nullopt);
}

TEST_F(PreferencesTest, TypedValuesRoundTripThroughTheFile) {
    {
        Preferences prefs(storePath(), center);
        ASSERT_TRUE(prefs
                        .setValues(json{{"ignoreExtensions", {"tmp", "bak"}},
                                        {"SavedIndexInfo", {{{"id", "x"}, {"path", "/"}}}},
                                        {"listTextSize", 14},
                                        {"iconSizeSlider", 120.5},
                                        {"MediaServer:name", "Den"}})
                        .ok());
        ASSERT_TRUE(prefs.setValue("doomed", true).ok());
        ASSERT_TRUE(prefs.removeValue("doomed").ok());
    }
    Preferences prefs(storePath(), center);
    prefs.registerDefaults(Preferences::registeredDefaultsTable());
    EXPECT_EQ(prefs.stringList("ignoreExtensions"), (std::vector<std::string>{"tmp", "bak"}));
    EXPECT_EQ(prefs.stringList("listTextSize"), std::nullopt);
    EXPECT_EQ((*prefs.jsonValue("SavedIndexInfo"))[0]["path"], "/");
    EXPECT_EQ(prefs.integerValue("listTextSize"), 14);
    EXPECT_DOUBLE_EQ(prefs.doubleValue("iconSizeSlider"), 120.5);
    EXPECT_EQ(prefs.integerValue("iconSizeSlider"), 120);
    EXPECT_EQ(prefs.stringValue("MediaServer:name"), "Den");
    EXPECT_FALSE(prefs.hasStoredValue("doomed"));
}

TEST_F(PreferencesTest, MalformedFileIsSetAsideAndDefaultsStand) {
    std::filesystem::create_directories(dir.path() / "config");
    { std::ofstream(storePath()) << "{\"showInMenuBar\": fal"; }
    Preferences prefs(storePath(), center);
    prefs.startup("5");
    EXPECT_TRUE(prefs.boolValue("historyEnabled"));
    EXPECT_TRUE(prefs.boolValue("showInMenuBar"));
    EXPECT_EQ(testing::readFile(storePath() + ".corrupt"), "{\"showInMenuBar\": fal");
    EXPECT_EQ(readFile(storePath())["showInMenuBar"], true);
}

TEST_F(PreferencesTest, AFileThatIsNoObjectIsSetAsideToo) {
    std::filesystem::create_directories(dir.path() / "config");
    { std::ofstream(storePath()) << "[1, 2]"; }
    Preferences prefs(storePath(), center);
    EXPECT_FALSE(prefs.hasStoredValue("0"));
    EXPECT_TRUE(std::filesystem::exists(storePath() + ".corrupt"));
}

TEST_F(PreferencesTest, ConcurrentWritersLoseNothing) {
    Preferences prefs(storePath(), center);
    constexpr int threads = 4;
    constexpr int writesEach = 40;
    std::vector<std::thread> writers;
    for (int t = 0; t < threads; ++t) {
        writers.emplace_back([&, t] {
            for (int i = 0; i < writesEach; ++i) {
                EXPECT_TRUE(prefs.setValue("writer" + std::to_string(t) + "." + std::to_string(i), i).ok());
                static_cast<void>(prefs.boolValue("historyEnabled"));
            }
        });
    }
    for (auto& writer : writers) writer.join();
    json file = readFile(storePath());
    EXPECT_EQ(file.size(), static_cast<std::size_t>(threads * writesEach));
    Preferences reread(storePath(), center);
    EXPECT_EQ(reread.integerValue("writer3.39"), 39);
    auto leftovers = std::distance(std::filesystem::directory_iterator(dir.path() / "config"), {});
    EXPECT_EQ(leftovers, 1) << "no temporary files stay behind";
}

TEST_F(PreferencesTest, ChangeNotificationArrivesOnTheMainLoop) {
    Preferences prefs(storePath(), center);
    std::atomic<int> calls{0};
    std::atomic<bool> onLoop{false};
    prefs.PreferencesDidChangeNotification([&] {
        onLoop = loop.isLoopThread();
        ++calls;
    });
    std::thread poster([&] { prefs.postDidChangeNotification(); });
    poster.join();
    EXPECT_EQ(calls.load(), 0) << "nothing runs before the loop does";
    EXPECT_TRUE(loop.runUntil([&] { return calls == 1; }, 10s));
    EXPECT_TRUE(onLoop.load());
}

TEST_F(PreferencesTest, SharedStoreLivesInTheConfigFolder) {
    auto folder = AppDirectories::configDirectory();
    ASSERT_TRUE(folder.ok());
    EXPECT_EQ(Preferences::shared().path(), *folder + "/preferences.json");
}

}  // namespace
}  // namespace quester
