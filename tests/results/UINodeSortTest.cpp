#include <gtest/gtest.h>
#include <unicode/locid.h>

#include <thread>

#include <string>
#include <vector>

#include "results/UINode.h"
#include "stores/Preferences.h"
#include "support/PathText.h"

namespace quester {
namespace {

struct Row {
    std::string path;
    std::uint64_t size = 0;
    std::int64_t modified = 0;
    std::int64_t created = 0;
    std::int64_t accessed = 0;
    std::vector<std::string> tags = {};
    std::int64_t rank = 0;
    bool isDirectory = false;
};

UINodePtr makeNode(const Row& row) {
    SearchResult result;
    result.url = Url(row.path, row.isDirectory);
    result.isDirectory = row.isDirectory;
    result.size = row.size;
    result.modDate = row.modified;
    result.creationDate = row.created;
    result.lastAccessDate = row.accessed;
    result.tags = row.tags;
    result.contentSearchResultsRank = row.rank;
    return UINode::create(result);
}

UINodePtr plain(const std::string& path) {
    return makeNode(Row{path});
}

std::vector<std::string> names(const UINode::NodeList& nodes) {
    std::vector<std::string> list;
    for (const auto& node : nodes) list.push_back(lastPathComponent(node->fileURL().path()));
    return list;
}

class SortTest : public ::testing::Test {
protected:
    UINode::NodeList sorted(Column column, bool reversed, std::optional<std::string> query = std::nullopt) {
        return UINode::sortNodes(nodes, column, reversed, query, preferences);
    }
    std::vector<std::string> order(Column column, bool reversed) { return names(sorted(column, reversed)); }

