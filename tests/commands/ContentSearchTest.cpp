#include <gtest/gtest.h>

#include <atomic>
#include <random>

#include "commands/ContentSearchCancellation.h"
#include "commands/ContentSearchCommand.h"
#include "commands/ContentSearchTypeSettings.h"
#include "commands/ContentSummary.h"
#include "commands/StandardCommandFactories.h"
#include "import/ImportTextResult.h"
#include "query/CommandRecogniser.h"
#include "query/QueryContainer.h"
#include "query/SearchDataSourceDelegate.h"
#include "query/SearchManager.h"
#include "query/SearchResult.h"
#include "stores/Preferences.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using Options = ContentSearchCommand::FileSearchOptions;

Options lookFor(std::vector<std::string> words) {
    Options options;
    options.wordsOfInterest = std::move(words);
    return options;
}

FoldedText folded(std::string_view text, bool caseSensitive = false) {
    return FoldedText(FoldedText::decode(text), !caseSensitive);
}

// The hits of each word as (start, end) in code points; none for no match.
std::optional<std::vector<std::vector<TextRange>>> hitsIn(std::string_view text, const Options& options) {
    auto hits = ContentSearchCommand::textIncludes(folded(text, options.caseSensitive), options);
    if (!hits) return std::nullopt;
    std::vector<std::vector<TextRange>> ranges;
    for (const auto& [word, wordRanges] : *hits) ranges.push_back(wordRanges);
    return ranges;
}

TEST(ContentSearchWords, ACommaListIsCutBeforeEachPieceLosesItsQuotes) {
    using Words = std::vector<std::string>;
    EXPECT_EQ(ContentSearchCommand::searchWordParts("a, b"), (Words{"a", "b"}));
    EXPECT_EQ(ContentSearchCommand::searchWordParts("\"a, b\""), (Words{"a", "b"}));
    EXPECT_EQ(ContentSearchCommand::searchWordParts(" yearly total ,, "), (Words{"yearly total"}));
    const QueryContainer query;
    EXPECT_EQ(ContentSearchCommand("Total, Café", "", {}).searchWords(query), (Words{"total", "café"}));
    EXPECT_EQ(ContentSearchCommand("Total", "", {ContentSearchFlag::caseSensitive}).searchWords(query),
              (Words{"Total"}));
}

// The byte count must answer as the folded search would, and leave to it
// what it can't tell.
TEST(ContentSearchMatching, ASCIICountAnswersAsTheFoldedSearch) {
    auto options = lookFor({"total", "ledger"});
    EXPECT_EQ(ContentSearchCommand::asciiHitCount("The TOTAL rose, total", options), 2);
    EXPECT_EQ(ContentSearchCommand::asciiHitCount("nothing here", options), 0);
    options.allWords = true;
    EXPECT_EQ(ContentSearchCommand::asciiHitCount("The TOTAL rose", options), 0);
    EXPECT_EQ(ContentSearchCommand::asciiHitCount("total in the ledger", options), 2);
    // Accented text or words go to the folded search, which finds "cafe" in "café".
    EXPECT_EQ(ContentSearchCommand::asciiHitCount("caf\xC3\xA9", lookFor({"cafe"})), std::nullopt);
    auto exact = lookFor({"Total"});
    exact.caseSensitive = true;
    EXPECT_EQ(ContentSearchCommand::asciiHitCount("the total", exact), 0);

    // Random ASCII over a small alphabet, so that words, overlaps and
    // exclusions come often: wherever the count answers, the folded search
    // gives that many hits, or no match for 0.
    std::mt19937 random(7);
    const std::string alphabet = "abAB .";
    for (int round = 0; round < 3000; ++round) {
        std::string text;
        for (int i = random() % 40; i > 0; --i) text += alphabet[random() % alphabet.size()];
        auto tried = lookFor({round % 3 ? "ab" : "a", round % 2 ? "bb" : "ab"});
        tried.allWords = round % 5 == 0;
        tried.wholeWords = round % 7 == 0;
        tried.caseSensitive = round % 11 == 0;
        if (round % 4 == 0) tried.wordsToExclude = {"BA"};
        const std::optional<std::int64_t> count = ContentSearchCommand::asciiHitCount(text, tried);
        if (!count) continue;
        const auto hits = ContentSearchCommand::textIncludes(folded(text, tried.caseSensitive), tried);
        std::int64_t folded = 0;
        if (hits)
            for (const auto& word : *hits) folded += static_cast<std::int64_t>(word.second.size());
        EXPECT_EQ(*count, folded) << "'" << text << "' round " << round;
    }
}

