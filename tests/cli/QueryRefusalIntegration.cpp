// Queries that could stop the program, or that it read as something else,
// through the built command: each is searched or refused with a message that
// says why, and none crashes or hangs.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "testing/QuesterProcess.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

class QueryRefusalTest : public ::testing::Test {
protected:
    QueryRefusalTest() {
        tree.write("a report.txt", std::string(2000, 'x'));
        tree.write(std::string(30, 'a'));
        tree.write("Cafe\u0301 menu.txt");
    }

    testing::QuesterProcess search(const std::string& query) const {
        return testing::QuesterProcess::run(QUESTER_BINARY, {"search", query, "--in", tree.str(), "--format", "paths"},
                                            scratch, "QUESTER_HOME=" + scratch.str() + " ");
    }

    testing::QuesterProcess explain(const std::string& query, const std::string& option = "--color=never") const {
        return testing::QuesterProcess::run(QUESTER_BINARY, {"explain", query, option}, scratch,
                                            "QUESTER_HOME=" + scratch.str() + " ");
    }

    static std::string repeated(const std::string& piece, int times, const std::string& last = "") {
        std::string text;
        for (int i = 0; i < times; ++i) text += piece;
        return text + last;
    }

    testing::TempDir tree;
    testing::TempDir scratch;
};

// Forty thousand words overflowed the stack of the explain printer, and twenty
// thousand that of a search worker.
TEST_F(QueryRefusalTest, LongWordListsAreSearchedOrRefusedWithoutCrashing) {
    for (const std::string& query : {repeated("a ", 2000), repeated("a OR ", 999, "a")}) {
        SCOPED_TRACE(query.substr(0, 12));
        const auto explained = explain(query);
        EXPECT_EQ(explained.status, 0) << explained.err;
        const auto found = search(query);
        EXPECT_EQ(found.status, 0) << found.err;
        EXPECT_NE(found.out.find("a report.txt"), std::string::npos);
    }
    const std::vector<std::pair<std::string, std::string>> refused = {
        {repeated("a ", 40000), "at most 20000"},
        {repeated("a ", 2001), "at most 2000 are read"},
        {repeated("a OR ", 1000, "a"), "at most 2000 are read"},
    };
    for (const auto& [query, message] : refused) {
        SCOPED_TRACE(message);
        for (const auto& run : {explain(query), search(query)}) {
            EXPECT_EQ(run.status, 2) << "ended by a signal, or accepted";
            EXPECT_NE(run.err.find(message), std::string::npos) << run.err;
        }
    }
}

// AND, NOT and ") report" printed nothing and ended well, where OR was refused.
TEST_F(QueryRefusalTest, QueriesOfOnlyOperatorsOrAStrayParenthesisAreRefused) {
    for (const char* query : {"AND", "NOT", "OR", "( )", ") report"}) {
        SCOPED_TRACE(query);
        const auto run = search(query);
        EXPECT_EQ(run.status, 2);
        EXPECT_TRUE(run.out.empty()) << run.out;
        EXPECT_TRUE(run.err.find("only operators") != std::string::npos ||
                    run.err.find("closes no '('") != std::string::npos)
            << run.err;
        EXPECT_NE(explain(query).err.find("a search would refuse this query"), std::string::npos);
    }
}

// Negative counts and sizes were accepted, a size too big for 64 bits became
// another number and a reversed range another range.
TEST_F(QueryRefusalTest, AbsurdArgumentsAreReportedAsNotUnderstood) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"report : max depth -5", "'max depth -5'"},
        {"report : smaller than -1 kb", "'smaller than -1 kb'"},
        {"report : max path length -1", "'max path length -1'"},
        {"report : bigger than 99999999999999999999 tb", "'bigger than 99999999999999999999 tb'"},
        {"report : modified from 2024 to 1999", "'modified from 2024 to 1999'"},
        {"report : modified last 2147483647 years", "'modified last 2147483647 years'"},
    };
    for (const auto& [query, words] : cases) {
        SCOPED_TRACE(query);
        const auto run = search(query);
        EXPECT_EQ(run.status, 2);
        EXPECT_NE(run.err.find("not understood after the colon: " + words), std::string::npos) << run.err;
    }
    const auto sensible = search("report : bigger than 1kb AND max depth 30 AND modified from 1999 to 2999");
    EXPECT_EQ(sensible.status, 0) << sensible.err;
    EXPECT_NE(sensible.out.find("a report.txt"), std::string::npos);
}

// A criterion typed twice was refused as not understood.
TEST_F(QueryRefusalTest, ARepeatedCriterionIsSearched) {
    for (const char* query : {"report : bigger than 1kb bigger than 1kb", "report : .txt OR .txt"}) {
        SCOPED_TRACE(query);
        const auto run = search(query);
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_NE(run.out.find("a report.txt"), std::string::npos);
    }
}

// "(a*)*b" over a name of thirty "a"s searched for over a minute.
TEST_F(QueryRefusalTest, RunawayRegexEndsWithoutAMatch) {
    for (const char* query : {"aaa : regex \"(a*)*b\"", "aaa : regex \"^(a+)+$x\""}) {
        SCOPED_TRACE(query);
        const auto run = search(query);
        EXPECT_EQ(run.status, 1) << "nothing found: " << run.err;
        EXPECT_TRUE(run.out.empty()) << run.out;
    }
    EXPECT_NE(search("aaa : regex \"^(a+)+$\"").out.find(std::string(30, 'a')), std::string::npos);
}

// "café" typed composed missed the name written with a combining accent.
TEST_F(QueryRefusalTest, ComposedWordFindsADecomposedName) {
    const auto run = search("caf\u00e9");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("menu.txt"), std::string::npos) << run.out;
}

// A criterion whose engine this program lacks must never be dropped quietly:
// "report : mailsearch "x"" must not list every file named report.
TEST_F(QueryRefusalTest, ACriterionWithoutItsEngineIsRefusedBeforeSearchingAndMarkedInExplain) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"report : mailsearch \"x\"", "mail search"},
        {": mailsearch \"x\"", "mail search"},
        {"report : author \"ann\"", "metadata index"},
        {"report : shortcut music quiz", "shortcuts"},
        {"report : bigger than 1kb OR mailsearch \"x\"", "mail search"},
    };
    for (const auto& [query, engine] : cases) {
        SCOPED_TRACE(query);
        const auto run = search(query);
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.out, "");
        EXPECT_NE(run.err.find(engine), std::string::npos) << run.err;
    }
    const auto explained = explain("report : mailsearch \"x\" bigger than 1kb", "--json");
    ASSERT_EQ(explained.status, 0) << explained.err;
    const auto commands = nlohmann::json::parse(explained.out)["commands"];
    ASSERT_EQ(commands.size(), 2u) << explained.out;
    for (const auto& command : commands) {
        const bool isMail = command["text"].get<std::string>().starts_with("mailsearch");
        EXPECT_EQ(command["available"], !isMail) << command.dump();
        EXPECT_EQ(command.value("missingEngine", ""), isMail ? "mail search" : "") << command.dump();
    }
    EXPECT_NE(explain("report : mailsearch \"x\"").out.find("not available"), std::string::npos);
}

}  // namespace
}  // namespace quester
