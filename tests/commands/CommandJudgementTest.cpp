#include <gtest/gtest.h>

#include <atomic>

#include "commands/DateCalendar.h"
#include "commands/DateCommand.h"
#include "commands/ExcludeFolderCommand.h"
#include "commands/ExtensionCommand.h"
#include "commands/FileOrFolderCommand.h"
#include "commands/InsideCommand.h"
#include "commands/MaxDepth.h"
#include "commands/NameLengthCommand.h"
#include "commands/PathLengthCommand.h"
#include "commands/RegexCommand.h"
#include "commands/SizeCommand.h"
#include "commands/SpotlightMetadataSearch.h"
#include "query/NotIncludingWords.h"
#include "query/QueryContainer.h"
#include "query/QuerySearchArguments.h"
#include "query/SearchDataSourceDelegate.h"
#include "query/SearchResult.h"
#include "query/WildcardWords.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using Verdict = CommandApplyResult;

SearchResult file(const std::string& path, std::uint64_t size = 0) {
    SearchResult result;
    result.url = Url(path);
    result.size = size;
    return result;
}

SearchResult folder(const std::string& path) {
    SearchResult result;
    result.url = Url(path, true);
    result.isDirectory = true;
    result.size = 4096;
    return result;
}

Verdict judge(Command& command, SearchResult result) {
    static const QueryContainer query;
    return command.commandImpApply(result, nullptr, query);
}

// Bounds are in decimal units, strict but for "exactly"; "about" allows a quarter unit either side.
TEST(SizeJudgement, SizesPassAsTheBoundsSay) {
    using Type = SizeCommandType;
    const std::vector<std::tuple<Type, double, SizeUnits, std::uint64_t, Verdict>> cases = {
        {Type::greaterThan, 1, SizeUnits::megabytes, 1000001, Verdict::accept},
        {Type::greaterThan, 1, SizeUnits::megabytes, 1000000, Verdict::exclude},
        {Type::smallerThan, 0, SizeUnits::bytes, 0, Verdict::exclude},
        {Type::greaterThan, 0, SizeUnits::bytes, 1, Verdict::accept},
        {Type::greaterThan, 0, SizeUnits::bytes, 0, Verdict::exclude},
        {Type::exactlyEqualTo, 1024, SizeUnits::bytes, 1024, Verdict::accept},
        {Type::exactlyEqualTo, 1024, SizeUnits::bytes, 1025, Verdict::exclude},
        {Type::equalTo, 1, SizeUnits::megabytes, 749999, Verdict::exclude},
        {Type::equalTo, 1, SizeUnits::megabytes, 750000, Verdict::accept},
        {Type::equalTo, 1, SizeUnits::megabytes, 1250000, Verdict::accept},
        {Type::equalTo, 1, SizeUnits::megabytes, 1250001, Verdict::exclude},
        {Type::equalTo, 3, SizeUnits::bytes, 1, Verdict::exclude},
        {Type::equalTo, 3, SizeUnits::bytes, 2, Verdict::accept},
        {Type::equalTo, 3, SizeUnits::bytes, 4, Verdict::accept},
        {Type::equalTo, 3, SizeUnits::bytes, 5, Verdict::exclude},
    };
    for (const auto& [type, value, units, size, verdict] : cases) {
        SizeCommand command(type, value, units);
        EXPECT_EQ(judge(command, file("/a", size)), verdict) << command.commandToString() << " for " << size;
    }
    SizeCommand bigger(SizeCommandType::greaterThan, 1, SizeUnits::megabytes);
    EXPECT_EQ(judge(bigger, folder("/d")), Verdict::exclude) << "folders never pass";
}

