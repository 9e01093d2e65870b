#include <gtest/gtest.h>

#include <any>

#include "language/ContentSearchFlag.h"
#include "language/DateCommandWhat.h"
#include "language/FileSizeArgs.h"
#include "language/SentenceTemplate.h"
#include "language/VariableParsers.h"

namespace quester {
namespace {

std::vector<SentenceComponent> words(std::string_view text) {
    return SentenceComponent::parseWords(text);
}

const VariableParsers& parsers() {
    static const VariableParsers table = standardVariableParsers({});
    return table;
}

const VariableCompletors& completors() {
    static const VariableCompletors table = standardVariableCompletors({});
    return table;
}

std::optional<TemplateWordStatsResult> match(const SentenceTemplate& sentenceTemplate, std::string_view input,
                                             bool fullkeywordsOnly = true) {
    auto results = sentenceTemplate.processInput(0, fullkeywordsOnly, words(input), parsers(), completors());
    if (results.empty()) return std::nullopt;
    return std::move(results.front());
}

TEST(SentenceTemplateLine, CommandWordAndFlags) {
    const SentenceTemplate mail("from ~string mailSearch/from=1,to_from=0");
    EXPECT_EQ(mail.command, "mailSearch");
    EXPECT_EQ(mail.words, (std::vector<std::string>{"from", "~string"}));
    EXPECT_EQ(mail.flags, (TemplateFlags{{"from", "1"}, {"to_from", "0"}}));

    const SentenceTemplate odd("x cmd//a=1,b,c=2=3,a=4,,d=");
    EXPECT_EQ(odd.command, "cmd");
    EXPECT_EQ(odd.flags, (TemplateFlags{{"a", "4"}, {"d", ""}}))
        << "later pairs replace earlier, malformed ones are ignored";

    const SentenceTemplate size("bigger than \"~file size\" filesBiggerThan");
    EXPECT_EQ(size.words.back(), "~file size");
    EXPECT_TRUE(SentenceTemplate::isVariable(size.components.back()));
    EXPECT_TRUE(SentenceTemplate("plain").words.empty());
}

TEST(SentenceTemplateLine, VariableAndCompletorKeys) {
    const SentenceTemplate both("tag ~string/~tagCompletor label");
    EXPECT_EQ(SentenceTemplate::variableKey(both.components[1]), "~string");
    EXPECT_EQ(SentenceTemplate::completorKey(both.components[1]), "~tagCompletor");
    const SentenceTemplate plain("x ~dateType cmd");
    EXPECT_EQ(SentenceTemplate::variableKey(plain.components[1]), "~dateType");
    EXPECT_EQ(SentenceTemplate::completorKey(plain.components[1]), "~dateType");
    const SentenceTemplate three("x ~a/~b/~c cmd");
    EXPECT_EQ(SentenceTemplate::variableKey(three.components[1]), "~a/~b/~c");
}

TEST(SentenceTemplateMatch, KeywordsAndVariable) {
    const SentenceTemplate inside("inside ~string inside");
    const auto result = match(inside, "inside Documents bigger");
    ASSERT_TRUE(result);
    EXPECT_EQ(result->numberOfKeywordsMatched, 2);
    EXPECT_EQ(result->numberOfCharactersMatched, 6 + 9);
    EXPECT_EQ(result->prediction, "inside documents");
    EXPECT_EQ(result->consumedParts().size(), 2U);
    const auto value = std::any_cast<SentenceComponent>(result->stats[1].variableParserResult->value);
    EXPECT_EQ(value.textOriginalCase, "Documents");
    EXPECT_EQ(result->position.lowerBound, 0);
    EXPECT_GE(result->position.upperBound, 16);
    EXPECT_LE(result->position.upperBound, 17);
    auto shifted = inside.processInput(12, true, words("inside x"), parsers(), completors());
    ASSERT_EQ(shifted.size(), 1U);
    EXPECT_EQ(shifted[0].position.lowerBound, 12) << "the start position shifts the range";
}

TEST(SentenceTemplateMatch, KeywordMismatchStopsTheMatch) {
    const SentenceTemplate bigger("bigger than \"~file size\" filesBiggerThan");
    EXPECT_FALSE(match(bigger, "larger than 1mb"));
    const auto partial = match(bigger, "bigger then 1mb");
    ASSERT_TRUE(partial);
    EXPECT_EQ(partial->numberOfKeywordsMatched, 1) << "only full keywords count";
}

TEST(SentenceTemplateMatch, TemplateWordLongerThanInputIsNoFullMatch) {
    const SentenceTemplate sentenceTemplate("show invisible items showInvisibleItems");
    const auto result = match(sentenceTemplate, "show invis");
    ASSERT_TRUE(result);
    EXPECT_EQ(result->numberOfKeywordsMatched, 1);
    EXPECT_EQ(result->numberOfCharactersMatched, 4 + 5);
    EXPECT_EQ(result->prediction, "show invisible items") << "every word matched, then the next to type";
}

TEST(SentenceTemplateMatch, VariableConsumingTwoWordsLetsTheWalkGoOn) {
    const SentenceTemplate sentenceTemplate("over \"~file size\" now cmd");
    const auto result = match(sentenceTemplate, "over 10 mb now");
    ASSERT_TRUE(result);
    EXPECT_EQ(result->numberOfKeywordsMatched, 3);
    const auto size = std::any_cast<FileSizeArgs>(result->stats[1].variableParserResult->value);
    EXPECT_EQ(size, (FileSizeArgs{10, SizeUnits::megabytes}));
    EXPECT_EQ(result->stats[1].consumedParts.size(), 2U);
}

TEST(SentenceTemplateMatch, VariableThatReadsNothingCanEndATemplate) {
    const SentenceTemplate content("content ~string ~contentSearchFlags textContent");
    const auto result = match(content, "content \"yearly total\"");
    ASSERT_TRUE(result);
    EXPECT_EQ(result->numberOfKeywordsMatched, 3);
    const auto flags = std::any_cast<std::vector<ContentSearchFlag>>(result->stats[2].variableParserResult->value);
    EXPECT_TRUE(flags.empty());

    const SentenceTemplate dated("~dateType ~fixedNamedTimeRange cmd");
    const auto today = match(dated, "today");
    ASSERT_TRUE(today);
    EXPECT_EQ(today->numberOfKeywordsMatched, 2) << "the date type reads no word and still counts";
    EXPECT_EQ(std::any_cast<DateCommandWhat>(today->stats[0].variableParserResult->value),
              DateCommandWhat::modificationDate);
}

TEST(SentenceTemplateMatch, UnknownVariableNeverMatches) {
    const SentenceTemplate sentenceTemplate("x ~nonsense cmd");
    const auto result = match(sentenceTemplate, "x y");
    ASSERT_TRUE(result);
    EXPECT_EQ(result->numberOfKeywordsMatched, 1);
}

TEST(SentenceTemplateMatch, VariableStartingInsideAWordReadsTheRest) {
    const SentenceTemplate sentenceTemplate("is ~uti cmd");
    const auto result = match(sentenceTemplate, "isimage");
    ASSERT_TRUE(result);
    EXPECT_EQ(result->numberOfKeywordsMatched, 2);
    EXPECT_EQ(std::any_cast<std::string>(result->stats[1].variableParserResult->value), "image");
}

TEST(SentenceTemplateMatch, CompletionOnlyWithoutFullKeywords) {
    const SentenceTemplate sentenceTemplate("is ~uti/~utiCompletor uti");
    const auto completing = match(sentenceTemplate, "is ima", false);
    ASSERT_TRUE(completing);
    EXPECT_EQ(completing->stats[1].variableCompletion, "image");
    EXPECT_EQ(completing->prediction, "is image");
    EXPECT_EQ(completing->numberOfKeywordsMatched, 1) << "a completion never counts as a keyword";
    const auto parsing = match(sentenceTemplate, "is ima", true);
    ASSERT_TRUE(parsing);
    EXPECT_EQ(parsing->numberOfKeywordsMatched, 1) << "an open completion is no type word";
}

TEST(SentenceTemplateMatch, NothingMatchedGivesNoResult) {
    const SentenceTemplate sentenceTemplate("exact exact");
    EXPECT_FALSE(match(sentenceTemplate, "zzz"));
    EXPECT_FALSE(match(sentenceTemplate, ""));
    EXPECT_FALSE(match(sentenceTemplate, "zzz", false));
}

}  // namespace
}  // namespace quester