    // Ties in every column, missing values (size, dates and rank 0, no tags,
    // no extension), names in mixed case with numbers.
    UINode::NodeList nodes{
        makeNode(Row{"/x/b/file10.txt", 100, 300, 0, 5, {"red"}, 2, false}),
        makeNode(Row{"/x/a/File2.txt", 0, 0, 10, 5, {}, 0, false}),
        makeNode(Row{"/x/B/file1.pdf", 100, 300, 10, 0, {"Blue"}, 2, false}),
        makeNode(Row{"/x/a/notes", 50, 100, 20, 5, {"blue"}, 1, false}),
    };
    Preferences preferences{""};
};

using Names = std::vector<std::string>;

TEST_F(SortTest, everyColumnOrdersByItsValueAndBreaksTiesByAscendingName) {
    struct Expectation {
        Column column;
        Names forward;
        Names reversed;
    };
    const std::vector<Expectation> expectations{
        {Column::name,
         {"file1.pdf", "File2.txt", "file10.txt", "notes"},
         {"notes", "file10.txt", "File2.txt", "file1.pdf"}},
        {Column::size,
         {"File2.txt", "notes", "file1.pdf", "file10.txt"},
         {"file1.pdf", "file10.txt", "notes", "File2.txt"}},
        {Column::modDate,
         {"File2.txt", "notes", "file1.pdf", "file10.txt"},
         {"file1.pdf", "file10.txt", "notes", "File2.txt"}},
        {Column::created,
         {"file10.txt", "file1.pdf", "File2.txt", "notes"},
         {"notes", "file1.pdf", "File2.txt", "file10.txt"}},
        {Column::lastAccessDate,
         {"file1.pdf", "File2.txt", "file10.txt", "notes"},
         {"File2.txt", "file10.txt", "notes", "file1.pdf"}},
        // "Document" < "PDF document" < "Plain text document", case aside.
        {Column::kind,
         {"notes", "file1.pdf", "File2.txt", "file10.txt"},
         {"File2.txt", "file10.txt", "file1.pdf", "notes"}},
        // Plain text order: "B" before "a" before "b".
        {Column::inside,
         {"file1.pdf", "File2.txt", "notes", "file10.txt"},
         {"file10.txt", "File2.txt", "notes", "file1.pdf"}},
        {Column::path,
         {"file1.pdf", "File2.txt", "notes", "file10.txt"},
         {"file10.txt", "File2.txt", "notes", "file1.pdf"}},
        // No tags first; "Blue" and "blue" tie whatever their case.
        {Column::tags,
         {"File2.txt", "file1.pdf", "notes", "file10.txt"},
         {"file10.txt", "file1.pdf", "notes", "File2.txt"}},
        {Column::rank,
         {"File2.txt", "notes", "file1.pdf", "file10.txt"},
         {"file1.pdf", "file10.txt", "notes", "File2.txt"}},
        // By image rows keep the order they came in.
        {Column::image, names(nodes), names(nodes)},
    };
    for (const auto& expectation : expectations) {
        EXPECT_EQ(order(expectation.column, false), expectation.forward) << identifier(expectation.column);
        EXPECT_EQ(order(expectation.column, true), expectation.reversed) << identifier(expectation.column);
    }
}

TEST_F(SortTest, numbersInNamesCompareByValueAndCaseIsIgnored) {
    nodes = {plain("/d/img100.png"), plain("/d/IMG9.png"), plain("/d/img10.png"), plain("/d/Img1.png"),
             plain("/d/img009b.png")};
    EXPECT_EQ(order(Column::name, false), (Names{"Img1.png", "IMG9.png", "img009b.png", "img10.png", "img100.png"}));
}

TEST_F(SortTest, aPOSIXLocaleStillIgnoresCase) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::Locale previous = icu::Locale::getDefault();
    icu::Locale::setDefault(icu::Locale("en_US_POSIX"), status);
    // Collators are made per thread: a new thread sees the new default.
    Names sortedNames;
    std::thread([&] {
        nodes = {plain("/d/SearchResults.h"), plain("/d/results"), plain("/d/ResultsTable.h")};
        sortedNames = order(Column::name, false);
    }).join();
    icu::Locale::setDefault(previous, status);
    EXPECT_EQ(sortedNames, (Names{"results", "ResultsTable.h", "SearchResults.h"}));
}

// Ties once kept the order the walk's threads delivered the rows in, which
// changes from run to run.
TEST_F(SortTest, equalNamesGoByPathWhateverOrderTheyCameIn) {
    const Names inPathOrder{"/d/Report.txt", "/d/a/x/Report.txt", "/d/b/report.txt", "/d/report.txt"};
    const std::vector<UINode::NodeList> arrivals{
        {plain("/d/report.txt"), plain("/d/b/report.txt"), plain("/d/Report.txt"), plain("/d/a/x/Report.txt")},
        {plain("/d/a/x/Report.txt"), plain("/d/Report.txt"), plain("/d/b/report.txt"), plain("/d/report.txt")}};
    for (const auto& arrival : arrivals) {
        for (Column column : {Column::name, Column::size, Column::kind, Column::tags}) {
            for (bool reversed : {false, true}) {
                Names paths;
                for (const auto& node : UINode::sortNodes(arrival, column, reversed, std::nullopt, preferences)) {
                    paths.push_back(node->fileURL().path());
                }
                EXPECT_EQ(paths, inPathOrder) << identifier(column) << (reversed ? " reversed" : "");
            }
        }
    }
}

TEST_F(SortTest, tagOrderOnDiskDoesNotMatter) {
    nodes = {makeNode(Row{.path = "/d/z.txt", .tags = {"b", "a"}}),
             makeNode(Row{.path = "/d/y.txt", .tags = {"a", "b"}})};
    EXPECT_EQ(order(Column::tags, false), (Names{"y.txt", "z.txt"}));
    EXPECT_EQ(order(Column::tags, true), (Names{"y.txt", "z.txt"}));
}

TEST_F(SortTest, foldersAndItemsStartingWithTheQueryRiseOnlyInTheNameColumnWithAQuery) {
    nodes = {plain("/d/alpha.txt"), plain("/d/budget.txt"), makeNode(Row{.path = "/d/Plain", .isDirectory = true}),
             makeNode(Row{.path = "/d/Budget", .isDirectory = true})};
    const Names scored{"Budget", "Plain", "budget.txt", "alpha.txt"};
    const Names plainOrder{"alpha.txt", "Budget", "budget.txt", "Plain"};
    struct Case {
        bool foldersToTop;
        bool startingWithQueryToTop;
        Column column;
        bool reversed;
        std::optional<std::string> query;
        Names expected;
    };
    for (const Case& c : {Case{true, true, Column::name, false, "bud", scored},
                          Case{true, true, Column::name, true, "bud", Names(scored.rbegin(), scored.rend())},
                          Case{true, true, Column::name, false, "BUD", scored},
                          Case{true, true, Column::name, false, std::nullopt, plainOrder},
                          Case{true, true, Column::size, false, "bud", plainOrder},
                          Case{false, true, Column::name, false, "", plainOrder},
                          Case{false, false, Column::name, false, "bud", plainOrder}}) {
        ASSERT_TRUE(preferences.setValue("moveFoldersToTop", c.foldersToTop).ok());
        ASSERT_TRUE(preferences.setValue("moveItemsStartingWithQueryToTop", c.startingWithQueryToTop).ok());
        EXPECT_EQ(names(sorted(c.column, c.reversed, c.query)), c.expected)
            << identifier(c.column) << " " << c.query.value_or("(none)") << c.foldersToTop << c.startingWithQueryToTop;
    }
}

}  // namespace
}  // namespace quester