TEST(ContentSearchMatching, AllWordsFailsWhenOneWordIsAbsent) {
    auto options = lookFor({"total", "missing"});
    EXPECT_TRUE(hitsIn("the total", options).has_value());
    options.allWords = true;
    EXPECT_FALSE(hitsIn("the total", options).has_value());
    EXPECT_FALSE(hitsIn("nothing here", lookFor({"total"})).has_value());
}

TEST(ContentSearchMatching, WholeWordsPassesOverPartialHitsAndSearchesOnBehindThem) {
    auto options = lookFor({"total"});
    options.wholeWords = true;
    EXPECT_EQ(hitsIn("totally, total.", options), (std::vector<std::vector<TextRange>>{{{9, 14}}}));
    EXPECT_FALSE(hitsIn("subtotal totals", options).has_value());
}

// Only an excluded word's first occurrence counts: with whole words a partial
// first one lets the file through even though a whole one follows.
TEST(ContentSearchMatching, AnExcludedWordIsJudgedByItsFirstOccurrenceOnly) {
    auto options = lookFor({"total"});
    options.wordsToExclude = {"draft"};
    const std::string text = "total of the drafting, then the draft";
    EXPECT_FALSE(hitsIn(text, options).has_value());
    options.wholeWords = true;
    EXPECT_TRUE(hitsIn(text, options).has_value());
    EXPECT_FALSE(hitsIn("the draft total", options).has_value());
}

TEST(ContentSearchMatching, DiacriticsNeverMatterAndCaseOnlyWhenAsked) {
    const std::string decomposed = "Zoe\xCC\x88 went to the cafe\xCC\x81.";  // combining diaeresis and acute
    for (const std::string& text : {std::string("Zo\u00eb went to the caf\u00e9."), decomposed}) {
        SCOPED_TRACE(text);
        EXPECT_TRUE(hitsIn(text, lookFor({"cafe"})).has_value());
        EXPECT_TRUE(hitsIn(text, lookFor({"zoe"})).has_value());
    }
    EXPECT_TRUE(hitsIn("the cafe", lookFor({"caf\u00e9"})).has_value());
    EXPECT_TRUE(hitsIn("ZOE", lookFor({"zo\u00eb"})).has_value());
    auto exact = lookFor({"Zoe"});
    exact.caseSensitive = true;
    EXPECT_TRUE(hitsIn("Zo\u00eb", exact).has_value());
    EXPECT_FALSE(hitsIn("zo\u00eb", exact).has_value());
}

// A hit in decomposed text covers its combining marks, so it stands alone as
// a whole word, and offsets count code points of the original text.
TEST(ContentSearchMatching, HitsMapBackToTheOriginalCodePoints) {
    auto options = lookFor({"cafe", "total"});
    options.wholeWords = true;
    const auto hits = hitsIn("ein Cafe\xCC\x81 total", options);
    ASSERT_TRUE(hits.has_value());
    EXPECT_EQ((*hits)[0], (std::vector<TextRange>{{4, 9}}));
    EXPECT_EQ((*hits)[1], (std::vector<TextRange>{{10, 15}}));
    EXPECT_EQ(hitsIn("stra\u00dfe", lookFor({"strasse"})), (std::vector<std::vector<TextRange>>{{{0, 6}}}));
}

