#include "query/QueryContainer.h"

#include <gtest/gtest.h>

#include "commands/StandardCommandFactories.h"
#include "query/CommandClassName.h"
#include "query/CommandRecogniser.h"
#include "query/Soundex.h"
#include "query/WildcardWords.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

const CommandRecogniser& parser() {
    static const CommandRecogniser instance(standardCommandFactories());
    return instance;
}

QueryContainer query(std::string_view text, std::optional<SearchLocation> location = std::nullopt, bool soundex = false,
                     QueryPreferences preferences = {}) {
    return QueryContainer(text, parser(), std::move(location), soundex, preferences);
}

std::vector<std::string> texts(const std::vector<SentenceComponent>& words) {
    std::vector<std::string> result;
    for (const auto& word : words) result.push_back(word.textOriginalCase);
    return result;
}

// Each command as "ClassName: wording".
std::vector<std::string> described(const std::vector<CommandPtr>& commands) {
    std::vector<std::string> result;
    for (const auto& command : commands)
        result.push_back(commandClassName(*command) + ": " + command->commandToString());
    return result;
}

using Strings = std::vector<std::string>;

struct SampleQuery {
    const char* text;
    Strings searchWords;
    Strings commands;  // "Class: wording"; a trailing "*" matches any rest (dates print today's year)
    const char* expression;
};

// The sample queries of the query field, as a person types them, and a few plainer ones.
const std::vector<SampleQuery> kSamples{
    // Without a colon every word is a search word; a minus excludes unless quoted; so is "or".
    {"bigger than 1mb", {"bigger", "than", "1mb"}, {}, "and(and(word(bigger), word(than)), word(1mb))"},
    {"cats -dogs", {"cats"}, {"NotIncludingWords: -dogs"}, "and(word(cats), not(word(dogs)))"},
    {"cats \"-dogs\"", {"cats", "-dogs"}, {}, "and(word(cats), word(-dogs))"},
    {"a b OR c", {"a", "b", "c"}, {}, "or(and(word(a), word(b)), word(c))"},
    {"this \"or\" that", {"this", "or", "that"}, {}, "and(and(word(this), word(or)), word(that))"},
    {": today is audio", {}, {"UTICommand: is audio", "DateCommand: modified today"}, "and(cmd(1), cmd(0))"},
    {"summer : is video", {"summer"}, {"UTICommand: is video"}, "and(word(summer), cmd(0))"},
    {": content \"yearly total\"", {}, {"ContentSearchCommand: content \"yearly total\""}, "cmd(0)"},
    {"reports : modified in 2016", {"reports"}, {"DateCommand: modified 2016"}, "and(word(reports), cmd(0))"},
    {".m4v : bigger than 10mb", {".m4v"}, {"SizeCommand: larger than 10mb"}, "and(word(.m4v), cmd(0))"},
    {"cat : is image inside animals",
     {"cat"},
     {"UTICommand: is image", "InsideCommand: inside animals"},
     "and(word(cat), and(cmd(0), cmd(1)))"},
    {"invoice OR receipt : after 2023",
     {"invoice", "receipt"},
     {"DateCommand: modified 1/1/*"},
     "and(or(word(invoice), word(receipt)), cmd(0))"},
    {"holiday -work : is video",
     {"holiday"},
     {"UTICommand: is video", "NotIncludingWords: -work"},
     "and(and(word(holiday), not(word(work))), cmd(0))"},
    {"report : modified this month AND bigger than 5mb",
     {"report"},
     {"SizeCommand: larger than 5mb", "DateCommand: modified *"},
     "and(word(report), and(cmd(1), cmd(0)))"},
    {"screenshot OR : tag red", {"screenshot"}, {"LabelCommand: tag red"}, "or(word(screenshot), cmd(0))"},
    {".key OR .pptx : modified this year",
     {".key", ".pptx"},
     {"DateCommand: modified 1/1/*"},
     "and(or(word(.key), word(.pptx)), cmd(0))"},
    {"budget : content \"Q4 forecast\" all words",
     {"budget"},
     {"ContentSearchCommand: content \"Q4 forecast\" all words"},
     "and(word(budget), cmd(0))"},
    {"manual : is pdf inside Documents",
     {"manual"},
     {"UTICommand: is pdf", "InsideCommand: inside Documents"},
     "and(word(manual), and(cmd(0), cmd(1)))"},
    {"vacation : image is \"beach,palm tree\"",
     {"vacation"},
     {"ImageVisionCommand: image is \"beach,palm tree\""},
     "and(word(vacation), cmd(0))"},
    {"receipts : content \"total\" without \"draft\"",
     {"receipts"},
     {"ContentSearchCommand: content \"total\" without \"draft\""},
     "and(word(receipts), cmd(0))"},
    {"invoice (2023 OR 2024) : is pdf",
     {"invoice", "2023", "2024"},
     {"UTICommand: is pdf"},
     "and(and(word(invoice), or(word(2023), word(2024))), cmd(0))"},
    {"photos : image includes \"dog,cat\" smaller than 2mb",
     {"photos"},
     {"SizeCommand: smaller than 2mb", "ImageVisionCommand: image includes \"dog,cat\""},
     "and(word(photos), and(cmd(1), cmd(0)))"},
};

