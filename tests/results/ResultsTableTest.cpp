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

TEST(ResultsTableText, shortensInTheMiddleByCharacters) {
    EXPECT_EQ(ResultsTable::shortenedInTheMiddle("abcdefghij", 5), "ab…ij");
    EXPECT_EQ(ResultsTable::shortenedInTheMiddle("abc", 5), "abc");
    EXPECT_EQ(ResultsTable::shortenedInTheMiddle("äöüßéèê", 4), "äö…ê");
    EXPECT_EQ(ResultsTable::displayWidth("äöü"), 3u);
}

}  // namespace
}  // namespace quester
