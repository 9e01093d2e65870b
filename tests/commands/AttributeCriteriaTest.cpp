#include <gtest/gtest.h>
#include <sys/stat.h>

#include "commands/LabelCommand.h"
#include "commands/LabelTagManager.h"
#include "commands/LockedCommand.h"
#include "query/QueryContainer.h"
#include "query/SearchResult.h"
#include "stores/Preferences.h"
#include "testing/FileFlags.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using Verdict = CommandApplyResult;
using Names = std::vector<std::string>;

Verdict judge(Command& command, const std::string& path) {
    static const QueryContainer query;
    SearchResult result;
    result.url = Url(path);
    return command.commandImpApply(result, nullptr, query);
}

TEST(LabelJudgement, ATagMatchesByLowerCaseTextAcrossNeighbouringTags) {
    testing::TempDir dir;
    auto darkRed = dir.write("a").string(), pair = dir.write("b").string(), none = dir.write("c").string();
    if (!testing::setTags(darkRed, "Dark Red")) GTEST_SKIP() << "no user attributes here";
    ASSERT_TRUE(testing::setTags(pair, "car,pet"));

    LabelCommand red("red", false), notRed("red", true), spanning("r p", false);
    EXPECT_EQ(judge(red, darkRed), Verdict::accept);
    EXPECT_EQ(judge(red, none), Verdict::exclude);
    EXPECT_EQ(judge(red, dir.str() + "/gone"), Verdict::exclude) << "unreadable tags are no tags";
    EXPECT_EQ(judge(notRed, darkRed), Verdict::exclude);
    EXPECT_EQ(judge(notRed, none), Verdict::accept);
    EXPECT_EQ(judge(spanning, pair), Verdict::accept) << "the tags are joined by one blank";
}

TEST(LockedJudgement, LockedAndNotLockedSplitReadOnlyItems) {
    testing::TempDir dir;
    auto readOnly = dir.write("a").string(), writable = dir.write("b").string();
    ::chmod(readOnly.c_str(), 0444);
    LockedCommand locked(false), notLocked(true);
    EXPECT_EQ(judge(locked, readOnly), Verdict::accept);
    EXPECT_EQ(judge(locked, writable), Verdict::exclude);
    EXPECT_EQ(judge(notLocked, readOnly), Verdict::exclude);
    EXPECT_EQ(judge(notLocked, writable), Verdict::accept);
    EXPECT_EQ(judge(locked, dir.str() + "/gone"), Verdict::exclude) << "unreadable is not locked";
}

TEST(LabelTagManager, MergeKeepsNewFirstAndStopsOldEntriesAtFifty) {
    EXPECT_EQ(LabelTagManager::merge({"b", "a"}, {"a", "c", "b", "d"}), (Names{"b", "a", "c", "d"}));
    Names many, older{"old"};
    for (int i = 0; i < 60; ++i) many.push_back("t" + std::to_string(i));
    EXPECT_EQ(LabelTagManager::merge(many, older), many) << "new entries are never cut, old ones don't join";
    Names fortyNine(many.begin(), many.begin() + 49);
    auto merged = LabelTagManager::merge(fortyNine, {"x", "y"});
    EXPECT_EQ(merged.size(), 50u);
    EXPECT_EQ(merged.back(), "x");
}

TEST(LabelTagManager, TagsSeenOnItemsAreRememberedAcrossRuns) {
    testing::TempDir dir;
    auto path = dir.write("a").string();
    if (!testing::setTags(path, "Work,Blue")) GTEST_SKIP() << "no user attributes here";
    const std::string store = dir.str() + "/prefs.json";
    {
        Preferences preferences(store);
        ASSERT_TRUE(preferences.setValue("tags", Names{"Blue", "Home"}));
        LabelTagManager manager(preferences);
        EXPECT_EQ(manager.labels(path), (Names{"Work", "Blue"}));
        EXPECT_EQ(manager.labels(dir.str() + "/gone"), Names{});
        EXPECT_EQ(manager.tagsForDisplay(), (Names{"Blue", "Home", "Work"}));
        ASSERT_TRUE(manager.save());
    }
    Preferences reopened(store);
    EXPECT_EQ(reopened.stringList("tags"), (Names{"Work", "Blue", "Home"}));
}

}  // namespace
}  // namespace quester
