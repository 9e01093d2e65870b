#include <gtest/gtest.h>

#include <algorithm>

#include "language/BooleanParser.h"

namespace quester {
namespace {

// Reads a sentence the way a query does: every word of `commandWords` after the
// colon is a boolean-capable command, numbered in order of first appearance.
BooleanExpr parse(std::string_view text, const std::vector<std::string>& commandWords = {}) {
    const auto words = SentenceComponent::parseWords(text, nullptr, true);
    auto commandFor = [&](const SentenceComponent& word) -> std::optional<int> {
        if (!word.isAfterAColon) return std::nullopt;
        for (size_t i = 0; i < commandWords.size(); ++i) {
            if (commandWords[i] == word.textLowered) return static_cast<int>(i);
        }
        return std::nullopt;
    };
    auto recognised = [](const SentenceComponent& word) { return word.isAfterAColon && word.textLowered == "exact"; };
    return BooleanParser::parse(BooleanParser::tokenizeUnified(words, recognised, commandFor));
}

std::string tree(std::string_view text, const std::vector<std::string>& commandWords = {}) {
    return parse(text, commandWords).debugDescription();
}

BooleanEvalContext plain() {
    BooleanEvalContext ctx;
    ctx.wordSplitter = [](std::string_view text) {
        std::vector<std::string> pieces;
        std::string piece;
        for (char c : text) {
            if (c == ' ' || c == '.' || c == '-' || c == '_' || c == '/') {
                if (!piece.empty()) pieces.push_back(piece);
                piece.clear();
            } else {
                piece += c;
            }
        }
        if (!piece.empty()) pieces.push_back(piece);
        return pieces;
    };
    return ctx;
}

struct TreeCase {
    std::string_view text;
    std::vector<std::string> commandWords;
    std::string tree;
};

TEST(BooleanParser, SentencesGiveTheirTrees) {
    const std::vector<TreeCase> cases = {
        // Juxtaposition is AND and binds tighter than OR.
        {"a b", {}, "and(word(a), word(b))"},
        {"a AND b", {}, "and(word(a), word(b))"},
        {"a OR b c", {}, "or(word(a), and(word(b), word(c)))"},
        {"a b OR c", {}, "or(and(word(a), word(b)), word(c))"},
        // The colon joins last, and an OR before it joins the words and the commands.
        {"a b OR c : d", {"d"}, "and(or(and(word(a), word(b)), word(c)), cmd(0))"},
        {"screenshot OR : tag", {"tag"}, "or(word(screenshot), cmd(0))"},
        {"report : modified AND bigger", {"modified", "bigger"}, "and(word(report), and(cmd(0), cmd(1)))"},
        // Stray operators; the rest after a leading ")" is ignored; an open "(" closes at the end.
        {"OR a", {}, "word(a)"},
        {"a OR", {}, "word(a)"},
        {"a NOT", {}, "word(a)"},
        {"NOT", {}, "empty"},
        {") a b", {}, "empty"},
        {"(a OR b", {}, "or(word(a), word(b))"},
        {"", {}, "empty"},
        // NOT takes one operand, and only NOT in capitals is an operator.
        {"NOT a b", {}, "and(not(word(a)), word(b))"},
        {"NOT (a b)", {}, "not(and(word(a), word(b)))"},
        {"not a", {}, "and(word(not), word(a))"},
        // A minus and parentheses inside words; quoted words are plain words.
        {"holiday -work", {}, "and(word(holiday), not(word(work)))"},
        {"invoice (2023 OR 2024)", {}, "and(word(invoice), or(word(2023), word(2024)))"},
        {"\"-work\" \"or\"", {}, "and(word(-work), word(or))"},
        // Unknown command-area words are dropped, a recognised command outside the
        // tree too; one token per command however often it is named.
        {"a : unknown words", {}, "word(a)"},
        {"a : exact", {}, "word(a)"},
        {"a : \"quoted\"", {}, "and(word(a), word(quoted))"},
        {": big OR small", {"big", "small"}, "or(cmd(0), cmd(1))"},
        {": big big", {"big"}, "cmd(0)"},
    };
    for (const auto& [text, commandWords, expected] : cases) {
        SCOPED_TRACE(text);
        EXPECT_EQ(tree(text, commandWords), expected);
    }
}

TEST(BooleanParser, AWordSplitAtAParenthesisLosesItsWildcard) {
    const auto words = SentenceComponent::parseWords("(a*", nullptr, false);
    const auto tokens = BooleanParser::tokenizeUnified(words, {}, {});
    ASSERT_EQ(tokens.size(), 2U);
    EXPECT_EQ(tokens[1].word->wildcard, SentenceComponent::Wildcard::none);
    const auto plainWord = BooleanParser::tokenizeUnified(SentenceComponent::parseWords("a*"), {}, {});
    EXPECT_EQ(plainWord[0].word->wildcard, SentenceComponent::Wildcard::prefix);
}

TEST(BooleanParser, DeepNestingStaysBounded) {
    const std::string open(5000, '(');
    EXPECT_EQ(tree(open + "a"), "word(a)");
    std::string nots;
    for (int i = 0; i < 3000; ++i) nots += "NOT ";
    EXPECT_NO_THROW(parse(nots + "a"));
}

int depthOf(const BooleanExpr& expr) {
    if (expr.kind() == BooleanExpr::Kind::notExpr) return 1 + depthOf(expr.left());
    if (expr.kind() != BooleanExpr::Kind::andExpr && expr.kind() != BooleanExpr::Kind::orExpr) return 1;
    return 1 + std::max(depthOf(expr.left()), depthOf(expr.right()));
}

// Long word lists made a tree as deep as the list, and every walk of it (the
// search's, the printer's, even its destruction) overflowed the stack.
TEST(BooleanParser, LongWordListsNestOnlyLogarithmicallyDeep) {
    const auto word = BoolToken{BoolToken::Kind::word, BooleanWord("a", SentenceComponent::Wildcard::none), 0};
    std::vector<BoolToken> juxtaposed(200000, word);
    std::vector<BoolToken> ored;
    for (int i = 0; i < 100000; ++i) {
        if (i > 0) ored.push_back(BoolToken::of(BoolToken::Kind::orOp));
        ored.push_back(i % 2 ? word : BoolToken{BoolToken::Kind::command, std::nullopt, i});
    }
    const BooleanExpr all = BooleanParser::parse(juxtaposed);
    const BooleanExpr either = BooleanParser::parse(ored);
    EXPECT_LE(depthOf(all), 20);
    EXPECT_LE(depthOf(either), 20);
    EXPECT_TRUE(all.matches("a.txt", plain()));
    EXPECT_FALSE(all.matches("b.txt", plain()));
    EXPECT_EQ(either.commandLeafIndices().size(), 50000U);
    EXPECT_TRUE(either.hasCommandUnderOr());
    // Mixed joins keep their meaning: a b OR c d … groups as (a AND b) OR (c AND d) OR ….
    EXPECT_EQ(tree("a b OR c d OR e f OR g h"),
              "or(or(and(word(a), word(b)), and(word(c), word(d))), or(and(word(e), word(f)), and(word(g), word(h))))");
    BooleanParser::Reading reading;
    BooleanParser::parse(
        BooleanParser::tokenizeUnified(SentenceComponent::parseWords("( ( a ) NOT ( NOT b ) ) c ) d"), {}, {}),
        &reading);
    EXPECT_EQ(reading.deepestNesting, 4);
    EXPECT_EQ(reading.unreadOperands, 1U) << "d, after the stray ')'";
}

struct MatchCase {
    std::string_view query;
    std::string_view name;
    bool matches;
    bool caseSensitive = false;
    bool wholeWords = false;
    bool diacriticInsensitive = false;
};

TEST(BooleanExpr, NamesMatchAsTheWordsAndFlagsSay) {
    const std::vector<MatchCase> cases = {
        {"", "anything", true},
        {"Report", "/x/my report.txt", true},
        {"holiday -work", "holiday work.jpg", false},
        {"holiday -work", "holiday.jpg", true},
        {"invoice (2023 OR 2024)", "invoice 2024.pdf", true},
        {"invoice (2023 OR 2024)", "invoice 2022.pdf", false},
        {"rep*", "/a/my report.txt", true},
        {"rep*", "/a/prep.txt", false},
        {"*.txt", "/a/notes.txt", true},
        {"*.txt", "/a/notes.txt.bak", false},
        {"Report", "report.pdf", false, true},
        {"Report", "Report.pdf", true, true},
        {"report", "report.pdf", true, false, true},
        {"report", "reports.pdf", false, false, true},
        {"cafe", "Café Menu.pdf", true, false, false, true},
        {"CAFÉ", "cafe menu", true, false, false, true},
        {"abc", "ＡＢＣ.txt", true, false, false, true},
        {"cafe", "CAFÉ", false, true, false, true},
        {"Cafe", "Café", true, true, false, true},
    };
    for (const MatchCase& test : cases) {
        BooleanEvalContext ctx = plain();
        ctx.caseSensitive = test.caseSensitive;
        ctx.wholeWords = test.wholeWords;
        ctx.diacriticInsensitive = test.diacriticInsensitive;
        EXPECT_EQ(parse(test.query).matches(test.name, ctx), test.matches) << test.query << " / " << test.name;
    }
}

TEST(BooleanExpr, ExactNameCollapsesAndedWords) {
    BooleanEvalContext ctx = plain();
    ctx.exactName = true;
    const BooleanExpr collapsed = parse("annual report : exact").collapsedForExact();
    EXPECT_EQ(collapsed.debugDescription(), "word(annual report)");
    EXPECT_TRUE(collapsed.matches("/docs/Annual Report", ctx));
    EXPECT_FALSE(collapsed.matches("/docs/annual report.pdf", ctx));
    EXPECT_EQ(parse("a b OR c").collapsedForExact().debugDescription(), "or(word(a b), word(c))");
    EXPECT_EQ(parse("a NOT b").collapsedForExact().debugDescription(), "and(word(a), not(word(b)))");
}

TEST(BooleanExpr, CommandLeaves) {
    BooleanEvalContext ctx = plain();
    const BooleanExpr expr = parse("cats OR : big", {"big"});
    EXPECT_TRUE(expr.matches("dogs", ctx)) << "with no evaluator a command leaf is true";
    ctx.evaluateCommand = [](int) { return false; };
    EXPECT_FALSE(expr.matches("dogs", ctx));
    EXPECT_TRUE(expr.matches("cats", ctx));
    EXPECT_EQ(expr.commandLeafIndices(), (std::set<int>{0}));
    EXPECT_TRUE(expr.hasCommandUnderOr());
    EXPECT_TRUE(expr.hasCommandLeafUnderOr({0}));
    EXPECT_FALSE(expr.hasCommandLeafUnderOr({1}));
    EXPECT_FALSE(parse("cats : big", {"big"}).hasCommandUnderOr());
    EXPECT_TRUE(parse("a : x AND (y OR NOT z)", {"x", "y", "z"}).hasCommandUnderOr()) << "an OR deeper in the tree";
    EXPECT_FALSE(parse("a OR b : x", {"x"}).hasCommandUnderOr());
}

TEST(BooleanExpr, OpenUniverse) {
    EXPECT_FALSE(parse(": mail", {"mail"}).needsOpenUniverse({0}));
    EXPECT_TRUE(parse(": mail OR big", {"mail", "big"}).needsOpenUniverse({0}));
    EXPECT_TRUE(parse("word : mail", {"mail"}).needsOpenUniverse({0}));
    EXPECT_TRUE(parse(": NOT mail", {"mail"}).needsOpenUniverse({0}));
    EXPECT_FALSE(BooleanExpr().needsOpenUniverse({}));
}

}  // namespace
}  // namespace quester
