#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "testing/QuesterProcess.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using testing::QuesterProcess;
using testing::TempDir;

QuesterProcess quester(const std::vector<std::string>& arguments, const TempDir& scratch) {
    return QuesterProcess::run(QUESTER_BINARY, arguments, scratch);
}

TEST(TextCommandIntegration, ExitStatusTellsTextFromNoTextFromUnreadable) {
    TempDir dir;
    auto notes = dir.write("notes.txt", "Quarterly total\nsecond line").string();
    auto empty = dir.write("empty.txt").string();

    auto read = quester({"text", notes}, dir);
    EXPECT_EQ(read.status, 0);
    EXPECT_EQ(read.out, "Quarterly total\nsecond line\n");

    EXPECT_EQ(quester({"text", empty}, dir).status, 1);
    // One document with text among several is enough for 0.
    EXPECT_EQ(quester({"text", empty, notes}, dir).status, 0);

    auto missing = quester({"text", dir.str() + "/gone.pdf", notes}, dir);
    EXPECT_EQ(missing.status, 2);
    EXPECT_NE(missing.err.find("gone.pdf"), std::string::npos) << missing.err;
    EXPECT_NE(missing.out.find("Quarterly total"), std::string::npos) << "the readable file is still printed";
}

TEST(TextCommandIntegration, WordsComeMostFrequentFirstAndJsonKeepsPages) {
    TempDir dir;
    auto notes = dir.write("notes.txt", "beta alpha beta gamma alpha beta").string();
    auto words = quester({"text", "--words", notes}, dir);
    EXPECT_EQ(words.out, "3\tbeta\n2\talpha\n1\tgamma\n");

    auto json = quester({"text", "--format", "json", notes}, dir);
    ASSERT_EQ(json.status, 0);
    EXPECT_EQ(json.out.rfind("{\"path\":", 0), 0u) << json.out;
    auto record = nlohmann::json::parse(json.out);
    EXPECT_EQ(record["path"], notes);
    EXPECT_EQ(record["text"], nlohmann::json::array({"beta alpha beta gamma alpha beta"}));
    EXPECT_EQ(record["ocrText"], nlohmann::json::array());
}

}  // namespace
}  // namespace quester
