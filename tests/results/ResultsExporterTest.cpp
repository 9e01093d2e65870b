#include <gtest/gtest.h>

#include <filesystem>

#include "platform/FaultInjectingFileSystem.h"
#include "results/ResultsExporter.h"
#include "stores/Preferences.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using namespace std::chrono_literals;
using Format = ResultsExporter::Format;

// 2023-07-04 09:30:00 UTC and 2022-12-25 18:00:00 UTC.
constexpr std::int64_t july2023 = 1688463000;
constexpr std::int64_t christmas2022 = 1671991200;

UINodePtr node(const std::string& path, std::uint64_t size, std::int64_t modified, std::int64_t created) {
    SearchResult result;
    result.url = Url(path);
    result.size = size;
    result.modDate = modified;
    result.creationDate = created;
    return UINode::create(result);
}

class ExportTest : public ::testing::Test {
protected:
    std::string exported(Format format) {
        const std::string path = dir.str() + "/out." + ResultsExporter::fileExtension(format);
        const Status status = ResultsExporter::exportResults(format, nodes, path, dates);
        EXPECT_TRUE(status.ok()) << (status.ok() ? "" : status.error().description());
        return testing::readFile(path);
    }

    testing::TempDir dir;
    ManualClock clock;  // 1 March 2024
    ResultDateText dates{"en_GB", "UTC", clock};
    UINode::NodeList nodes{
        node("/home/me/=sum.txt", 1200, july2023, christmas2022),
        node("/home/me/a,b.txt", 0, july2023, july2023),
        node("/data/-x", 7, christmas2022, 0),
        node("/data/say \"hi\".pdf", 3, july2023, christmas2022),
    };
};

TEST_F(ExportTest, csvDefusesFormulasAndQuotesWhatNeedsIt) {
    EXPECT_EQ(exported(Format::csv),
              "name, path, size, mod date, creation date, kind, parent name\n"
              "'=sum.txt, /home/me/=sum.txt, 1200, 04/07/2023  09:30, 25/12/2022  18:00, Plain text document, me\n"
              "\"a,b.txt\", \"/home/me/a,b.txt\", 0, 04/07/2023  09:30, 04/07/2023  09:30, Plain text document, me\n"
              "'-x, /data/-x, 7, 25/12/2022  18:00, 01/01/1970  00:00, Document, data\n"
              "\"say \"\"hi\"\".pdf\", \"/data/say \"\"hi\"\".pdf\", 3, 04/07/2023  09:30, 25/12/2022  18:00, "
              "PDF document, data\n");
}

TEST_F(ExportTest, textWritesFieldsAsTheyAre) {
    EXPECT_EQ(exported(Format::text),
              "name\tpath\tsize\tmod date\tcreation date\tkind\tparent name\n"
              "=sum.txt\t/home/me/=sum.txt\t1200\t04/07/2023  09:30\t25/12/2022  18:00\tPlain text document\tme\n"
              "a,b.txt\t/home/me/a,b.txt\t0\t04/07/2023  09:30\t04/07/2023  09:30\tPlain text document\tme\n"
              "-x\t/data/-x\t7\t25/12/2022  18:00\t01/01/1970  00:00\tDocument\tdata\n"
              "say \"hi\".pdf\t/data/say \"hi\".pdf\t3\t04/07/2023  09:30\t25/12/2022  18:00\tPDF document\tdata\n");
}

TEST_F(ExportTest, emptyListWritesTheHeaderAloneOverAnExistingFile) {
    const std::string path = dir.write("old.csv", "older and longer contents\nthat must go\n").string();
    ASSERT_TRUE(ResultsExporter::exportResults(Format::csv, {}, path, dates).ok());
    EXPECT_EQ(testing::readFile(path), "name, path, size, mod date, creation date, kind, parent name\n");
}

// Such a row used to be dropped without a word.
TEST_F(ExportTest, aNameThatIsNoValidTextKeepsItsRowWithReplacementCharacters) {
    nodes = {node("/d/bad\xff.txt", 1, july2023, july2023), node("/d/good.txt", 1, july2023, july2023)};
    for (Format format : {Format::text, Format::csv}) {
        const char* separator = format == Format::text ? "\t" : ", ";
        const std::string text = exported(format);
        EXPECT_NE(text.find(std::string("bad\uFFFD.txt") + separator + "/d/bad\uFFFD.txt" + separator),
                  std::string::npos)
            << text;
        EXPECT_NE(text.find("good.txt"), std::string::npos);
    }
}

