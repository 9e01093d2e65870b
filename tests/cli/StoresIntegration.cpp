#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "testing/QuesterProcess.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using json = nlohmann::json;

// Runs of the built command against a QUESTER_HOME of the test's own.
class StoresIntegrationTest : public ::testing::Test {
protected:
    StoresIntegrationTest() {
        tree.write("docs/budget-2024.xlsx", "1");
        tree.write("docs/budget.bak", "2");
        tree.write("node_modules/budget.js", "3");
        tree.write("other/budget notes.txt", "4");
    }

    testing::QuesterProcess run(const std::vector<std::string>& arguments) const {
        return testing::QuesterProcess::run(QUESTER_BINARY, arguments, scratch,
                                            "QUESTER_HOME=" + testing::QuesterProcess::quoted(home.str()) + " ");
    }
    std::set<std::string> found(std::vector<std::string> arguments) const {
        arguments.insert(arguments.end(), {"--format", "paths"});
        std::set<std::string> paths;
        std::istringstream lines(run(arguments).out);
        for (std::string line; std::getline(lines, line);) paths.insert(line.substr(tree.str().size() + 1));
        return paths;
    }
    std::vector<json> jsonLines(const std::string& text) const {
        std::vector<json> records;
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) records.push_back(json::parse(line));
        return records;
    }

    testing::TempDir tree;
    testing::TempDir home;
    testing::TempDir scratch;
};

TEST_F(StoresIntegrationTest, SettingsAreTypedListedWithDefaultsAndReset) {
    auto wrong = run({"config", "set", "historyMaxCount", "many"});
    EXPECT_EQ(wrong.status, 2);
    EXPECT_NE(wrong.err.find("historyMaxCount takes a whole number, not 'many'"), std::string::npos) << wrong.err;
    EXPECT_EQ(run({"config", "set", "nosuchsetting", "1"}).status, 2);

    ASSERT_EQ(run({"config", "set", "historyMaxCount", "50"}).status, 0);
    ASSERT_EQ(run({"config", "set", "hoverPreviews", "yes"}).status, 0);
    EXPECT_EQ(run({"config", "get", "historyMaxCount"}).out, "50\n");
    EXPECT_EQ(run({"config", "get", "listTextSize"}).out, "12\n");

    const auto preferences = json::parse(testing::readFile(home.path() / "config/preferences.json"));
    EXPECT_EQ(preferences, (json{{"historyMaxCount", 50}, {"hoverPreviews", true}})) << "readable JSON, values typed";

    const auto listed = run({"config", "list", "--format", "json"});
    ASSERT_EQ(listed.status, 0) << listed.err;
    std::size_t registered = 0;
    for (const auto& record : jsonLines(listed.out)) {
        if (!record["default"].is_null()) ++registered;
        if (record["key"] == "historyMaxCount") {
            EXPECT_EQ(record["value"], 50);
            EXPECT_EQ(record["default"], 20);
            EXPECT_TRUE(record["changed"]);
        }
        if (record["key"] == "nettworkDiskCachingOnly") {
            EXPECT_FALSE(record["changed"]);
        }
    }
    EXPECT_GE(registered, 38u);
    EXPECT_NE(run({"config", "list"}).out.find("* historyMaxCount"), std::string::npos);

    ASSERT_EQ(run({"config", "reset", "historyMaxCount"}).status, 0);
    EXPECT_EQ(run({"config", "get", "historyMaxCount"}).out, "20\n");
    ASSERT_EQ(run({"config", "set", "updateCachesEvery", "--value=-1"}).status, 0);
    EXPECT_EQ(run({"config", "get", "updateCachesEvery"}).out, "-1\n");
}

TEST_F(StoresIntegrationTest, SearchesAreRecordedNewestFirstAndTheHistoryClears) {
    for (const char* query : {"budget", "notes", "budget", "   "}) run({"search", query, "--in", tree.str()});
    run({"search", "budget : frobnicated", "--in", tree.str()});
    const auto history = run({"history", "--format", "json"});
    ASSERT_EQ(history.status, 0) << history.err;
    const auto records = jsonLines(history.out);
    ASSERT_EQ(records.size(), 2u) << history.out;
    EXPECT_EQ(records[0]["query"], "budget");
    EXPECT_EQ(records[1]["query"], "notes");
    EXPECT_EQ(jsonLines(run({"history", "--limit", "1", "--format", "json"}).out).size(), 1u);
    EXPECT_NE(run({"history"}).out.find("  notes\n"), std::string::npos);

    ASSERT_EQ(run({"config", "set", "historyEnabled", "false"}).status, 0);
    EXPECT_EQ(run({"history"}).status, 1);
    ASSERT_EQ(run({"config", "reset", "historyEnabled"}).status, 0);
    EXPECT_EQ(run({"history"}).status, 1) << "turning the history off emptied it";
    run({"search", "budget", "--in", tree.str()});
    ASSERT_EQ(run({"history", "clear"}).status, 0);
    EXPECT_EQ(run({"history", "--format", "json"}).out, "");
}

