#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

#include "testing/QuesterProcess.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

// A criterion whose engine this program lacks must never be dropped quietly:
// "report : content "total"" once listed every file named report.
class UnavailableCriteriaTest : public ::testing::Test {
protected:
    UnavailableCriteriaTest() { tree.write("report.txt", "the yearly total"); }

    testing::QuesterProcess run(const std::vector<std::string>& arguments) {
        return testing::QuesterProcess::run(QUESTER_BINARY, arguments, scratch);
    }

    testing::TempDir tree;
    testing::TempDir scratch;
};

TEST_F(UnavailableCriteriaTest, SearchRefusesBeforeSearchingAndNamesTheCriterion) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"report : content \"total\"", "content search"},
        {"report : mailsearch \"x\"", "mail search"},
        {": mailsearch \"x\"", "mail search"},
        {"report : author \"ann\"", "metadata index"},
        {"report : shortcut music quiz", "shortcuts"},
        {"report : bigger than 1kb OR content \"total\"", "content search"},
    };
    for (const auto& [query, engine] : cases) {
        auto outcome = run({"search", query, "--in", tree.str()});
        EXPECT_EQ(outcome.status, 2) << query;
        EXPECT_EQ(outcome.out, "") << query;
        EXPECT_NE(outcome.err.find(engine), std::string::npos) << query << ": " << outcome.err;
    }
}

TEST_F(UnavailableCriteriaTest, ExplainMarksTheCriterionAsNotAvailable) {
    auto outcome = run({"explain", "report : content \"total\" bigger than 1kb", "--json"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    auto explanation = nlohmann::json::parse(outcome.out);
    bool sawContent = false;
    for (const auto& command : explanation["commands"]) {
        const bool isContent = command["text"].get<std::string>().starts_with("content");
        sawContent = sawContent || isContent;
        EXPECT_EQ(command["available"], !isContent) << command.dump();
        if (isContent) {
            EXPECT_EQ(command["missingEngine"], "content search");
        }
    }
    EXPECT_TRUE(sawContent) << outcome.out;

    auto text = run({"explain", "report : content \"total\""});
    EXPECT_NE(text.out.find("not available"), std::string::npos) << text.out;
}

}  // namespace
}  // namespace quester