TEST(SizeJudgement, HugeValuesSaturate) {
    EXPECT_EQ(SizeCommand::toByteCount(2, SizeUnits::yottabyte), std::numeric_limits<std::int64_t>::max());
    SizeCommand smaller(SizeCommandType::smallerThan, 2, SizeUnits::yottabyte);
    EXPECT_EQ(judge(smaller, file("/a", 1ull << 62)), Verdict::accept);
    QuerySearchArguments arguments;
    SizeCommand about(SizeCommandType::equalTo, 2, SizeUnits::yottabyte);
    about.commandImpQuerySearchArguments(arguments);
    ASSERT_TRUE(arguments.fileSize.has_value());
    EXPECT_EQ(arguments.fileSize->upperBound, std::numeric_limits<std::int64_t>::max());
}

TEST(SizeJudgement, SearchArgumentsNarrowTheSizeRange) {
    QuerySearchArguments arguments;
    SizeCommand(SizeCommandType::greaterThan, 1, SizeUnits::kilobytes).commandImpQuerySearchArguments(arguments);
    SizeCommand(SizeCommandType::smallerThan, 5, SizeUnits::kilobytes).commandImpQuerySearchArguments(arguments);
    ASSERT_TRUE(arguments.fileSize.has_value());
    EXPECT_EQ(*arguments.fileSize, (ByteCountRange{1000, 5000}));
    SizeCommand(SizeCommandType::smallerThan, 500, SizeUnits::bytes).commandImpQuerySearchArguments(arguments);
    EXPECT_EQ(*arguments.fileSize, (ByteCountRange{1000, 5000}));
    SizeCommand(SizeCommandType::equalTo, 3, SizeUnits::bytes).commandImpQuerySearchArguments(arguments);
    EXPECT_EQ(*arguments.fileSize, (ByteCountRange{2, 5}));
}

TEST(SizeJudgement, ValuesPrintWholeOrShortest) {
    EXPECT_EQ(SizeCommand(SizeCommandType::equalTo, 0.25, SizeUnits::bytes).commandExample(), "size **0.25b**");
    EXPECT_EQ(SizeCommand(SizeCommandType::exactlyEqualTo, 7, SizeUnits::kilobytes).commandToString(), "== 7kb");
}

TEST(NameJudgement, ExtensionsCompareWithoutCase) {
    ExtensionCommand pdf(".PDF", false);
    EXPECT_EQ(judge(pdf, file("/d/a.Pdf")), Verdict::accept);
    EXPECT_EQ(judge(pdf, file("/d/a.txt")), Verdict::exclude);
    EXPECT_EQ(judge(pdf, file("/d/README")), Verdict::exclude);
    EXPECT_EQ(pdf.commandImpExtraSearchStrings(), (std::vector<std::string>{"pdf"}));

    ExtensionCommand notJpg("jpg", true);
    EXPECT_EQ(judge(notJpg, file("/d/a.JPG")), Verdict::exclude);
    EXPECT_EQ(judge(notJpg, file("/d/README")), Verdict::accept);
    EXPECT_TRUE(notJpg.commandImpExtraSearchStrings().empty());
    EXPECT_EQ(notJpg.commandExtraHighlightStrings(), (std::vector<std::string>{".jpg"}));
}

TEST(NameJudgement, RegexSearchesTheLowerCaseNameAnywhere) {
    RegexCommand digits("[0-9]{4}", false);
    EXPECT_EQ(judge(digits, file("/2023/report.txt")), Verdict::exclude);
    EXPECT_EQ(judge(digits, file("/d/Report 2023.txt")), Verdict::accept);
    RegexCommand capitals("^Report", false);
    EXPECT_EQ(judge(capitals, file("/d/Report.txt")), Verdict::exclude);
    RegexCommand negated("^tmp", true);
    EXPECT_EQ(judge(negated, file("/d/tmp1")), Verdict::exclude);
    EXPECT_EQ(judge(negated, file("/d/keep")), Verdict::accept);

    RegexCommand broken("(unclosed", true);
    EXPECT_FALSE(broken.compiled());
    EXPECT_EQ(judge(broken, file("/d/(unclosed")), Verdict::skip);
    broken.setPattern("closed");
    EXPECT_EQ(judge(broken, file("/d/closed")), Verdict::exclude);
}

