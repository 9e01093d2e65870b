#include <gtest/gtest.h>

#include <unordered_set>

#include "language/SentenceComponent.h"

namespace quester {
namespace {

using Wildcard = SentenceComponent::Wildcard;

std::vector<SentenceComponent> words(std::string_view text, bool splitParens = false) {
    return SentenceComponent::parseWords(text, nullptr, splitParens);
}

std::vector<std::string> texts(const std::vector<SentenceComponent>& list) {
    std::vector<std::string> out;
    for (const auto& word : list) out.push_back(word.textOriginalCase);
    return out;
}

// A word as "lowered@from-to" with marks: " quoted, : after the colon, *< prefix wildcard, >* suffix wildcard.
std::vector<std::string> described(std::string_view text, bool splitParens = false) {
    std::vector<std::string> out;
    for (const auto& word : words(text, splitParens)) {
        std::string line = word.textLowered + "@" + std::to_string(word.position.lowerBound) + "-" +
                           std::to_string(word.position.upperBound);
        if (word.wasInQuotes) line += "\"";
        if (word.isAfterAColon) line += ":";
        if (word.wildcard == Wildcard::prefix) line += "*<";
        if (word.wildcard == Wildcard::suffix) line += ">*";
        out.push_back(line);
    }
    return out;
}

struct WordsCase {
    std::string_view text;
    bool splitParens;
    std::vector<std::string> words;
};

TEST(SentenceComponentParseWords, SentencesGiveTheirWords) {
    const std::vector<WordsCase> cases = {
        {"Budget  .XLSX\tnow", false, {"budget@0-6", ".xlsx@8-13", "now@14-17"}},
        {"\"a b\" c", false, {"a b@1-4\"", "c@6-7"}},
        // A quote inside a word joins it and the word ends at the closing quote.
        {"ab\"cd\"ef", false, {"abcd@0-5\"", "ef@6-8"}},
        // Empty quotes give no word; the blank after a lone star clears its state.
        {"\"\"", false, {}},
        {"* abc", false, {"abc@2-5"}},
        {"*.txt rep* *abc* \"a*b\"", false, {".txt@1-5>*", "rep@6-9*<", "abc@12-15*<", "a*b@18-21\""}},
        // The word under way when the colon comes is in the command area, quoted or not.
        {"a:b c", false, {"ab@0-3:", "c@4-5:"}},
        {"word : next", false, {"word@0-4", "next@7-11:"}},
        {"word: next", false, {"word@0-5:", "next@6-10:"}},
        {"\"a:b\" c", false, {"a:b@1-4\":", "c@6-7:"}},
        // An escaped quote is a character; a lone backslash stays.
        {"say\\\"hi a\\b", false, {"say\"hi@0-7", "a\\b@8-11"}},
        {"(a OR b)", true, {"(@0-1", "a@1-2", "or@3-5", "b@6-7", ")@7-8"}},
        {"(a", false, {"(a@0-2"}},
        {"\"(a)\"", true, {"(a)@1-4\""}},
        {"x \"open words", false, {"x@0-1", "open words@3-13\""}},
        // Positions count user-perceived characters: "e" + combining acute, a two-indicator flag.
        {"cafe\u0301 \U0001F1E9\U0001F1EA ÄRGER", false, {"caf\u00E9@0-4", "\U0001F1E9\U0001F1EA@5-6", "ärger@7-12"}},
    };
    for (const auto& [text, splitParens, expected] : cases) EXPECT_EQ(described(text, splitParens), expected) << text;
}

TEST(SentenceComponentParseWords, InvalidUtf8NeverFails) {
    const auto list = words("ab\xff\xfe cd \xc3");
    ASSERT_EQ(list.size(), 3U);
    EXPECT_EQ(list[1].textLowered, "cd");
}

TEST(SentenceComponent, BooleanOperators) {
    const auto list = words("and OR NOT not \"or\"");
    std::vector<bool> operators;
    for (const auto& word : list) operators.push_back(word.isBooleanOperator());
    EXPECT_EQ(operators, (std::vector<bool>{true, true, true, false, false})) << "only NOT in capitals, never quoted";
}

TEST(SentenceComponent, ToStringRebuildsTheSentence) {
    EXPECT_EQ(toString(words("budget \"q4 plan\" : Bigger than 1mb")), "budget \"q4 plan\" : Bigger than 1mb");
    EXPECT_EQ(toString(words(": today")), ": today");
    EXPECT_EQ(toString(words("say\\\"hi")), "say\"hi");
    EXPECT_EQ(toString(words("\"say\\\"hi\"")), "\"say\\\"hi\"");
}

TEST(SentenceComponent, ExpandedQuotedItemsKnowTheirParent) {
    const auto list = words("\"music quiz\" x");
    const auto expanded = expandedQuotedItems(list);
    ASSERT_EQ(texts(expanded), (std::vector<std::string>{"music", "quiz", "x"}));
    ASSERT_EQ(expanded[0].parent.size(), 1U);
    EXPECT_EQ(expanded[0].parent[0], list[0]);
    EXPECT_EQ(expanded[2].parent[0], list[1]);
}

TEST(SentenceComponent, CompareCountsWordsOfTheList) {
    const auto target = words("music quiz");
    const auto quoted = compare(words("\"Music Quiz\" extra"), target);
    EXPECT_TRUE(quoted.matched);
    EXPECT_EQ(quoted.numberOfWordsUsed, 1);
    const auto plain = compare(words("music quiz extra"), target);
    EXPECT_TRUE(plain.matched);
    EXPECT_EQ(plain.numberOfWordsUsed, 2);
    EXPECT_FALSE(compare(words("music"), target).matched) << "the list runs out first";
    EXPECT_FALSE(compare(words("music quit"), target).matched);
    EXPECT_FALSE(compare(words("music"), {}).matched);
}

TEST(SentenceComponent, EqualityAndHashCoverEveryField) {
    const auto a = words("x \"x\"");
    EXPECT_FALSE(a[0] == a[1]);
    auto moved = a[0];
    moved.position = {5, 6};
    EXPECT_FALSE(moved == a[0]);
    std::unordered_set<SentenceComponent> set(a.begin(), a.end());
    set.insert(words("x")[0]);
    EXPECT_EQ(set.size(), 2U);
    EXPECT_EQ(partLocationsToRanges(words("ab  cde")), (std::vector<std::pair<int, int>>{{0, 2}, {4, 3}}));
}

}  // namespace
}  // namespace quester
