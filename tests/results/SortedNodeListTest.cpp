#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "results/LocalizedCollation.h"
#include "results/SortedNodeList.h"
#include "stores/Preferences.h"

namespace quester {
namespace {

// Rows with many ties: few names (in two cases, which the name order ignores)
// spread over folders, and few sizes.
UINode::NodeList rowsWithTies(std::size_t count) {
    std::mt19937 random(11);
    const std::vector<std::string> names{"budget.txt", "Budget.txt", "plan2.txt", "plan10.txt", "a", "notes"};
    UINode::NodeList rows;
    for (std::size_t i = 0; i < count; ++i) {
        SearchResult result;
        result.url = Url("/d" + std::to_string(i) + "/" + names[random() % names.size()]);
        result.size = random() % 3;
        rows.push_back(UINode::create(result));
    }
    return rows;
}

// The order spelled out: a sort of all rows by the column's value in its
// direction, then by ascending names, then by ascending paths, comparing one
// row with another.
UINode::NodeList obviouslySorted(UINode::NodeList rows, Column column, bool reversed) {
    std::sort(rows.begin(), rows.end(), [&](const UINodePtr& a, const UINodePtr& b) {
        const int names = LocalizedCollation::localizedStandardCompare(a->displayName(), b->displayName());
        const bool byPath = a->fileURL().path() < b->fileURL().path();
        if (column == Column::name) return names != 0 ? (reversed ? names > 0 : names < 0) : byPath;
        const auto sizeA = a->dynamic().totalSize;
        const auto sizeB = b->dynamic().totalSize;
        if (sizeA != sizeB) return reversed ? sizeA > sizeB : sizeA < sizeB;
        return names != 0 ? names < 0 : byPath;
    });
    return rows;
}

struct Case {
    Column column;
    bool reversed;
};

class SortedNodeListTest : public ::testing::TestWithParam<Case> {
protected:
    Preferences preferences{""};
};

TEST_P(SortedNodeListTest, batchesMergedOneByOneGiveTheOrderOfOneStableSortOfAll) {
    const auto [column, reversed] = GetParam();
    const UINode::NodeList rows = rowsWithTies(300);
    SortedNodeList list(column, reversed, std::nullopt, preferences);
    // Batches of uneven sizes, an empty one among them.
    std::size_t start = 0;
    for (std::size_t size : {1u, 0u, 7u, 50u, 2u, 240u}) {
        list.merge(
            UINode::NodeList(rows.begin() + static_cast<long>(start), rows.begin() + static_cast<long>(start + size)));
        start += size;
    }
    ASSERT_EQ(start, rows.size());
    EXPECT_EQ(list.nodes(), obviouslySorted(rows, column, reversed));
}

INSTANTIATE_TEST_SUITE_P(Columns, SortedNodeListTest,
                         ::testing::Values(Case{Column::name, false}, Case{Column::name, true},
                                           Case{Column::size, false}, Case{Column::size, true}),
                         [](const ::testing::TestParamInfo<Case>& info) {
                             return std::string(identifier(info.param.column)) +
                                    (info.param.reversed ? "Reversed" : "");
                         });

// A batch this large makes its keys on two threads; the order must be the
// one that small batches, made on one, give.
TEST(SortedNodeList, aLargeBatchSortsLikeTheSameRowsInSmallBatches) {
    const Preferences preferences{""};
    const UINode::NodeList rows = rowsWithTies(9000);
    SortedNodeList whole(Column::name, false, std::nullopt, preferences);
    whole.merge(rows);
    SortedNodeList pieces(Column::name, false, std::nullopt, preferences);
    for (std::size_t start = 0; start < rows.size(); start += 1000) {
        pieces.merge(
            UINode::NodeList(rows.begin() + static_cast<long>(start), rows.begin() + static_cast<long>(start + 1000)));
    }
    EXPECT_EQ(whole.nodes(), pieces.nodes());
}

// Keys are kept in blocks of a megabyte; keys in the next block, and one
// longer than a block, must still compare by their whole text.
TEST(SortedNodeList, keysBeyondOneTextBlockKeepTheirOrder) {
    const Preferences preferences{""};
    UINode::NodeList rows = rowsWithTies(40000);
    SearchResult longName;
    longName.url = Url("/e/" + std::string(1500000, 'b') + "x");
    rows.push_back(UINode::create(longName));
    longName.url = Url("/e/" + std::string(1500000, 'b'));
    rows.push_back(UINode::create(longName));
    SortedNodeList list(Column::path, false, std::nullopt, preferences);
    for (std::size_t start = 0; start < rows.size(); start += 4000) {
        const std::size_t end = std::min(rows.size(), start + 4000);
        list.merge(UINode::NodeList(rows.begin() + static_cast<long>(start), rows.begin() + static_cast<long>(end)));
    }
    const UINode::NodeList sorted = list.nodes();
    EXPECT_TRUE(std::is_sorted(sorted.begin(), sorted.end(), [](const UINodePtr& a, const UINodePtr& b) {
        return a->displayPath() < b->displayPath();
    }));
    // The two long names share their folder and go by name.
    ASSERT_EQ(sorted.size(), rows.size());
    EXPECT_EQ(sorted[sorted.size() - 2], rows[rows.size() - 1]);
    EXPECT_EQ(sorted.back(), rows[rows.size() - 2]);
}

TEST(SortedNodeList, byImageRowsStayInTheOrderTheyCame) {
    const Preferences preferences{""};
    const UINode::NodeList rows = rowsWithTies(20);
    SortedNodeList list(Column::image, false, std::nullopt, preferences);
    list.merge(UINode::NodeList(rows.begin(), rows.begin() + 5));
    list.merge(UINode::NodeList(rows.begin() + 5, rows.end()));
    EXPECT_EQ(list.nodes(), rows);
}

}  // namespace
}  // namespace quester
