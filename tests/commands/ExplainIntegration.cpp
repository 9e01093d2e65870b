#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <cstdio>
#include <string>

namespace quester {
namespace {

// Runs `quester explain` with the arguments (already quoted for the shell) and
// answers what it printed and its exit status.
std::pair<std::string, int> explain(const std::string& arguments) {
    std::string command = std::string(QUESTER_EXECUTABLE) + " explain " + arguments + " 2>&1";
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) return {"", -1};
    std::string output;
    char buffer[4096];
    while (size_t count = fread(buffer, 1, sizeof buffer, pipe)) output.append(buffer, count);
    int status = pclose(pipe);
    return {output, WIFEXITED(status) ? WEXITSTATUS(status) : -1};
}

TEST(ExplainCommand, JSONTellsHowASampleQueryWasUnderstood) {
    auto [output, status] = explain("--json 'holiday -work OR trip : is video bigger than 10mb frobnicate'");
    ASSERT_EQ(status, 0) << output;
    auto explanation = nlohmann::ordered_json::parse(output, nullptr, false);
    ASSERT_FALSE(explanation.is_discarded()) << output;

    std::vector<std::string> keys;
    for (const auto& item : explanation.items()) keys.push_back(item.key());
    EXPECT_EQ(keys, (std::vector<std::string>{"searchWords", "searchWordsWithMinus", "orStringGroups", "commands",
                                              "unrecognised", "booleanExpr", "location", "isWordBasedSearch"}));
    EXPECT_EQ(explanation["searchWords"], nlohmann::ordered_json({"holiday", "trip"}));
    EXPECT_EQ(explanation["searchWordsWithMinus"], nlohmann::ordered_json({"-work"}));
    EXPECT_EQ(explanation["orStringGroups"], nlohmann::ordered_json({{"holiday", "-work"}, {"trip"}}));
    EXPECT_EQ(explanation["commands"], nlohmann::ordered_json::parse(R"([
        {"type": "UTICommand", "text": "is video", "available": true},
        {"type": "SizeCommand", "text": "larger than 10mb", "available": true},
        {"type": "NotIncludingWords", "text": "-work", "available": true}])"));
    EXPECT_EQ(explanation["unrecognised"], nlohmann::ordered_json({"frobnicate"}));
    EXPECT_EQ(explanation["booleanExpr"],
              "((\"holiday\" AND NOT \"work\") OR \"trip\") AND ([is video] AND [larger than 10mb])");
    EXPECT_TRUE(explanation["location"].is_null());
    EXPECT_EQ(explanation["isWordBasedSearch"], true);
}

TEST(ExplainCommand, ForAPersonUnrecognisedWordsAreMarked) {
    auto [output, status] = explain("'report : modified today frobnicate'");
    ASSERT_EQ(status, 0) << output;
    EXPECT_NE(output.find("report : modified today [?frobnicate]"), std::string::npos) << output;
    EXPECT_NE(output.find("DateCommand"), std::string::npos) << output;
    EXPECT_NE(output.find("modified today"), std::string::npos) << output;
}

TEST(ExplainCommand, AQueryIsRequired) {
    auto [output, status] = explain("");
    EXPECT_NE(status, 0);
}

}  // namespace
}  // namespace quester
