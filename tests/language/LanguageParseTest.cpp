#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "FakeCommands.h"
#include "query/CommandRecogniser.h"
#include "resources/ScriptResource.h"
#include "support/Munge.h"

namespace quester {
namespace {

using testing::commandArea;
using testing::FakeCommand;
using testing::FakeFactory;
using testing::printed;
using testing::templateCommandNames;

CommandRecogniser withTemplates(std::string_view lines, CommandFactories factories) {
    auto templates =
        std::make_shared<const std::vector<SentenceTemplate>>(LanguageParseCache::templatesFromText(lines));
    return CommandRecogniser(std::move(templates), std::move(factories));
}

std::shared_ptr<const CommandFactory> fake(std::vector<std::string> names, std::vector<std::string> refused = {}) {
    return std::make_shared<FakeFactory>(std::move(names), std::move(refused));
}

TEST(LanguageParseScript, CompiledDataIsScrambled) {
    const auto data = scriptResource();
    const std::string_view raw(reinterpret_cast<const char*>(data.data()), data.size());
    EXPECT_EQ(raw.find("case sensitive"), std::string_view::npos);
    EXPECT_GT(LanguageParseCache::shared().allTemplates()->size(), 100U);
}

TEST(LanguageParseScript, LoaderSkipsCommentsPencilLinesAndBlankLines) {
    const auto templates = LanguageParseCache::templatesFromText(
        "// comment line\n\nexact exact\n  \nwhole words wholeWords \u270F\uFE0F\nnot // a comment locked\n");
    ASSERT_EQ(templates.size(), 2U);
    EXPECT_EQ(templates[0].command, "exact");
    EXPECT_EQ(templates[1].command, "locked");
}

TEST(LanguageParseScript, ScrambledRoundTripAndInvalidText) {
    std::string text = "case sensitive caseSensitive\nshow all files showAllFiles\n";
    std::vector<std::uint8_t> bytes(text.begin(), text.end());
    Munge::munge(bytes, 1);
    const auto templates = LanguageParseCache::templatesFromScrambled(bytes);
    ASSERT_EQ(templates.size(), 2U);
    EXPECT_EQ(templates[1].command, "showAllFiles");

    std::vector<std::uint8_t> invalid = {'a', ' ', 0xff, 0xfe, ' ', 'x', '\n'};
    Munge::munge(invalid, 1);
    EXPECT_TRUE(LanguageParseCache::templatesFromScrambled(invalid).empty())
        << "text that isn't UTF-8 gives an empty table";
}

struct RecogniserCase {
    std::string_view templates;
    CommandFactories factories;
    std::string_view sentence;
    std::vector<std::string> commands;
    size_t consumedWords;
};

TEST(CommandRecogniser, MatchesAreSettledAsTheTemplatesAndFactoriesSay) {
    const std::vector<RecogniserCase> cases = {
        {"modified a\nmodified this year b\n", {fake({"a", "b"})}, ": modified this year", {"b"}, 3},
        // A refused longer match does not bring back the shorter one.
        {"modified a\nmodified this year b\n", {fake({"a", "b"}, {"b"})}, ": modified this year", {}, 0},
        // Equal matches both survive unless they print alike; a dropped duplicate's words still count.
        {"same a\nsame b\n", {fake({"a", "b"})}, ": same", {"a", "b"}, 2},
        {"same a\nsame a\n", {fake({"a"})}, ": same", {"a"}, 2},
        {"tag ~string label\n", {fake({"label"})}, ": tag red tag blue", {"label(red)", "label(blue)"}, 4},
        // The first factory of the table that serves a name wins; names nobody serves are skipped.
        {"x a\ny nobody\nz b\n", {fake({"a"}), fake({"a", "b"}, {"a"})}, ": x y z", {"a", "b"}, 2},
    };
    for (const auto& [templates, factories, sentence, commands, consumedWords] : cases) {
        SCOPED_TRACE(templates);
        const auto result = withTemplates(templates, factories).makeCommands(commandArea(sentence));
        EXPECT_EQ(printed(result), commands);
        EXPECT_EQ(result.consumedParts.size(), consumedWords);
    }
}

TEST(CommandRecogniser, ArgumentsInTemplateOrderAndFlags) {
    const CommandRecogniser parse = withTemplates("mail ~string to ~string m/to_from=1\n", {fake({"m"})});
    const auto result = parse.makeCommands(commandArea(": mail \"hello there\" to bob"));
    ASSERT_EQ(result.commands.size(), 1U);
    const auto& command = dynamic_cast<const FakeCommand&>(*result.commands[0]);
    EXPECT_EQ(command.arguments, "hello there|bob");
    EXPECT_EQ(command.flags, (TemplateFlags{{"to_from", "1"}}));
}

// Settling overlaps compared every match with every other, so a pasted
// sentence of thousands of criteria took seconds; the sweep that replaced it
// must keep exactly the matches that the pairwise reading keeps.
TEST(LanguageParse, OverlapsSettledBySweepAsByEveryPair) {
    std::mt19937 random(7);
    auto overlaps = [](const CharacterRange& a, const CharacterRange& b) {
        return std::max(a.lowerBound + 1, b.lowerBound + 1) <= std::min(a.upperBound - 1, b.upperBound - 1) &&
               a.lowerBound + 1 <= a.upperBound - 1 && b.lowerBound + 1 <= b.upperBound - 1;
    };
    for (int round = 0; round < 200; ++round) {
        std::vector<TemplateWordStatsResult> list(random() % 40);
        for (auto& result : list) {
            const int start = static_cast<int>(random() % 60);
            result.position = {start, start + static_cast<int>(random() % 12)};
            result.numberOfCharactersMatched = static_cast<int>(random() % 8);
        }
        std::vector<CharacterRange> expected;
        for (const auto& b : list) {
            const bool beaten = std::any_of(list.begin(), list.end(), [&](const auto& a) {
                return a.numberOfCharactersMatched > b.numberOfCharactersMatched && overlaps(a.position, b.position);
            });
            if (!beaten) expected.push_back(b.position);
        }
        std::vector<CharacterRange> kept;
        for (const auto& result : consolidateOverlappingResults(list)) kept.push_back(result.position);
        EXPECT_EQ(kept, expected) << "round " << round;
    }
}

TEST(CommandRecogniser, UnmatchedWordsAreLeftOver) {
    const CommandRecogniser parse({fake(templateCommandNames())});
    const auto result = parse.makeCommands(commandArea(": frobnicate bigger than 1mb wobble"));
    EXPECT_EQ(printed(result), (std::vector<std::string>{"filesBiggerThan(1.00mb)"}));
    EXPECT_EQ(result.consumedParts.size(), 3U);
}

}  // namespace
}  // namespace quester