// A tab or line break in a name shifted the columns or split the row.
TEST_F(ExportTest, tabsAndLineBreaksInNamesNeitherAddColumnsNorRows) {
    nodes = {node("/d/tab\there.txt", 1, july2023, july2023), node("/d/line\nbreak\\x.txt", 1, july2023, july2023)};
    EXPECT_EQ(exported(Format::text),
              "name\tpath\tsize\tmod date\tcreation date\tkind\tparent name\n"
              "tab\\there.txt\t/d/tab\\there.txt\t1\t04/07/2023  09:30\t04/07/2023  09:30\tPlain text document\td\n"
              "line\\nbreak\\\\x.txt\t/d/line\\nbreak\\\\x.txt\t1\t04/07/2023  09:30\t04/07/2023  09:30\t"
              "Plain text document\td\n");
    const std::string csv = exported(Format::csv);
    EXPECT_NE(csv.find("\"line\nbreak\\x.txt\", \"/d/line\nbreak\\x.txt\", 1,"), std::string::npos) << csv;
}

TEST_F(ExportTest, aPlaceOrWriteThatFailsReportsTheErrorAndLeavesNoHalfWrittenFile) {
    const Status unwritable = ResultsExporter::exportResults(Format::csv, nodes, dir.str() + "/missing/out.csv", dates);
    ASSERT_FALSE(unwritable.ok());
    EXPECT_NE(unwritable.error().message.find("errno 2"), std::string::npos) << unwritable.error().message;

    const auto previous = dir.write("out.csv", "the previous export\n");
    FaultInjectingFileSystem faulty;
    faulty.failWritesAfter(10);
    const Status status = ResultsExporter::exportResults(Format::csv, nodes, previous.string(), dates, faulty);
    ASSERT_FALSE(status.ok());
    EXPECT_EQ(status.error().code, ErrorCode::ioError);
    EXPECT_EQ(testing::readFile(previous), "the previous export\n");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 1) << "no temporary file is left";

    EXPECT_FALSE(ResultsExporter::exportResults(Format::csv, nodes, dir.str() + "/new.csv", dates, faulty).ok());
    EXPECT_FALSE(std::filesystem::exists(dir.path() / "new.csv"));
}

TEST(ResultDateTextTest, datesNearNowReadAsDaysAndThisYearLosesAFreeStandingYear) {
    ManualClock clock(std::chrono::sys_days(std::chrono::year(2024) / 3 / 1) + 12h);
    const std::int64_t now = std::chrono::duration_cast<std::chrono::seconds>(clock.now().time_since_epoch()).count();
    ResultDateText british("en_GB", "UTC", clock);
    EXPECT_EQ(british.dateToString(now - 3600), "Today at 11:00");
    EXPECT_EQ(british.dateToString(now - 86400), "Yesterday at 12:00");
    EXPECT_EQ(british.dateToString(now + 86400 + 3600), "Tomorrow at 13:00");
    EXPECT_EQ(british.dateToString(now + 5 * 86400), "06/03/2024, 12:00");
    // Late evening in New York is already the next day in UTC.
    ResultDateText newYork("en_GB", "America/New_York", clock);
    EXPECT_EQ(newYork.dateToString(now - 14 * 3600), "Yesterday at 17:00");
}

class ExportActionTest : public ExportTest {
protected:
    Preferences preferences{""};
    std::vector<std::pair<std::string, Format>> asked;
    std::optional<ResultsExporter::SaveChoice> answer;
    ResultsExporter exporter{preferences, [this](const std::string& name, Format format) {
                                 asked.emplace_back(name, format);
                                 return answer;
                             }};
};

TEST_F(ExportActionTest, aCancelledDialogIsNoErrorAndAChoiceIsRememberedForTheNextDialog) {
    EXPECT_TRUE(exporter.exportResultsAction(nodes, std::nullopt, dates).ok());
    ASSERT_EQ(asked.size(), 1u);
    EXPECT_EQ(asked[0], std::make_pair(std::string("Results.csv"), Format::csv));
    EXPECT_FALSE(preferences.hasStoredValue(ResultsExporter::fileNamePreference));

    answer = ResultsExporter::SaveChoice{dir.str() + "/list.txt", Format::text};
    ASSERT_TRUE(exporter.exportResultsAction(nodes, std::nullopt, dates).ok());
    EXPECT_EQ(testing::readFile(dir.str() + "/list.txt").substr(0, 5), "name\t");
    ResultsExporter later(preferences, [&](const std::string& name, Format format) {
        asked.emplace_back(name, format);
        return std::nullopt;
    });
    ASSERT_TRUE(later.exportResultsAction(nodes, std::nullopt, dates).ok());
    EXPECT_EQ(asked.back(), std::make_pair(std::string("list.txt"), Format::text));
}

TEST_F(ExportActionTest, aTestingPathSkipsTheDialog) {
    ASSERT_TRUE(exporter.exportResultsAction(nodes, dir.str() + "/t.csv", dates).ok());
    EXPECT_TRUE(asked.empty());
    EXPECT_EQ(testing::readFile(dir.str() + "/t.csv").substr(0, 6), "name, ");
}

}  // namespace
}  // namespace quester