// A stop flag that counts how often the matcher asked it.
class CountingStop final : public SearchDataSourceDelegate {
public:
    explicit CountingStop(bool stop) : stop(stop) {}
    bool shouldStop() const override {
        ++asked;
        return stop;
    }
    bool showHiddenItems() const override { return false; }
    void supplySearchResults(std::vector<SearchResult>, SearchDataSource&) override {}

    const bool stop;
    mutable std::atomic<int> asked{0};
};

// "(a*)*b" over a name of thirty "a"s backtracked for minutes, and a stopped
// search could not end it: a name that costs too much now doesn't match, and
// the stop flag ends a match under way.
TEST(NameJudgement, RunawayRegexGivesUpOnTheNameAndHeedsTheStopFlag) {
    const SearchResult runaway = file("/d/" + std::string(30, 'a'));
    static const QueryContainer query;
    for (const char* pattern : {"(a*)*b", "^(a+)+$x"}) {
        SCOPED_TRACE(pattern);
        RegexCommand found(pattern, false);
        RegexCommand negated(pattern, true);
        EXPECT_EQ(judge(found, runaway), Verdict::exclude);
        EXPECT_EQ(judge(negated, runaway), Verdict::accept);
        CountingStop goOn(false);
        SearchResult result = runaway;
        EXPECT_EQ(found.commandImpApply(result, &goOn, query), Verdict::exclude);
        EXPECT_GT(goOn.asked.load(), 0) << "the matcher never looked at the stop flag";
        CountingStop stopped(true);
        EXPECT_EQ(negated.commandImpApply(result, &stopped, query), Verdict::exclude)
            << "a stopped match accepts nothing";
        EXPECT_GE(stopped.asked.load(), 1);
    }
    RegexCommand plain("^a+$", false);
    CountingStop goOn(false);
    SearchResult result = runaway;
    EXPECT_EQ(plain.commandImpApply(result, &goOn, query), Verdict::accept);
}

TEST(NameJudgement, LengthBoundsAreStrictAndCountCharacters) {
    NameLengthCommand maxName(LengthChoice::max, 10);
    EXPECT_EQ(judge(maxName, file("/d/abcdefghi")), Verdict::accept);
    EXPECT_EQ(judge(maxName, file("/d/abcdefghij")), Verdict::exclude);
    EXPECT_EQ(judge(maxName, file("/d/ééééééééé")), Verdict::accept);
    NameLengthCommand minName(LengthChoice::min, 3);
    EXPECT_EQ(judge(minName, file("/d/abc")), Verdict::exclude);
    EXPECT_EQ(judge(minName, file("/d/abcd")), Verdict::accept);
    PathLengthCommand maxPath(LengthChoice::max, 6);
    EXPECT_EQ(judge(maxPath, file("/d/ab")), Verdict::accept);
    EXPECT_EQ(judge(maxPath, file("/d/abc")), Verdict::exclude);
}

TEST(NameJudgement, MinusWordsExcludeNamesHoldingThem) {
    NotIncludingWords minus({"-Dogs", "-cat"});
    EXPECT_EQ(minus.commandToString(), "-dogs -cat");
    EXPECT_EQ(judge(minus, file("/pets/hotdogs.jpg")), Verdict::exclude);
    EXPECT_EQ(judge(minus, file("/cats/bird.jpg")), Verdict::accept);
}