TEST(QueryContainerSamples, EachSampleGivesItsWordsCommandsAndExpressionAndNothingUnrecognised) {
    for (const auto& sample : kSamples) {
        SCOPED_TRACE(sample.text);
        auto parsed = query(sample.text);
        EXPECT_EQ(parsed.searchWords(), sample.searchWords);
        EXPECT_EQ(parsed.booleanExpr().debugDescription(), sample.expression);
        EXPECT_TRUE(parsed.invalidCommandAreaWords().empty())
            << ::testing::PrintToString(texts(parsed.invalidCommandAreaWords()));
        EXPECT_TRUE(parsed.unusedCommandAreaWords().empty());
        auto commands = described(parsed.commandsFoundInQuery());
        ASSERT_EQ(commands.size(), sample.commands.size()) << ::testing::PrintToString(commands);
        for (size_t i = 0; i < commands.size(); ++i) {
            const std::string& wanted = sample.commands[i];
            if (wanted.ends_with('*')) {
                EXPECT_TRUE(commands[i].starts_with(wanted.substr(0, wanted.size() - 1))) << commands[i];
            } else {
                EXPECT_EQ(commands[i], wanted);
            }
        }
    }
}

TEST(QueryContainerSamples, OrGroupsMinusWordsAndParenthesesOfTheSamples) {
    EXPECT_EQ(query("invoice OR receipt : after 2023").orStringGroups(),
              (std::vector<Strings>{{"invoice"}, {"receipt"}}));
    EXPECT_TRUE(query("screenshot OR : tag red").isORCommandSearch());

    auto minus = query("holiday -work : is video");
    EXPECT_EQ(texts(minus.searchWordsWithMinus()), (Strings{"-work"}));
    EXPECT_EQ(minus.searchWordsWithMinusString(), "work");
    EXPECT_FALSE(minus.fsItemNameStringIncludesWordsFromQuery("/p/holiday work.mov", false));
    EXPECT_EQ(texts(query("invoice (2023 OR 2024) : is pdf").structuralParenWords()), (Strings{"(", ")"}));
}

TEST(QueryContainerWords, ABareOrSplitsTheWordsIntoGroups) {
    auto parsed = query("a b OR c");
    EXPECT_TRUE(parsed.includesORStatement());
    EXPECT_EQ(parsed.orStringGroups(), (std::vector<Strings>{{"a", "b"}, {"c"}}));
    EXPECT_FALSE(parsed.isORCommandSearch());
    EXPECT_FALSE(query("this \"or\" that").includesORStatement());
    EXPECT_TRUE(query("this \"or\" that").orStringGroups().empty());
    EXPECT_EQ(query("a\nb").baseString(), "a b");
}

TEST(QueryContainerWords, WordsOrColonCommandsIsAnORCommandSearch) {
    auto parsed = query("cats or : bigger than 1mb");
    EXPECT_TRUE(parsed.isORCommandSearch());
    EXPECT_TRUE(parsed.isPossibleMatch("/x/dogs.jpg", false));
    EXPECT_FALSE(parsed.querySearchArguments().fileSize.has_value());

    auto plain = query("cats : bigger than 1mb");
    EXPECT_FALSE(plain.isORCommandSearch());
    EXPECT_FALSE(plain.isPossibleMatch("/x/dogs.jpg", false));
    EXPECT_TRUE(plain.isPossibleMatch("/x/cats.jpg", false));
}

TEST(QueryContainerWords, TheShortcutKeywordNameIsWhatFollowsTheWord) {
    EXPECT_EQ(query("word : shortcut music quiz").shortcutKeywordName(), "music quiz");
    EXPECT_FALSE(query("word : shortcut").shortcutKeywordName().has_value());
    EXPECT_FALSE(query("shortcut music").shortcutKeywordName().has_value());
}