TEST(ContentSearchFoundLines, AHitAtTheVeryEndMatchesWithoutAFoundLine) {
    const auto text = FoldedText::decode("the yearly total");
    const auto hits = ContentSearchCommand::textIncludes(FoldedText(text, true), lookFor({"total"}));
    ASSERT_TRUE(hits.has_value());
    const ImportTextResult located{ImportTextPages{{"the yearly total"}}, std::nullopt};
    const auto match = ContentSearchCommand::textMatch(text, *hits, located, false);
    EXPECT_EQ(match.hitCount, 1);
    EXPECT_TRUE(match.foundLines.empty());
}

TEST(ContentSearchFoundLines, TitlesNameThePageAndLineBeforeTwoBlanks) {
    const ImportTextResult located{ImportTextPages{{"cover"}, {"a page\nwith the yearly total in it"}}, std::nullopt};
    const auto text = FoldedText::decode(*located.allText(false));
    const auto hits = ContentSearchCommand::textIncludes(FoldedText(text, true), lookFor({"total"}));
    ASSERT_TRUE(hits.has_value());
    const auto match = ContentSearchCommand::textMatch(text, *hits, located, false);
    ASSERT_EQ(match.foundLines.size(), 1u);
    EXPECT_EQ(match.foundLines[0].location, "Page 2, line 2");
    EXPECT_EQ(match.foundLines[0].title, "Page 2, line 2:  \u2026a page with the yearly total in it\u2026");
    EXPECT_EQ(match.foundLines[0].type, FoundItem::Category::summary);
}

TEST(ContentSummaryShape, SeventyFiveBeforeTheHitsEndAndAHundredBehindWithTheCutWordDropped) {
    std::string text;
    for (int i = 0; i < 40; ++i) text += "word" + std::to_string(i) + (i % 5 == 4 ? "\n\t" : "  ");
    const auto decoded = FoldedText::decode(text);
    const auto hit = folded(text).rangesOf("word20", false).at(0);
    const auto summaries = ContentSummary::of(decoded, {hit});
    ASSERT_EQ(summaries.size(), 1u);
    // The span runs from inside "word11" (75 code points before the hit's
    // end), which is dropped, to inside "word32", which stays cut.
    EXPECT_EQ(summaries[0].snippet,
              "\u2026word12 word13 word14 word15 word16 word17 word18 word19 word20 word21 word22 word23 word24 word25 "
              "word26 word27 word28 word29 word30 word31 word32 wo\u2026");
    EXPECT_EQ(summaries[0].range, hit);
    EXPECT_TRUE(ContentSummary::of({}, {hit}).empty());
}

TEST(ContentSummaryShape, AtMostOneThousandAndOneSnippets) {
    std::string text;
    for (int i = 0; i < 1100; ++i) text += "hit ";
    const auto decoded = FoldedText::decode(text);
    const auto ranges = folded(text).rangesOf("hit", false);
    ASSERT_EQ(ranges.size(), 1100u);
    EXPECT_EQ(ContentSummary::of(decoded, ranges).size(), 1001u);
}

TEST(ContentSearchTypes, SettingsOverrideTheDefaultsAndReachCommandsMadeAfterwards) {
    Preferences preferences("");
    ContentSearchTypeSettings settings(preferences);
    EXPECT_TRUE(settings.isEnabled(ContentSearchType::pdf));
    EXPECT_FALSE(settings.isEnabled(ContentSearchType::json));
    ASSERT_TRUE(settings.setEnabled(false, ContentSearchType::pdf));
    ASSERT_TRUE(settings.setEnabled(true, ContentSearchType::json));
    EXPECT_FALSE(settings.isEnabled(ContentSearchType::pdf));
    EXPECT_TRUE(settings.isEnabled(ContentSearchType::json));
    EXPECT_TRUE(settings.isEnabled(ContentSearchType::text));
    EXPECT_EQ(settings.disabledTypes().count(ContentSearchType::pdf), 1u);
}

