#include "stores/HistoryController.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <set>

#include "testing/TempDir.h"

namespace quester {
namespace {

using json = nlohmann::json;

class HistoryControllerTest : public ::testing::Test {
protected:
    HistoryControllerTest() { preferences.registerDefaults(Preferences::registeredDefaultsTable()); }

    std::string storePath() const { return (dir.path() / "config" / Preferences::fileName).string(); }
    std::vector<std::string> texts() const {
        std::vector<std::string> all;
        for (const auto& item : history.items()) all.push_back(item.queryString);
        return all;
    }

    testing::TempDir dir;
    MainLoop loop;
    NotificationCenter center{loop};
    Preferences preferences{storePath(), center};
    ManualClock clock;
    HistoryController history{preferences, center, clock};
};

TEST_F(HistoryControllerTest, BlankQueriesStayOutRepeatsMoveToTheNewestEndAndQueriesAreNewestFirst) {
    ASSERT_TRUE(history.addQuery(" \t\n").ok());
    EXPECT_TRUE(history.items().empty());
    ASSERT_TRUE(history.addQuery("  budget ").ok());
    ASSERT_TRUE(history.addQuery("tax").ok());
    ASSERT_TRUE(history.addQuery("budget").ok());
    EXPECT_EQ(texts(), (std::vector<std::string>{"tax", "budget"}));
    EXPECT_EQ(history.queries(), (std::vector<std::string>{"budget", "tax"}));
    ASSERT_TRUE(history.deleteQuery("tax").ok());
    EXPECT_EQ(texts(), std::vector<std::string>{"budget"});
}

TEST_F(HistoryControllerTest, TheStoreHoldsOneMoreThanTheLimitAndDropsTheOldestFirst) {
    for (int i = 0; i < 20; ++i) ASSERT_TRUE(history.addQuery("q" + std::to_string(i)).ok());
    ASSERT_TRUE(history.addQuery("q20").ok());
    EXPECT_EQ(history.items().size(), 21u);
    ASSERT_TRUE(history.addQuery("q21").ok());
    const auto all = texts();
    ASSERT_EQ(all.size(), 21u);
    EXPECT_EQ(all.front(), "q1");
    EXPECT_EQ(all.back(), "q21");
}

TEST_F(HistoryControllerTest, AMalformedEntryIsDroppedAndTheRestLoad) {
    dir.write("config/preferences.json", R"({"history": [
        {"id": "a", "type": 0, "queryString": "good", "url": "", "performedDate": 1.5},
        {"id": "b", "type": 7, "queryString": "bad type", "performedDate": 2},
        {"id": "c", "queryString": "no date"},
        "not a map",
        {"queryString": "opened", "type": 1, "url": "file:///tmp/report.pdf", "performedDate": 3}]})");
    preferences.reload();
    const auto items = history.items();
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(items[0].id, "a");
    EXPECT_FALSE(items[0].url.has_value());
    EXPECT_EQ(items[1].query(), "report.pdf");
    EXPECT_FALSE(items[1].id.empty());
}

TEST_F(HistoryControllerTest, VersionCheckEmptiesAHistoryWithoutVersionOnceAndTheSwitchEmptiesIt) {
    ASSERT_TRUE(history.addQuery("kept").ok());
    ASSERT_TRUE(preferences.setValue("historyVersion", 1).ok());
    history.startup();
    EXPECT_EQ(texts().size(), 1u) << "version 1 keeps the list";
    EXPECT_EQ(preferences.integerValue("historyVersion"), 2);

    ASSERT_TRUE(preferences.removeValue("historyVersion").ok());
    history.startup();
    EXPECT_TRUE(texts().empty());

    ASSERT_TRUE(history.addQuery("private").ok());
    history.preferencesDidChange();
    EXPECT_EQ(texts().size(), 1u);
    ASSERT_TRUE(preferences.setValue("historyEnabled", false).ok());
    history.preferencesDidChange();
    EXPECT_TRUE(texts().empty());
}

// Two processes, each with its own store on the same file, add at the same
// time: every entry of both is kept.
TEST_F(HistoryControllerTest, TwoProcessesAddingAtOnceKeepEveryEntry) {
    ASSERT_TRUE(preferences.setValue("historyMaxCount", 500).ok());
    std::vector<pid_t> children;
    for (const char* prefix : {"first", "second"}) {
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            MainLoop childLoop;
            NotificationCenter childCenter(childLoop);
            Preferences own(storePath(), childCenter);
            own.registerDefaults(Preferences::registeredDefaultsTable());
            HistoryController adder(own, childCenter);
            bool allAdded = true;
            for (int i = 0; i < 100; ++i) allAdded = adder.addQuery(prefix + std::to_string(i)).ok() && allAdded;
            ::_exit(allAdded ? 0 : 1);
        }
        children.push_back(child);
    }
    for (pid_t child : children) {
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    preferences.reload();
    const auto all = texts();
    EXPECT_EQ(all.size(), 200u);
    EXPECT_EQ(std::set<std::string>(all.begin(), all.end()).size(), 200u);
}

}  // namespace
}  // namespace quester