TEST(QueryContainerWords, WordsNoCommandTookAreInvalidButOperatorsAndParenthesesAreNot) {
    auto parsed = query("report : bigger than 1mb frobnicate AND ( zork )");
    EXPECT_EQ(texts(parsed.invalidCommandAreaWords()), (Strings{"frobnicate", "zork"}));
    EXPECT_EQ(texts(parsed.unusedCommandAreaWords()), (Strings{"frobnicate", "(", "zork", ")"}));
    EXPECT_EQ(texts(parsed.booleanOperatorWords()), (Strings{"AND"}));
    EXPECT_EQ(described(parsed.commandsFoundInQuery()), (Strings{"SizeCommand: larger than 1mb"}));
}

TEST(QueryContainerWords, WildcardWordsBecomeACommandOfTheirOwn) {
    auto parsed = query("rep* *.txt");
    auto command = parsed.findCommand<WildcardWords>();
    ASSERT_NE(command, nullptr);
    EXPECT_EQ(command->prefixes(), (Strings{"rep"}));
    EXPECT_EQ(command->suffixes(), (Strings{".txt"}));
    EXPECT_TRUE(parsed.fsItemNameStringIncludesWordsFromQuery("/d/report.txt", false));
    EXPECT_FALSE(parsed.fsItemNameStringIncludesWordsFromQuery("/d/prep.txt", false));
}

TEST(QueryContainerCommands, ExtensionsComeFirstAndContentLast) {
    auto parsed = query(": content \"x\" bigger than 1mb .pdf");
    EXPECT_EQ(
        described(parsed.commandsFoundInQuery()),
        (Strings{"ExtensionCommand: .pdf", "SizeCommand: larger than 1mb", "ContentSearchCommand: content \"x\""}));
}

TEST(QueryContainerCommands, TheDisplayOrderPutsCaseSensitivityFirstAndContentLast) {
    auto parsed = query("-tmp rep* : content \"x\" bigger than 1mb exact case sensitive");
    EXPECT_EQ(described(parsed.commandsFoundInQueryForDisplay()),
              (Strings{"CaseSensitive: case sensitive", "ExactNameCommand: exact", "SizeCommand: larger than 1mb",
                       "ContentSearchCommand: content \"x\""}));
    EXPECT_TRUE(parsed.matchIsCaseSensitive());
    EXPECT_TRUE(parsed.matchExactName());
    EXPECT_FALSE(parsed.matchWholeWords());
}

TEST(QueryContainerCommands, AnExtensionAddsItsWordUnlessItStandsUnderAnOr) {
    auto single = query("report : .pdf");
    EXPECT_EQ(single.searchWords(), (Strings{"report", "pdf"}));
    EXPECT_EQ(single.searchWordsHighlightStrings(), (Strings{"report", ".pdf"}));
    EXPECT_EQ(single.querySearchArguments().word, "report");

    auto either = query(": .pdf OR .txt");
    EXPECT_TRUE(either.searchWords().empty());
    EXPECT_EQ(either.searchWordsHighlightStrings(), (Strings{".pdf", ".txt"}));
    EXPECT_FALSE(either.querySearchArguments().word.has_value());
}

TEST(QueryContainerCommands, SearchArgumentsNarrowOnlyWithoutAnOrOverCommands) {
    auto sized = query("x : bigger than 1mb");
    ASSERT_TRUE(sized.querySearchArguments().fileSize.has_value());
    EXPECT_EQ(sized.querySearchArguments().fileSize->lowerBound, 1000000);
    EXPECT_EQ(sized.querySearchArguments().word, "x");
    EXPECT_TRUE(sized.querySearchArguments().checkPathForResults);

    auto dated = query(": modified today");
    EXPECT_TRUE(dated.querySearchArguments().modificationDate.has_value());
    EXPECT_FALSE(dated.querySearchArguments().creationDate.has_value());

    auto either = query("x : bigger than 1mb OR modified today");
    EXPECT_FALSE(either.querySearchArguments().fileSize.has_value());
    EXPECT_FALSE(either.querySearchArguments().modificationDate.has_value());
}

// A repeated criterion was refused as not understood: the kept command now
// takes the repeat's words, and the expression names the command once.
TEST(QueryContainerCommands, ARepeatedCriterionIsUnderstood) {
    for (const char* text : {": is folder is folder", "x : bigger than 1kb bigger than 1kb", "x : is pdf OR is pdf"}) {
        SCOPED_TRACE(text);
        auto twice = query(text);
        EXPECT_EQ(twice.commandsFoundInQuery().size(), 1U);
        EXPECT_TRUE(twice.unusedCommandAreaWords().empty());
        EXPECT_TRUE(twice.invalidCommandAreaWords().empty())
            << ::testing::PrintToString(texts(twice.invalidCommandAreaWords()));
    }
    EXPECT_EQ(query("x : is pdf OR is pdf").booleanExpr().debugDescription(), "and(word(x), cmd(0))");
}

