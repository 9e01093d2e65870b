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

TEST(SentenceComponentParseWords, SplitsAtBlanksAndLowersCase) {
    const auto list = words("Budget  .XLSX\tnow\nthen");
    ASSERT_EQ(texts(list), (std::vector<std::string>{"Budget", ".XLSX", "now", "then"}));
    EXPECT_EQ(list[0].textLowered, "budget");
    EXPECT_EQ(list[1].textLowered, ".xlsx");
    EXPECT_EQ(list[1].position, (CharacterRange{8, 13}));
    EXPECT_FALSE(list[0].isAfterAColon);
}

TEST(SentenceComponentParseWords, QuotedPhraseIsOneWord) {
    const auto list = words("\"a b\" c");
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0].textOriginalCase, "a b");
    EXPECT_TRUE(list[0].wasInQuotes);
    EXPECT_EQ(list[0].position, (CharacterRange{1, 4}));
    EXPECT_FALSE(list[1].wasInQuotes);
}

TEST(SentenceComponentParseWords, QuoteInsideWordJoinsAndEndsAtClosingQuote) {
    const auto list = words("ab\"cd\"ef");
    ASSERT_EQ(texts(list), (std::vector<std::string>{"abcd", "ef"}));
    EXPECT_TRUE(list[0].wasInQuotes);
    EXPECT_FALSE(list[1].wasInQuotes);
}

TEST(SentenceComponentParseWords, EmptyQuotesAndLoneStarGiveNoWord) {
    EXPECT_TRUE(words("\"\"").empty());
    const auto list = words("* abc");
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].textLowered, "abc");
    EXPECT_EQ(list[0].wildcard, Wildcard::none) << "the blank after a lone star clears its state";
}

TEST(SentenceComponentParseWords, Wildcards) {
    const auto list = words("*.txt rep* *abc*");
    ASSERT_EQ(texts(list), (std::vector<std::string>{".txt", "rep", "abc"}));
    EXPECT_EQ(list[0].wildcard, Wildcard::suffix);
    EXPECT_EQ(list[1].wildcard, Wildcard::prefix);
    EXPECT_EQ(list[2].wildcard, Wildcard::prefix);
    EXPECT_EQ(words("\"a*b\"")[0].textLowered, "a*b") << "a star in quotes is a character";
}

TEST(SentenceComponentParseWords, ColonStartsCommandArea) {
    const auto glued = words("a:b c");
    ASSERT_EQ(texts(glued), (std::vector<std::string>{"ab", "c"}));
    EXPECT_TRUE(glued[0].isAfterAColon);
    EXPECT_TRUE(glued[1].isAfterAColon);

    const auto spaced = words("word : next");
    ASSERT_EQ(texts(spaced), (std::vector<std::string>{"word", "next"}));
    EXPECT_FALSE(spaced[0].isAfterAColon);
    const auto attached = words("word: next");
    EXPECT_TRUE(attached[0].isAfterAColon) << "the word under way when the colon comes is in the command area";

    const auto quoted = words("\"a:b\" c");
    ASSERT_EQ(texts(quoted), (std::vector<std::string>{"a:b", "c"}));
    EXPECT_TRUE(quoted[0].isAfterAColon);
    EXPECT_TRUE(quoted[1].isAfterAColon);
}

TEST(SentenceComponentParseWords, EscapedQuoteDoesNotOpenQuotes) {
    const auto list = words("say\\\"hi there");
    ASSERT_EQ(texts(list), (std::vector<std::string>{"say\"hi", "there"}));
    EXPECT_FALSE(list[0].wasInQuotes);
    EXPECT_EQ(texts(words("a\\b")), (std::vector<std::string>{"a\\b"}));
}

TEST(SentenceComponentParseWords, ParenthesesSplitOnlyWhenAsked) {
    const auto split = words("(a OR b)", true);
    ASSERT_EQ(texts(split), (std::vector<std::string>{"(", "a", "OR", "b", ")"}));
    EXPECT_EQ(split[0].position, (CharacterRange{0, 1}));
    EXPECT_EQ(split[4].position, (CharacterRange{7, 8}));
    EXPECT_EQ(texts(words("(a")), (std::vector<std::string>{"(a"}));
    EXPECT_EQ(texts(words("\"(a)\"", true)), (std::vector<std::string>{"(a)"}));
}

TEST(SentenceComponentParseWords, UnclosedQuoteRunsToTheEnd) {
    const auto list = words("x \"open words");
    ASSERT_EQ(texts(list), (std::vector<std::string>{"x", "open words"}));
    EXPECT_TRUE(list[1].wasInQuotes);
    EXPECT_EQ(list[1].position, (CharacterRange{3, 13}));
}

TEST(SentenceComponentParseWords, PositionsCountUserPerceivedCharacters) {
    // "e" + combining acute is one character; so is a flag made of two regional indicators.
    const auto list = words("cafe\u0301 \U0001F1E9\U0001F1EA x");
    ASSERT_EQ(list.size(), 3U);
    EXPECT_EQ(list[0].position, (CharacterRange{0, 4}));
    EXPECT_EQ(list[1].position, (CharacterRange{5, 6}));
    EXPECT_EQ(list[2].position, (CharacterRange{7, 8}));
    EXPECT_EQ(words("ÄRGER")[0].textLowered, "ärger");
}

TEST(SentenceComponentParseWords, InvalidUtf8NeverFails) {
    const std::string bad = "ab\xff\xfe cd \xc3";
    const auto list = words(bad);
    ASSERT_EQ(list.size(), 3U);
    EXPECT_EQ(list[1].textLowered, "cd");
}

TEST(SentenceComponent, BooleanOperators) {
    const auto list = words("and OR NOT not \"or\"");
    EXPECT_TRUE(list[0].isBooleanOperator());
    EXPECT_TRUE(list[1].isBooleanOperator());
    EXPECT_TRUE(list[2].isBooleanOperator());
    EXPECT_FALSE(list[3].isBooleanOperator()) << "only NOT in capitals";
    EXPECT_FALSE(list[4].isBooleanOperator());
}

TEST(SentenceComponent, ToStringRebuildsTheSentence) {
    EXPECT_EQ(toString(words("budget \"q4 plan\" : Bigger than 1mb")), "budget \"q4 plan\" : Bigger than 1mb");
    EXPECT_EQ(toString(words(": today")), ": today");
    EXPECT_EQ(toString(words("say\\\"hi")), "say\"hi");
    EXPECT_EQ(toString(words("\"say\\\"hi\"")), "\"say\\\"hi\"");
    EXPECT_EQ(toString({}), "");
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