TEST(ContentSearchTypes, FilesAreClassifiedByTypeThenByExtension) {
    EXPECT_EQ(classifyContentSearchType("/a/report.docx"), ContentSearchType::richText);
    EXPECT_EQ(classifyContentSearchType("/a/page.HTML"), ContentSearchType::richText);
    EXPECT_EQ(classifyContentSearchType("/a/sheet.xlsx"), ContentSearchType::spreadsheet);
    EXPECT_EQ(classifyContentSearchType("/a/main.cpp"), ContentSearchType::sourceCode);
    EXPECT_EQ(classifyContentSearchType("/a/notes.txt"), ContentSearchType::text);
    EXPECT_EQ(classifyContentSearchType("/a/data.json"), ContentSearchType::json);
    EXPECT_EQ(classifyContentSearchType("/a/store.db"), ContentSearchType::sqlite);
    EXPECT_EQ(classifyContentSearchType("/a/old.tar"), ContentSearchType::tarDirectory);
    EXPECT_EQ(classifyContentSearchType("/a/photo.jpeg"), std::nullopt);
    EXPECT_EQ(classifyContentSearchType(std::nullopt, "emlx"), ContentSearchType::text);
}

class CountingFeedback : public SearchDataSourceDelegate {
public:
    bool shouldStop() const override { return false; }
    bool showHiddenItems() const override { return true; }
    void supplySearchResults(std::vector<SearchResult>, SearchDataSource&) override {}
    void supplyIncreaseNumberOfFilesContentSearched(std::int64_t count) override { filesRead += count; }
    bool needsFoundLines() const override { return showsFoundLines; }
    std::atomic<std::int64_t> filesRead{0};
    bool showsFoundLines = true;
};

SearchResult fileResult(const std::string& path, std::uint64_t size) {
    SearchResult result;
    result.url = Url(path);
    result.size = size;
    result.searchResultSuppliedBy = SearchResultSupplier::fileSystem;
    return result;
}

// "report .pdf : content "x" bigger than 1mb" once read every file named
// report before the cheap tests had a say.
TEST(ContentSearchOrder, OnlyFilesThatPassTheNameAndTheCheapCriteriaAreRead) {
    testing::TempDir tree;
    const std::string big(1'100'000, 'x');
    const auto bigPdf = tree.write("report-big.pdf", big).string();
    const auto smallPdf = tree.write("report-small.pdf", "x").string();
    const auto bigText = tree.write("report.txt", big).string();
    const auto unnamed = tree.write("annual.pdf", big).string();
    const auto folder = tree.mkdir("report folder.pdf").string();
    static const CommandRecogniser parser(standardCommandFactories());
    QueryContainer query("report .pdf : content \"x\" bigger than 1mb", parser,
                         SearchLocation::fromURLs({Url(tree.str(), true)}));
    ASSERT_NE(query.findCommand(CommandRole::contentSearch), nullptr);
    auto manager = SearchManager::create(query, true, {}, {});
    CountingFeedback feedback;
    for (auto candidate : {fileResult(smallPdf, 1), fileResult(bigText, big.size()), fileResult(unnamed, big.size()),
                           fileResult(bigPdf, big.size())}) {
        manager->searchResultPassesFiltering(candidate, feedback, query.commandsFoundInQuery());
    }
    SearchResult folderResult = fileResult(folder, 5'000'000);
    folderResult.url = Url(folder, true);
    folderResult.isDirectory = true;
    EXPECT_FALSE(manager->searchResultPassesFiltering(folderResult, feedback, query.commandsFoundInQuery()));
    EXPECT_EQ(feedback.filesRead, 1);
}

TEST(ContentSearchSkip, SkippingTheCurrentFileCancelsItsImportUntilItEnds) {
    std::vector<std::string> cancelled;
    ContentSearchCancellation cancellation([&](const std::string& path) { cancelled.push_back(path); });
    cancellation.skipCurrentFile();
    EXPECT_TRUE(cancelled.empty());
    cancellation.startFile("/a/big.pdf");
    cancellation.skipCurrentFile();
    EXPECT_EQ(cancelled, std::vector<std::string>{"/a/big.pdf"});
    EXPECT_TRUE(cancellation.isSkipRequested("/a/big.pdf"));
    EXPECT_FALSE(cancellation.isSkipRequested("/a/next.pdf"));
    cancellation.endFile("/a/big.pdf");
    EXPECT_FALSE(cancellation.isSkipRequested("/a/big.pdf"));
}