TEST(NameJudgement, WildcardsAnchorTheWholeNameAndEachPiece) {
    SentenceComponent rep;
    rep.textLowered = "rep";
    rep.wildcard = SentenceComponent::Wildcard::prefix;
    WildcardWords prefix({rep});
    EXPECT_EQ(judge(prefix, file("/d/Report.pdf")), Verdict::accept);
    EXPECT_EQ(judge(prefix, file("/d/my report.pdf")), Verdict::exclude);
    EXPECT_EQ(judge(prefix, file("/d/report prep.pdf")), Verdict::exclude);

    SentenceComponent txt;
    txt.textLowered = ".txt";
    txt.wildcard = SentenceComponent::Wildcard::suffix;
    WildcardWords suffix({txt});
    EXPECT_EQ(judge(suffix, file("/d/notes.TXT")), Verdict::accept);
    EXPECT_EQ(judge(suffix, file("/d/notes.txt.bak")), Verdict::exclude);
}

TEST(ScopeJudgement, AnAbsoluteFolderCoversItselfAndBelowByComponent) {
    testing::TempDir dir;
    auto base = dir.mkdir("a");
    dir.mkdir("ab");
    InsideCommand inside(base.string());
    EXPECT_EQ(judge(inside, file(base.string() + "/b.txt")), Verdict::accept);
    EXPECT_EQ(judge(inside, folder(base.string())), Verdict::accept);
    EXPECT_EQ(judge(inside, file(dir.str() + "/ab/c.txt")), Verdict::exclude);
    EXPECT_EQ(inside.scopePath(), base.string());
}

TEST(ScopeJudgement, ARelativeFolderMatchesTheParentPathOnly) {
    InsideCommand inside("Docs");
    EXPECT_FALSE(inside.scopePath().has_value());
    EXPECT_EQ(judge(inside, file("/home/a/MyDocs/x.txt")), Verdict::accept);
    EXPECT_EQ(judge(inside, file("/home/a/docs.txt")), Verdict::exclude);
}

TEST(ScopeJudgement, ExcludingAFolderDropsEveryParentPathHoldingIt) {
    ExcludeFolderCommand tmp("tmp");
    EXPECT_EQ(judge(tmp, file("/x/tmp/a")), Verdict::exclude);
    EXPECT_EQ(judge(tmp, file("/x/tmpfiles/a")), Verdict::exclude);
    EXPECT_EQ(judge(tmp, file("/x/keep/tmp.txt")), Verdict::accept);
    EXPECT_EQ(tmp.commandToString(), "excluding folder \"tmp\"");
}

TEST(ScopeJudgement, AppBundlesAreNeitherFilesNorFolders) {
    FileOrFolderCommand isFile(FileOrFolderType::file);
    FileOrFolderCommand isFolder(FileOrFolderType::folder);
    EXPECT_EQ(judge(isFile, file("/d/a.txt")), Verdict::accept);
    EXPECT_EQ(judge(isFolder, file("/d/a.txt")), Verdict::exclude);
    EXPECT_EQ(judge(isFolder, folder("/d/sub")), Verdict::accept);
    EXPECT_EQ(judge(isFile, folder("/d/Calc.app")), Verdict::exclude);
    EXPECT_EQ(judge(isFolder, folder("/d/Calc.app")), Verdict::exclude);
}

TEST(ScopeJudgement, DepthCountsFromTheVolumesRoot) {
    EXPECT_EQ(MaxDepth::calcPathDepth("/a.txt", true), 0);
    EXPECT_EQ(MaxDepth::calcPathDepth("/x/y/a.txt", true), 2);
    MaxDepth two(2);
    EXPECT_EQ(judge(two, file("/x/y/a.txt")), Verdict::accept);
    EXPECT_EQ(judge(two, file("/x/y/z/a.txt")), Verdict::exclude);
    MaxDepth unlimited(0);
    EXPECT_EQ(judge(unlimited, file("/x/y/z/w/v/a.txt")), Verdict::accept);
}

