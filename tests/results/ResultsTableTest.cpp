#include <gtest/gtest.h>

#include "results/ResultsTable.h"

namespace quester {
namespace {

UINodePtr row(const std::string& path, std::uint64_t size, std::int64_t modified) {
    SearchResult result;
    result.url = Url(path);
    result.size = size;
    result.modDate = modified;
    return UINode::create(result);
}

class TableTest : public ::testing::Test {
protected:
    ManualClock clock;  // 1 March 2024
    ResultDateText dates{"en_GB", "UTC", clock};
    UINode::NodeList rows{row("/home/me/report.pdf", 1234567, 1688463000), row("/srv/a.txt", 5, 1688463000)};
};

TEST_F(TableTest, columnsAlignWithSizesToTheRight) {
    EXPECT_EQ(ResultsTable::render(rows, 200, dates),
              "Name        Folder       Size  Modified           Kind\n"
              "report.pdf  /home/me   1.2 MB  04/07/2023, 09:30  PDF document\n"
              "a.txt       /srv      5 bytes  04/07/2023, 09:30  Plain text document\n");
}

TEST_F(TableTest, aNarrowTerminalShortensTheWiderOfFolderAndNameFirst) {
    rows = {row("/home/me/projects/2024/quarterly/report-final.pdf", 1, 1688463000)};
    EXPECT_EQ(ResultsTable::render(rows, 70, dates),
              "Name            Folder           Size  Modified           Kind\n"
              "report-…al.pdf  /home/…rterly  1 byte  04/07/2023, 09:30  PDF document\n");
    // Sizes and dates are never cut, so a very narrow terminal gets the narrowest row there is.
    EXPECT_EQ(ResultsTable::render(rows, 40, dates),
              "Name    Folder    Size  Modified           Kind\n"
              "rep…df  /ho…ly  1 byte  04/07/2023, 09:30  PDF…nt\n");
}

TEST_F(TableTest, escapesSetTheHeaderInBoldAndStrikeThroughRowsOfDisksOffLine) {
    SearchResult offline;
    offline.url = Url("/media/usb/a.txt");
    offline.size = 5;
    offline.modDate = 1688463000;
    offline.isOffline = true;
    rows = {row("/srv/b.txt", 5, 1688463000), UINode::create(offline)};
    EXPECT_EQ(ResultsTable::render(rows, 200, dates, true),
              "\033[1mName   Folder         Size  Modified           Kind\033[0m\n"
              "b.txt  /srv        5 bytes  04/07/2023, 09:30  Plain text document\n"
              "\033[9ma.txt  /media/usb  5 bytes  04/07/2023, 09:30  Plain text document\033[0m\n");
    EXPECT_EQ(ResultsTable::render(rows, 200, dates).find('\033'), std::string::npos);
}

// Widths counted code points, so wide characters pushed the columns after
// them out of line and combining marks pulled them in.
TEST(ResultsTableText, widthsCountTerminalColumns) {
    EXPECT_EQ(ResultsTable::displayWidth("日本語.txt"), 10u);
    EXPECT_EQ(ResultsTable::displayWidth("e\u0301te\u0301"), 3u);  // "été" with combining accents
    EXPECT_EQ(ResultsTable::displayWidth("\uFF21"), 2u);           // full-width A
    EXPECT_EQ(ResultsTable::shortenedInTheMiddle("abcdefghij", 5), "ab…ij");
    EXPECT_EQ(ResultsTable::shortenedInTheMiddle("abc", 5), "abc");
    EXPECT_EQ(ResultsTable::shortenedInTheMiddle("äöüßéèê", 4), "äö…ê");
    // Cut between whole characters, never inside one: a wide character
    // that doesn't fit leaves its columns blank.
    EXPECT_EQ(ResultsTable::shortenedInTheMiddle("日本語のファイル", 7), "日…イル");
    EXPECT_EQ(ResultsTable::shortenedInTheMiddle("日本語のファイル", 6), "日…ル");
    EXPECT_EQ(ResultsTable::shortenedInTheMiddle("e\u0301e\u0301e\u0301e\u0301e\u0301", 4), "e\u0301e\u0301…e\u0301");
}

TEST_F(TableTest, wideNamesStayAlignedAndControlCharactersShowAsQuestionMarks) {
    rows = {row("/d/日本.txt", 5, 1688463000), row("/d/evil\033[31m\xff.txt", 5, 1688463000)};
    EXPECT_EQ(ResultsTable::render(rows, 200, dates),
              "Name" + std::string(12, ' ') +
                  "Folder     Size  Modified           Kind\n"
                  "日本.txt" +
                  std::string(8, ' ') +
                  "/d      5 bytes  04/07/2023, 09:30  Plain text document\n"
                  "evil?[31m?.txt  /d      5 bytes  04/07/2023, 09:30  Plain text document\n");
}

}  // namespace
}  // namespace quester
