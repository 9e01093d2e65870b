#include "stores/Preferences.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <thread>

#include "support/AppDirectories.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using json = nlohmann::json;
using namespace std::chrono_literals;

class PreferencesTest : public ::testing::Test {
protected:
    std::string storePath() const { return (dir.path() / "config" / Preferences::fileName).string(); }
    json storedFile() const { return json::parse(testing::readFile(storePath())); }

    testing::TempDir dir;
    MainLoop loop;
    NotificationCenter center{loop};
};

TEST_F(PreferencesTest, StartupRegistersDefaultsAndStoresTheOneTimeValuesOnlyOnce) {
    Preferences first(storePath(), center);
    first.startup("120");
    EXPECT_TRUE(first.boolValue("sizeIsVisible"));
    json file = storedFile();
    EXPECT_EQ(file["showInMenuBar"], true);
    EXPECT_EQ(file["bringToFrontHotKey"], false);
    EXPECT_EQ(file["lastVersion"], 120);
    EXPECT_FALSE(file.contains("sizeIsVisible")) << "defaults are never written";
    ASSERT_TRUE(first.setValue("showInMenuBar", false).ok());

    Preferences second(storePath(), center);
    second.startup("120");
    EXPECT_FALSE(second.boolValue("showInMenuBar"));
}

TEST_F(PreferencesTest, BuildCheck) {
    Preferences prefs(storePath(), center);
    prefs.setIsNewBuild("200");
    EXPECT_TRUE(prefs.boolValue("isNewVersion"));
    prefs.setIsNewBuild("200");
    EXPECT_FALSE(prefs.boolValue("isNewVersion"));
    prefs.setIsNewBuild("+150");
    EXPECT_FALSE(prefs.boolValue("isNewVersion"));
    EXPECT_EQ(prefs.integerValue("lastVersion"), 200) << "an older build never lowers it";

    ASSERT_TRUE(prefs.setValue("isNewVersion", true).ok());
    for (const char* notANumber : {"2.0.1", "", "abc", "12a", "+"}) prefs.setIsNewBuild(notANumber);
    EXPECT_TRUE(prefs.boolValue("isNewVersion"));
    EXPECT_EQ(prefs.integerValue("lastVersion"), 200);

    prefs.setIsNewBuild("201");
    EXPECT_TRUE(prefs.boolValue("isNewVersion"));
    EXPECT_EQ(Preferences(storePath(), center).integerValue("lastVersion"), 201);
}

TEST_F(PreferencesTest, StoredValuesOutrankDefaultsAndMissingOnesReadAsZeroFalseOrNone) {
    {
        Preferences prefs(storePath(), center);
        json values{{"ignoreExtensions", {"tmp", "bak"}},
                    {"SavedIndexInfo", {{{"id", "x"}, {"path", "/"}}}},
                    {"listTextSize", 14},
                    {"iconSizeSlider", 120.5},
                    {"MediaServer:name", "Den"}};
        ASSERT_TRUE(prefs.setValues(values).ok());
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

    EXPECT_FALSE(prefs.boolValue("unknown"));
    EXPECT_EQ(prefs.integerValue("unknown"), 0);
    EXPECT_EQ(prefs.doubleValue("unknown"), 0.0);
    EXPECT_EQ(prefs.stringValue("unknown"), std::nullopt);
    EXPECT_EQ(prefs.stringList("unknown"), std::nullopt);
    EXPECT_EQ(prefs.jsonValue("unknown"), std::nullopt);

    // A stored style of three or more reads as the automatic style 2.
    ASSERT_TRUE(prefs.setValue("resultsViewStyle", 3).ok());
    EXPECT_EQ(prefs.resultsViewStyle(), 2);
    ASSERT_TRUE(prefs.setValue("resultsViewStyle", 1).ok());
    EXPECT_EQ(prefs.resultsViewStyle(), 1);
}

TEST_F(PreferencesTest, AFileThatIsNoJSONObjectIsSetAsideAndDefaultsStand) {
    for (const std::string bad : {"{\"showInMenuBar\": fal", "[1, 2]"}) {
        dir.write("config/preferences.json", bad);
        Preferences prefs(storePath(), center);
        prefs.startup("5");
        EXPECT_TRUE(prefs.boolValue("showInMenuBar")) << bad;
        EXPECT_EQ(testing::readFile(storePath() + ".corrupt"), bad);
    }
}

TEST_F(PreferencesTest, ConcurrentWritersLoseNothing) {
    Preferences prefs(storePath(), center);
    constexpr int threads = 4, writesEach = 40;
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
    EXPECT_EQ(storedFile().size(), static_cast<std::size_t>(threads * writesEach));
    auto leftovers = std::distance(std::filesystem::directory_iterator(dir.path() / "config"), {});
    EXPECT_EQ(leftovers, 2) << "the file and its lock file, and no temporary file";
}

// Each store reads the file as it is when it changes it, so one that was
// made before another wrote keeps that writer's change.
TEST_F(PreferencesTest, AWriterKeepsWhatAnotherStoreWroteMeanwhile) {
    Preferences first(storePath(), center);
    Preferences second(storePath(), center);
    ASSERT_TRUE(first.setValue("listTextSize", 14).ok());
    ASSERT_TRUE(second.setValue("hoverPreviews", true).ok());
    EXPECT_EQ(second.integerValue("listTextSize"), 14);
    json file = storedFile();
    EXPECT_EQ(file["listTextSize"], 14);
    EXPECT_EQ(file["hoverPreviews"], true);
    ASSERT_TRUE(
        first.update([](json& values) { values["listTextSize"] = values["listTextSize"].get<int>() + 1; }).ok());
    EXPECT_TRUE(first.boolValue("hoverPreviews"));
    EXPECT_EQ(storedFile()["listTextSize"], 15);
}

TEST_F(PreferencesTest, ChangeObserversHearThePostedNotification) {
    Preferences prefs(storePath(), center);
    int calls = 0;
    prefs.PreferencesDidChangeNotification([&] { ++calls; });
    prefs.postDidChangeNotification();
    EXPECT_TRUE(loop.runUntil([&] { return calls == 1; }, 10s));
}

TEST_F(PreferencesTest, SharedStoreLivesInTheConfigFolder) {
    auto folder = AppDirectories::configDirectory();
    ASSERT_TRUE(folder.ok());
    EXPECT_EQ(Preferences::shared().path(), *folder + "/preferences.json");
}

}  // namespace
}  // namespace quester