TEST(QueryContainerCommands, CopiesAreNewObjects) {
    auto parsed = query("a : bigger than 1mb is file");
    auto copies = parsed.copyCommandsFoundInQuery();
    ASSERT_EQ(copies.size(), parsed.commandsFoundInQuery().size());
    for (size_t i = 0; i < copies.size(); ++i) EXPECT_NE(copies[i]->id(), parsed.commandsFoundInQuery()[i]->id());
}

TEST(QueryContainerSearch, WhichQueriesDriveTheWordSources) {
    EXPECT_FALSE(query(": show invisible items").isWordBasedSearch());
    EXPECT_TRUE(query("a : show invisible items").isWordBasedSearch());
    EXPECT_TRUE(query(": bigger than 1mb").isWordBasedSearch());
    EXPECT_FALSE(query("report : mailsearch \"invoice\"").isWordBasedSearch());
    EXPECT_FALSE(query("").isWordBasedSearch());
    EXPECT_TRUE(query("report").isWordBasedSearch());
}

TEST(QueryContainerSearch, PossibleMatchesWithoutCommandsNeedWords) {
    EXPECT_FALSE(query("").isPossibleMatch("/a/b", false));
    EXPECT_TRUE(query("report").isPossibleMatch("/home/my report.txt", false));
    EXPECT_FALSE(query("report").isPossibleMatch("/home/summary.txt", false));
    EXPECT_TRUE(query(": show all files").isPossibleMatch("/home/summary.txt", false));
}

TEST(QueryContainerLocation, AnInsideFolderThatExistsBecomesTheLocation) {
    testing::TempDir dir;
    auto folder = dir.mkdir("Projects");
    auto given = SearchLocation::fromURLs({Url("/srv", true)}, "given");

    auto existing = query("plan : inside " + folder.string(), given);
    ASSERT_TRUE(existing.whereLocation().has_value());
    EXPECT_EQ(existing.whereLocation()->locationName, "Projects");
    EXPECT_TRUE(existing.pathIsInQueryLocation(folder.string() + "/plan.txt"));
    EXPECT_FALSE(existing.pathIsInQueryLocation("/srv/plan.txt"));

    auto missing = query("plan : inside " + dir.str() + "/NoSuchFolder", given);
    ASSERT_TRUE(missing.whereLocation().has_value());
    EXPECT_EQ(missing.whereLocation()->locationName, "given");
    EXPECT_TRUE(missing.pathIsInQueryLocation("/srv/plan.txt"));

    EXPECT_TRUE(query("plan").pathIsInQueryLocation("/anywhere/plan.txt"));
}

TEST(QueryContainerLocation, AnAppNamedLikeTheQueryIsFoundAnywhereWhenWanted) {
    auto location = SearchLocation::fromURLs({Url("/srv", true)});
    QueryPreferences anywhere{false, true};
    EXPECT_TRUE(query("Calculator", location, false, anywhere).pathIsInQueryLocation("/opt/apps/Calculator.app"));
    EXPECT_FALSE(query("Calculator", location, false, anywhere).pathIsInQueryLocation("/opt/apps/Calculator Pro.app"));
    EXPECT_FALSE(query("Calculator", location).pathIsInQueryLocation("/opt/apps/Calculator.app"));
}

TEST(QueryContainerNameTest, MarkersChangeHowWordsMeetNames) {
    auto caseSensitive = query("Report : case sensitive");
    EXPECT_FALSE(caseSensitive.fsItemNameStringIncludesWordsFromQuery("/d/report.pdf", false));
    EXPECT_EQ(caseSensitive.searchWordsHighlightStrings(), (Strings{"Report"}));

    auto whole = query("report : whole words");
    EXPECT_FALSE(whole.fsItemNameStringIncludesWordsFromQuery("/d/reports.pdf", false));

    auto exact = query("annual report : exact");
    EXPECT_TRUE(exact.fsItemNameStringIncludesWordsFromQuery("/d/annual report", false));
    EXPECT_FALSE(exact.fsItemNameStringIncludesWordsFromQuery("/d/annual report 2.pdf", false));
}

TEST(QueryContainerNameTest, DiacriticsFoldWhenThePreferenceOrTheCallerAsks) {
    EXPECT_FALSE(query("cafe").fsItemNameStringIncludesWordsFromQuery("/d/Café menu.txt", false));
    EXPECT_TRUE(query("cafe").fsItemNameStringIncludesWordsFromQuery("/d/Café menu.txt", true));
    EXPECT_TRUE(query("cafe", std::nullopt, false, {true, false})
                    .fsItemNameStringIncludesWordsFromQuery("/d/Café menu.txt", false));
}

