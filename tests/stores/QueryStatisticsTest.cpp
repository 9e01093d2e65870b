#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

#include "stores/QueryStatisticsController.h"
#include "support/AppDirectories.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using namespace std::chrono_literals;

const QueryStatistic::Date march1 = std::chrono::sys_days(std::chrono::year(2024) / 3 / 1) + 9h + 30min;

class QueryStatisticsTest : public ::testing::Test {
protected:
    testing::TempDir dir;
    std::string path = dir.str() + "/QueryStatistics.json";
    QueryStatisticsController controller{path};
};

TEST_F(QueryStatisticsTest, addGroupsByQueryAndRunStart) {
    controller.add(march1 + 400ms, "budget", 1, 3);
    controller.add(march1, "budget", 10, 0);
    controller.add(march1 + 1min, "budget", 1, 2);
    controller.add(march1, "tax", 2, 5);
    const auto all = controller.all();
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[0].rawQuery, "budget");
    ASSERT_EQ(all[0].results.size(), 2u);
    EXPECT_EQ(all[0].results[0].date, march1);
    ASSERT_EQ(all[0].results[0].durations.size(), 2u);
    EXPECT_EQ(all[0].results[0].durations[1].supplier, 10);
    EXPECT_EQ(all[1].results[0].durations[0].durationInSeconds, 5);
    EXPECT_NE(all[0].id, all[1].id);
}

TEST_F(QueryStatisticsTest, fileRoundTripsThroughPrettyJSONAndClearEmptiesIt) {
    controller.add(march1, "budget .xlsx", 12, 7);
    ASSERT_TRUE(controller.save().ok());
    const auto saved = controller.all();
    const std::string text = testing::readFile(path);
    EXPECT_NE(text.find("\n  {\n    \"id\": "), std::string::npos) << text;
    EXPECT_NE(text.find("\"date\": \"2024-03-01T09:30:00Z\""), std::string::npos) << text;
    EXPECT_NE(text.find("\"supplier\": 12"), std::string::npos) << text;

    QueryStatisticsController reread(path);
    reread.load();
    EXPECT_EQ(reread.all(), saved);
    // Adding to a reloaded run finds it by its start.
    reread.add(march1 + 200ms, "budget .xlsx", 1, 1);
    EXPECT_EQ(reread.all()[0].results.size(), 1u);
    reread.clear();
    EXPECT_EQ(testing::readFile(path), "[]");
}

TEST_F(QueryStatisticsTest, loadHonoursDateOffsetsAndDropsOnlyTheEntriesThatDontRead) {
    const std::string good = R"({"id":"a","rawQuery":"q","results":[{"id":"r","date":"2024-03-01T11:30:00+02:00",)"
                             R"("durations":[{"id":"d","supplier":0,"durationInSeconds":4}]}]})";
    for (const char* bad : {
             R"({"id":"a"})",
             R"({"id":"b","rawQuery":"q2","results":[{"id":"r","date":"yesterday","durations":[]}]})",
             R"({"id":"c","rawQuery":"q3","results":[{"id":"r","date":"2024-03-01T09:30:00Z",)"
             R"("durations":[{"id":"d","supplier":13,"durationInSeconds":1}]}]})",
         }) {
        std::ofstream(path, std::ios::binary | std::ios::trunc) << "[" << bad << "," << good << "]";
        controller.load();
        ASSERT_EQ(controller.all().size(), 1u) << bad;
        EXPECT_EQ(controller.all()[0].results[0].date, march1);
    }
    std::ofstream(path, std::ios::binary | std::ios::trunc) << "not json";
    controller.load();
    EXPECT_TRUE(controller.all().empty());
    std::remove(path.c_str());
    controller.add(march1, "x", 1, 1);
    controller.load();
    EXPECT_TRUE(controller.all().empty());
}

TEST_F(QueryStatisticsTest, twoControllersSavingToOneFileKeepEachOthersRuns) {
    QueryStatisticsController first(path), second(path);
    first.add(march1, "budget", 1, 3);
    second.add(march1 + 1min, "budget", 1, 4);
    second.add(march1, "tax", 2, 1);
    ASSERT_TRUE(first.save().ok());
    ASSERT_TRUE(second.save().ok());
    ASSERT_TRUE(first.save().ok()) << "saving again adds nothing twice";
    QueryStatisticsController reader(path);
    reader.load();
    const auto all = reader.all();
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[0].results.size(), 2u);
    EXPECT_EQ(all[0].results[0].durations.size(), 1u);
    EXPECT_EQ(all[1].rawQuery, "tax");
}

// The file is read and written at every search: it keeps the latest runs of
// the latest queries only.
TEST_F(QueryStatisticsTest, theFileKeepsTheLatestRunsOfTheLatestQueries) {
    const std::size_t runs = QueryStatisticsController::maxRunsPerQuery;
    const std::size_t queries = QueryStatisticsController::maxQueries;
    for (std::size_t run = 0; run < runs + 5; ++run) controller.add(march1 + std::chrono::minutes(run), "budget", 1, 2);
    for (std::size_t query = 0; query < queries; ++query)
        controller.add(march1 + std::chrono::hours(1) + std::chrono::seconds(query), "q" + std::to_string(query), 1, 1);
    ASSERT_TRUE(controller.save());
    QueryStatisticsController reader(path);
    reader.load();
    const auto all = reader.all();
    ASSERT_EQ(all.size(), queries);
    EXPECT_TRUE(std::none_of(all.begin(), all.end(), [](const auto& entry) { return entry.rawQuery == "budget"; }))
        << "the query whose last run is oldest goes";

    QueryStatisticsController few(dir.str() + "/few.json");
    for (std::size_t run = 0; run < runs + 5; ++run) few.add(march1 + std::chrono::minutes(run), "budget", 1, 2);
    ASSERT_TRUE(few.save());
    const auto kept = few.all();
    ASSERT_EQ(kept.size(), 1u);
    ASSERT_EQ(kept[0].results.size(), runs);
    EXPECT_EQ(kept[0].results.front().date, march1 + std::chrono::minutes(5));
}

TEST_F(QueryStatisticsTest, saveFailureKeepsTheListInMemory) {
    // A plain file where the folder should be: no folder can be made there.
    const auto blocker = dir.write("not-a-folder", "x");
    QueryStatisticsController nowhere(blocker.string() + "/QueryStatistics.json");
    nowhere.add(march1, "x", 1, 1);
    EXPECT_FALSE(nowhere.save().ok());
    EXPECT_EQ(nowhere.all().size(), 1u);
    EXPECT_FALSE(QueryStatisticsController("").save().ok());
}

TEST(QueryStatisticsShared, livesInTheDataFolder) {
    const auto folder = AppDirectories::applicationSupportDirectory();
    ASSERT_TRUE(folder.ok());
    EXPECT_EQ(QueryStatisticsController::shared().path(), *folder + "/QueryStatistics.json");
}

}  // namespace
}  // namespace quester
