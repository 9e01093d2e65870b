#include "import/ImportTextResult.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace quester {
namespace {

ImportTextResult twoPages() {
    return ImportTextResult{ImportTextPages{{"first\nline two"}, {"second page"}}, std::nullopt};
}

TEST(ImportTextResultTest, LocatorNamesLinesOfOnePageAndPagesOfMore) {
    ImportTextResult onePage{ImportTextPages{{"one\ntwo\nthree"}}, std::nullopt};
    EXPECT_EQ(onePage.locator(0, false), "Line 1");
    EXPECT_EQ(onePage.locator(4, false), "Line 2");
    EXPECT_EQ(onePage.locator(100, false), "Line 3");

    auto pages = twoPages();
    std::size_t secondPageStart = std::string("first\nline two").size() + 1;
    EXPECT_EQ(pages.locator(secondPageStart, false), "Page 2, line 1");
    EXPECT_EQ(pages.locator(secondPageStart - 1, false), "Page 1, line 2");
    EXPECT_EQ(ImportTextResult{}.locator(0, false), "");
}

TEST(ImportTextResultTest, LocatorCountsCharactersNotBytes) {
    // "é" is two bytes but one character: offset 3 is still on page 1's line.
    ImportTextResult pages{ImportTextPages{{"éé"}, {"x"}}, std::nullopt};
    EXPECT_EQ(pages.locator(2, false), "Page 1, line 1");
    EXPECT_EQ(pages.locator(3, false), "Page 2, line 1");
}

TEST(ImportTextResultTest, AllTextJoinsTextThenOcrPagesOnlyWithOcr) {
    ImportTextResult result{ImportTextPages{{"a"}, {"b"}}, ImportTextPages{{"seen"}}};
    EXPECT_EQ(result.allText(false), "a\nb");
    EXPECT_EQ(result.allText(true), "a\nb\nseen");
    ImportTextResult ocrOnly{std::nullopt, ImportTextPages{{"seen"}}};
    EXPECT_EQ(ocrOnly.allText(false), std::nullopt);
    EXPECT_EQ(ocrOnly.locator(0, true), "Line 1");
}

TEST(ImportTextResultTest, JsonLeavesOutAbsentListsAndRoundTrips) {
    ImportTextResult result{ImportTextPages{{"a"}}, std::nullopt};
    nlohmann::json json = result;
    EXPECT_EQ(json.dump(), R"({"text":[{"text":"a"}]})");
    EXPECT_EQ(json.get<ImportTextResult>(), result);
    EXPECT_EQ(nlohmann::json::object().get<ImportTextResult>(), ImportTextResult{});
}

}  // namespace
}  // namespace quester