// "café" typed composed missed a name stored with "e" and a combining accent,
// and the other way round.
TEST(QueryContainerNameTest, CanonicallyEqualNamesMatchHoweverComposed) {
    const std::string composedName = "/d/Caf\u00e9 menu.txt";
    const std::string decomposedName = "/d/Cafe\u0301 menu.txt";
    for (const std::string& typed : Strings{"caf\u00e9", "cafe\u0301", "Caf\u00e9 : case sensitive",
                                            "Cafe\u0301 : case sensitive", "caf\u00e9* : whole words"}) {
        SCOPED_TRACE(typed);
        const QueryContainer parsed = query(typed);
        EXPECT_TRUE(parsed.fsItemNameStringIncludesWordsFromQuery(composedName, false));
        EXPECT_TRUE(parsed.fsItemNameStringIncludesWordsFromQuery(decomposedName, false));
        EXPECT_FALSE(parsed.fsItemNameStringIncludesWordsFromQuery("/d/Cafe menu.txt", false));
    }
    EXPECT_TRUE(query("cafe").fsItemNameStringIncludesWordsFromQuery(decomposedName, true));
}

// Queries that stopped the program or were silently read as something else:
// too long, too deeply nested, only operators, or cut short by a stray ")".
TEST(QueryContainerRefusal, OversizedOrUnreadableQueriesAreRefused) {
    struct Refusal {
        std::string text;
        std::string reasonHolds;
    };
    std::string manyWords;
    for (int i = 0; i < 2001; ++i) manyWords += "a ";
    std::string nots;
    for (int i = 0; i < 50; ++i) nots += "NOT ";
    const std::vector<Refusal> refused = {
        {std::string(20001, 'a'), "at most 20000"},
        {manyWords, "at most 2000 are read"},
        {std::string(101, '(') + "a", "at most 100"},
        {std::string(60, '(') + nots + "a", "at most 100"},
        {"AND", "only operators"},
        {"NOT", "only operators"},
        {"( OR )", "only operators"},
        {": and OR", "only operators"},
        {") report", "closes no '('"},
        {"a) b : is pdf", "closes no '('"},
    };
    for (const auto& [text, reasonHolds] : refused) {
        SCOPED_TRACE(text.substr(0, 40));
        const QueryContainer parsed = query(text);
        ASSERT_TRUE(parsed.refusalReason().has_value());
        EXPECT_NE(parsed.refusalReason()->find(reasonHolds), std::string::npos) << *parsed.refusalReason();
    }
    EXPECT_TRUE(query(std::string(20001, 'a')).allWords().empty()) << "too long to be read at all";
    for (const std::string& text : Strings{"", "a", "(a OR b", "a b)", "report : is pdf AND NOT bigger than 1mb",
                                           "\"AND\"", std::string(100, '(') + "a", manyWords.substr(2)}) {
        EXPECT_FALSE(query(text).refusalReason().has_value()) << text.substr(0, 40);
    }
}

TEST(QueryContainerNameTest, SoundexMatchesAnyWordBySound) {
    auto parsed = query("robert zzz", std::nullopt, true);
    EXPECT_EQ(parsed.searchWordStringsSoundexValues(), (Strings{"R163", "Z000"}));
    EXPECT_TRUE(parsed.fsItemNameStringIncludesWordsFromQuery("/people/Rupert.vcf", false));
    EXPECT_FALSE(parsed.fsItemNameStringIncludesWordsFromQuery("/people/Alice.vcf", false));
}

TEST(Soundex, ValuesOfTheClassicNames) {
    EXPECT_EQ(Soundex::value("a"), "");
    EXPECT_EQ(Soundex::value("Robert"), "R163");
    EXPECT_EQ(Soundex::value("Rupert"), "R163");
    EXPECT_EQ(Soundex::value("Tymczak"), "T522");
    EXPECT_EQ(Soundex::value("Pfister"), "P236");
    EXPECT_EQ(Soundex::value("  Lee "), "L000");
}

TEST(QueryContainerNameTest, NamesSplitAtBlanksPunctuationAndSymbols) {
    EXPECT_EQ(QueryContainer::wholeWordsFromFileName("my-report_v2.final (copy)+€x.pdf"),
              (Strings{"my", "report", "v2", "final", "copy", "x", "pdf"}));
    EXPECT_TRUE(QueryContainer::wholeWordsFromFileName(" ..").empty());
}

}  // namespace
}  // namespace quester