TEST_F(StoresIntegrationTest, TwoCommandsSearchingAtOnceKeepBothHistories) {
    std::vector<pid_t> shells;
    for (const char* word : {"alpha", "beta"}) {
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            bool allRan = true;
            for (int i = 0; i < 10; ++i) {
                allRan = run({"search", word + std::to_string(i), "--in", tree.str()}).status == 1 && allRan;
            }
            ::_exit(allRan ? 0 : 1);
        }
        shells.push_back(child);
    }
    for (pid_t child : shells) {
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    EXPECT_EQ(jsonLines(run({"history", "--format", "json"}).out).size(), 20u);
}

TEST_F(StoresIntegrationTest, IgnoredFoldersAndExtensionsAreLeftOutUnlessAskedFor) {
    ASSERT_EQ(run({"ignore", "add", "folder", "node_modules"}).status, 0);
    ASSERT_EQ(run({"ignore", "add", "extension", ".bak"}).status, 0);
    EXPECT_EQ(run({"ignore", "list"}).out, "Extensions\n  .bak\nFiles & Folders\n  node_modules\n");
    EXPECT_EQ(found({"search", "budget", "--in", tree.str()}),
              (std::set<std::string>{"docs/budget-2024.xlsx", "other/budget notes.txt"}));
    EXPECT_EQ(found({"search", "budget", "--in", tree.str(), "--no-ignore"}).size(), 4u);
    ASSERT_EQ(run({"ignore", "remove", "extension", "bak"}).status, 0);
    EXPECT_EQ(run({"ignore", "remove", "extension", "bak"}).status, 1);
    EXPECT_TRUE(found({"search", "budget", "--in", tree.str()}).contains("docs/budget.bak"));
}

TEST_F(StoresIntegrationTest, GroupsAndFavouritesAreSearchedByNameAndRecordedAsRecentLocations) {
    ASSERT_EQ(run({"group", "add", "Work", tree.str() + "/docs", tree.str() + "/other"}).status, 0);
    ASSERT_EQ(run({"group", "add", "Work", tree.str() + "/docs/"}).status, 0);
    EXPECT_EQ(run({"group", "add", "Work", tree.str() + "/missing"}).status, 2);
    const auto groups = run({"group", "list"});
    EXPECT_EQ(groups.out, "Work\n  " + tree.str() + "/docs\n  " + tree.str() + "/other\n");
    EXPECT_EQ(found({"search", "budget", "--location", "Work"}),
              (std::set<std::string>{"docs/budget-2024.xlsx", "docs/budget.bak", "other/budget notes.txt"}));

    const auto favourite = run({"favorite", "add", tree.str() + "/node_modules", "--name", "deps"});
    ASSERT_EQ(favourite.status, 0) << favourite.err;
    EXPECT_EQ(favourite.out, "deps\n");
    EXPECT_EQ(found({"search", "budget", "--location", "deps"}), std::set<std::string>{"node_modules/budget.js"});
    EXPECT_EQ(run({"favorite", "list"}).out, "deps\t" + tree.str() + "/node_modules\n");
    EXPECT_EQ(run({"search", "budget", "--location", "Nowhere"}).status, 2);

    const auto preferences = json::parse(testing::readFile(home.path() / "config/preferences.json"));
    EXPECT_EQ(preferences["recentLocations"],
              (json{tree.str() + "/node_modules", tree.str() + "/other", tree.str() + "/docs"}));

    // A member whose disk is another now (an unplugged disk leaves its mount
    // point behind as an empty folder) is not searched.
    auto stored = json::parse(testing::readFile(home.path() / "config/preferences.json"));
    stored["GroupStoreJSONData"][0]["urls"][1]["diskKey"] = "Unplugged 1000 ext4";
    std::ofstream(home.path() / "config/preferences.json") << stored.dump();
    EXPECT_EQ(found({"search", "budget", "--location", "Work"}),
              (std::set<std::string>{"docs/budget-2024.xlsx", "docs/budget.bak"}));

    ASSERT_EQ(run({"group", "remove", "Work", tree.str() + "/other"}).status, 0);
    EXPECT_EQ(found({"search", "budget", "--location", "Work"}).size(), 2u);
    ASSERT_EQ(run({"group", "remove", "Work"}).status, 0);
    EXPECT_EQ(run({"group", "list"}).status, 1);
    ASSERT_EQ(run({"favorite", "remove", "deps"}).status, 0);
    EXPECT_EQ(run({"favorite", "list"}).status, 1);
}

