#include <gtest/gtest.h>

#include "FakeCommands.h"
#include "query/CommandRecogniser.h"

namespace quester {
namespace {

// The program's own template data, with factories that print what they were given:
// this pins which command each wording reaches and with which values. Commands come
// in template order, not sentence order; "is file" also reads as a kind word here,
// which the real commands drop as a duplicate since both print "is file".
const CommandRecogniser& parser() {
    static const CommandRecogniser parse = [] {
        VariableSources sources;
        sources.rememberedFolders = [] {
            return std::vector<std::pair<std::string, std::string>>{{"desktop", "/home/u/Desktop/"}};
        };
        sources.shortcutNames = [] { return std::vector<std::string>{"music quiz"}; };
        return CommandRecogniser(
            CommandFactories{std::make_shared<testing::FakeFactory>(testing::templateCommandNames())}, sources);
    }();
    return parse;
}

struct Parsed {
    std::vector<std::string> commands;
    std::vector<std::string> leftOver;  // command-area words no command took
};

Parsed parse(std::string_view text) {
    const std::vector<SentenceComponent> area = testing::commandArea(text);
    const CommandRecogniserResult result = parser().makeCommands(area);
    Parsed parsed{testing::printed(result), {}};
    for (const auto& word : area) {
        if (std::find(result.consumedParts.begin(), result.consumedParts.end(), word) == result.consumedParts.end()) {
            parsed.leftOver.push_back(word.textOriginalCase);
        }
    }
    return parsed;
}

using Names = std::vector<std::string>;

struct Sample {
    std::string_view query;
    Names commands;
    Names leftOver;
};

class SampleQueries : public ::testing::TestWithParam<Sample> {};

TEST_P(SampleQueries, ParseAsShown) {
    const Sample& sample = GetParam();
    const Parsed parsed = parse(sample.query);
    EXPECT_EQ(parsed.commands, sample.commands) << sample.query;
    EXPECT_EQ(parsed.leftOver, sample.leftOver) << sample.query;
}

// Flags print as their numbers: without 0, allFiles 1, wholeWords 2, allWords 3, useOCR 4, caseSensitive 5.
// Time ranges print as their WhenType numbers: recent 2, today 3, yesterday 4; time units: weekOfYear 3, month 4,
// year 5. The sample queries of the query field are pinned with the real commands in QueryContainerTest; those
// here are the ones whose real wording doesn't show the template they reached, or leave words over.
INSTANTIATE_TEST_SUITE_P(
    SampleDates, SampleQueries,
    ::testing::Values(Sample{": today is audio", {"uti(audio)", "specificDateRange(modified|when3)"}, {}},
                      Sample{"invoice OR receipt : after 2023", {"afterYear(modified|2023)"}, {}},
                      Sample{"report : modified this month AND bigger than 5mb",
                             {"filesBiggerThan(5.00mb)", "thisTimeUnit(modified|unit4)"},
                             {"AND"}},
                      Sample{".key OR .pptx : modified this year", {"thisTimeUnit(modified|unit5)"}, {}}));

INSTANTIATE_TEST_SUITE_P(
    Variants, SampleQueries,
    ::testing::Values(
        Sample{": larger than 1.5 gb", {"filesBiggerThan(1.50gb)"}, {}},
        Sample{": created last week", {"lastTimeUnit(created|unit3)"}, {}},
        Sample{": from 2019 to 2021", {"yearToYear(modified|2019|2021)"}, {}},
        Sample{": exact size 1024b", {"filesExactlyEqualTo(1024b)"}, {}},
        Sample{": size 3 kb", {"filesEqualTo(3.00kb)"}, {}},
        Sample{": max name length twenty min path length 10", {"nameMaxLength(20)", "pathMinLength(10)"}, {}},
        Sample{": max depth 2", {"maxDepth(2)"}, {}},
        Sample{": .txt not .jpg", {"extension(txt)", "extensionNot(jpg)"}, {}},
        Sample{": not locked is file", {"isFile", "lockedExcluding", "uti(file)"}, {}},
        Sample{": is folder", {"isFolder"}, {}}, Sample{": is file", {"isFile", "uti(file)"}, {}},
        Sample{": tag red tag blue", {"label(red)", "label(blue)"}, {}},
        Sample{": excluding folder \"Backups\"", {"excludingFolder(Backups)"}, {}},
        Sample{": regex \"^rep.*x$\" not", {"regexNot(^rep.*x$)"}, {}}, Sample{": regex rep*", {"regex(rep)"}, {}},
        Sample{": case sensitive whole words exact", {"caseSensitive", "wholeWords", "exact"}, {}},
        Sample{
            ": show all files show invisible items show apps", {"showInvisibleItems", "showAllFiles", "listApps"}, {}},
        Sample{": mailsearch \"text\"", {"mailSearch(text)"}, {}},
        Sample{": metadata \"comedy\" author \"robin vale\"", {"spotlightMetadata(comedy)", "author(robin vale)"}, {}},
        Sample{": spotlight \"kind:pdf\"", {"spotlightUserQuery(kind:pdf)"}, {}},
        Sample{": desktop", {"remembered(/home/u/Desktop/)"}, {}},
        Sample{": shortcut music quiz", {"scriptCommand(script:music quiz)"}, {}},
        Sample{": content \"x\" whole words use OCR case sensitive", {"textContent(x|[245])"}, {}},
        Sample{": frobnicate", {}, {"frobnicate"}}));

}  // namespace
}  // namespace quester