TEST(ContentSearchJudgement, FoldersAndDisabledKindsAreExcludedUnread) {
    ContentSearchCommand command("total", "", {});
    CountingFeedback feedback;
    const QueryContainer query;
    SearchResult folderResult = fileResult("/a/total", 0);
    folderResult.url = Url("/a/total", true);
    folderResult.isDirectory = true;
    EXPECT_EQ(command.commandImpApply(folderResult, &feedback, query), CommandApplyResult::exclude);
    testing::TempDir tree;
    SearchResult json = fileResult(tree.write("data.json", "{\"total\": 1}").string(), 12);
    EXPECT_EQ(command.commandImpApply(json, &feedback, query), CommandApplyResult::exclude);
    EXPECT_EQ(feedback.filesRead, 0);
    SearchResult text = fileResult(tree.write("notes.txt", "the total\nis here").string(), 17);
    EXPECT_EQ(command.commandImpApply(text, &feedback, query), CommandApplyResult::accept);
    EXPECT_EQ(feedback.filesRead, 1);
    ASSERT_TRUE(text.foundItems.has_value());
    ASSERT_EQ(text.foundItems->size(), 1u);
    EXPECT_EQ(text.foundItems->front().title, "Line 1:  \u2026total is here\u2026");
    EXPECT_EQ(text.contentSearchResultsRank, 1);
}

// Where found lines aren't shown, a match is counted, by the byte count for
// ASCII and by the folded search otherwise, and no line is made.
TEST(ContentSearchJudgement, WithoutFoundLinesAMatchKeepsOnlyItsRank) {
    CountingFeedback feedback;
    feedback.showsFoundLines = false;
    const QueryContainer query;
    testing::TempDir tree;
    const std::pair<const char*, const char*> cases[] = {{"total", "Total, total\nand the TOTAL"},
                                                         {"total, café", "Totál, total\nand the cafe"}};
    for (const auto& [words, body] : cases) {
        ContentSearchCommand command(words, "", {});
        SearchResult text = fileResult(tree.write("notes.txt", body).string(), 20);
        EXPECT_EQ(command.commandImpApply(text, &feedback, query), CommandApplyResult::accept) << body;
        EXPECT_TRUE(!text.foundItems || text.foundItems->empty()) << body;
        EXPECT_EQ(text.contentSearchResultsRank, 3) << body;
        SearchResult miss = fileResult(tree.write("other.txt", "nothing to see").string(), 14);
        EXPECT_EQ(command.commandImpApply(miss, &feedback, query), CommandApplyResult::exclude) << words;
    }
}

// The cache's content pass matched the words in its word index; a name it
// supplied must be read like any other file.
TEST(ContentSearchJudgement, WhatACachesWordIndexFoundIsAcceptedUnread) {
    ContentSearchCommand command("total", "", {});
    CountingFeedback feedback;
    const QueryContainer query;
    SearchResult fromWords = fileResult("/unplugged/disk/notes.txt", 17);
    fromWords.searchResultSuppliedBy = SearchResultSupplier::CompactContentIndex;
    fromWords.tryCollectSummaryLines = true;
    EXPECT_EQ(command.commandImpApply(fromWords, &feedback, query), CommandApplyResult::accept);
    SearchResult fromNames = fileResult("/unplugged/disk/notes.txt", 17);
    fromNames.searchResultSuppliedBy = SearchResultSupplier::CompactContentIndex;
    EXPECT_EQ(command.commandImpApply(fromNames, &feedback, query), CommandApplyResult::exclude);
    EXPECT_EQ(feedback.filesRead, 1);
}

}  // namespace
}  // namespace quester