TEST_F(StoresIntegrationTest, SavedSearchesRunWithTheirOwnQueryAndFolders) {
    ASSERT_EQ(run({"saved", "add", "Sheets", "budget .xlsx", "--in", tree.str() + "/docs"}).status, 0);
    EXPECT_EQ(run({"saved", "add", "Sheets", "other"}).status, 2) << "names are unique";
    const auto listed = jsonLines(run({"saved", "list", "--format", "json"}).out);
    ASSERT_EQ(listed.size(), 1u);
    EXPECT_EQ(listed[0]["userName"], "Sheets");
    EXPECT_EQ(found({"saved", "run", "Sheets"}), std::set<std::string>{"docs/budget-2024.xlsx"});
    EXPECT_EQ(found({"saved", "run", "Sheets", "--in", tree.str()}), std::set<std::string>{"docs/budget-2024.xlsx"});
    ASSERT_EQ(run({"saved", "remove", "Sheets"}).status, 0);
    EXPECT_EQ(run({"saved", "run", "Sheets"}).status, 2);
}

TEST_F(StoresIntegrationTest, AMalformedEntryInTheSettingsFileIsDroppedAndTheRestStays) {
    std::filesystem::create_directories(home.path() / "config");
    std::ofstream(home.path() / "config/preferences.json") << R"({
        "savedSearches": [{"userName": "Broken"}, {"id": "1", "userName": "Kept", "queryString": "budget",
                           "searchHidden": false, "location": ""}],
        "ignoreFolders": ["node_modules", 42],
        "GroupStoreJSONData": [{"name": "No id"}, {"id": "6F9619FF-8B86-D011-B42D-00C04FC964FF", "name": "Docs",
                                "urls": [{"id": "6F9619FF-8B86-D011-B42D-00C04FC964F0", "url": "file://)" +
                                                                  tree.str() + R"(/docs/"}]}],
        "history": [{"queryString": 3}, {"queryString": "kept", "performedDate": 1}]})";
    EXPECT_EQ(run({"saved", "list"}).out, "Kept: budget  (in home)\n");
    EXPECT_EQ(run({"ignore", "list"}).out, "Extensions\nFiles & Folders\n  node_modules\n");
    EXPECT_EQ(run({"group", "list"}).out, "Docs\n  " + tree.str() + "/docs\n");
    EXPECT_EQ(jsonLines(run({"history", "--format", "json"}).out).size(), 1u);
    ASSERT_EQ(run({"search", "budget", "--in", tree.str()}).status, 0);
    EXPECT_EQ(jsonLines(run({"history", "--format", "json"}).out).size(), 2u) << "the store goes on";
}

TEST_F(StoresIntegrationTest, StatisticsAndTheLogFollowEachSearch) {
    const auto search = run({"search", "budget", "--in", tree.str(), "--log"});
    ASSERT_EQ(search.status, 0) << search.err;
    const auto stats = jsonLines(run({"stats", "--format", "json"}).out);
    ASSERT_EQ(stats.size(), 1u);
    EXPECT_EQ(stats[0]["rawQuery"], "budget");
    ASSERT_EQ(stats[0]["results"].size(), 1u);
    bool fileSystem = false;
    for (const auto& source : stats[0]["results"][0]["durations"]) fileSystem = fileSystem || source["supplier"] == 1;
    EXPECT_TRUE(fileSystem) << stats[0].dump();
    EXPECT_NE(run({"stats"}).out.find("file system"), std::string::npos);
    ASSERT_EQ(run({"stats", "clear"}).status, 0);
    EXPECT_EQ(run({"stats"}).status, 1);

    const std::string log = testing::readFile(home.path() / "cache/Today's Log.txt");
    EXPECT_NE(log.find(" \tSearchManager "), std::string::npos) << log.substr(0, 400);
    ASSERT_EQ(run({"config", "set", "loggingEnabled", "true"}).status, 0);
    const auto before = log.size();
    run({"search", "budget", "--in", tree.str()});
    EXPECT_GT(testing::readFile(home.path() / "cache/Today's Log.txt").size(), before);
}

}  // namespace
}  // namespace quester