TEST(SpotlightJudgement, OnlyWhatTheIndexSuppliedPasses) {
    SpotlightMetadataSearch metadata("comedy");
    SearchResult fromIndex = file("/m/a.mov");
    fromIndex.searchResultSuppliedBy = SearchResultSupplier::spotlight;
    EXPECT_EQ(judge(metadata, fromIndex), Verdict::accept);
    EXPECT_EQ(judge(metadata, file("/m/a.mov")), Verdict::exclude);
    EXPECT_EQ(metadata.commandExample(), "metadata \"**comedy**\"");
}

SearchResult modifiedSecondsAgo(std::int64_t seconds) {
    SearchResult result = file("/d/a");
    result.modDate =
        std::chrono::duration_cast<std::chrono::seconds>(DateCalendar::now().time_since_epoch()).count() - seconds;
    return result;
}

TEST(DateJudgement, RecentIsTheLastHourWithoutThePresentSecond) {
    DateCommand recent(DateCommandWhat::modificationDate, {WhenType::recent, std::nullopt, std::nullopt});
    EXPECT_EQ(judge(recent, modifiedSecondsAgo(59 * 60)), Verdict::accept);
    EXPECT_EQ(judge(recent, modifiedSecondsAgo(61 * 60)), Verdict::exclude);
    EXPECT_EQ(judge(recent, modifiedSecondsAgo(-5)), Verdict::exclude);
}

TEST(DateJudgement, EverAcceptsEveryDateAndAnEmptyRangeNone) {
    DateCommand ever(DateCommandWhat::creationDate, {WhenType::ever, std::nullopt, std::nullopt});
    SearchResult old = file("/d/a");
    old.creationDate = 0;
    EXPECT_EQ(judge(ever, old), Verdict::accept);

    auto range = DateCalendar::dateRange({1, 5, 2021}, {1, 3, 2021});
    ASSERT_TRUE(range.has_value());
    EXPECT_EQ(range->lowerBound, range->upperBound);
    DateCommand empty(DateCommandWhat::modificationDate, {WhenType::dateRange, std::nullopt, range});
    SearchResult inside = file("/d/a");
    inside.modDate = std::chrono::duration_cast<std::chrono::seconds>(range->lowerBound.time_since_epoch()).count();
    EXPECT_EQ(judge(empty, inside), Verdict::exclude);
}

TEST(DateJudgement, TheYearAndMonthRangesPrintCanonically) {
    auto year = DateCalendar::wholeYearRange(2016);
    ASSERT_TRUE(year.has_value());
    DateCommandWhen when{WhenType::dateRange, std::nullopt, year};
    EXPECT_EQ(toString(when), "2016");
    auto month = DateCalendar::wholeMonthRange(3, 2021);
    EXPECT_EQ(toString(DateCommandWhen{WhenType::dateRange, std::nullopt, month}), "march 2021");
    auto thisWeek = DateCalendar::unitInterval(TimeUnit::weekOfYear, DateCalendar::now());
    EXPECT_EQ(toString(DateCommandWhen{WhenType::dateRange, std::nullopt, thisWeek}), "this week");
    EXPECT_EQ(DateCommand(DateCommandWhat::creationDate, when).commandToString(), "created 2016");
}

TEST(DateJudgement, SearchArgumentsCarryTheRangeOfTheDateTested) {
    QuerySearchArguments arguments;
    DateCommand created(DateCommandWhat::creationDate, {WhenType::today, std::nullopt, std::nullopt});
    created.commandImpQuerySearchArguments(arguments);
    ASSERT_TRUE(arguments.creationDate.has_value());
    EXPECT_EQ(arguments.creationDate->upperBound - arguments.creationDate->lowerBound, std::chrono::hours(24));
    EXPECT_FALSE(arguments.modificationDate.has_value());
    DateCommand accessed(DateCommandWhat::accessDate, {WhenType::today, std::nullopt, std::nullopt});
    QuerySearchArguments untouched;
    accessed.commandImpQuerySearchArguments(untouched);
    EXPECT_EQ(untouched, QuerySearchArguments{});
}

}  // namespace
}  // namespace quester
