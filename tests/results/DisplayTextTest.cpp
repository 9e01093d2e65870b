#include <gtest/gtest.h>

#include "results/Column.h"
#include "results/DisplayText.h"

namespace quester {
namespace {

TEST(DisplayText, byteCountsInDecimalUnits) {
    EXPECT_EQ(displaySizeText(0), "--");
    EXPECT_EQ(fileSizeText(1), "1 byte");
    EXPECT_EQ(fileSizeText(999), "999 bytes");
    EXPECT_EQ(fileSizeText(1499), "1 KB");
    EXPECT_EQ(fileSizeText(1234567), "1.2 MB");
    EXPECT_EQ(fileSizeText(3456789012), "3.46 GB");
    EXPECT_EQ(fileSizeText(2000000000000), "2 TB");
}

TEST(DisplayText, nameWithoutExtension) {
    EXPECT_EQ(nameWithoutExtension("/a/Show.S01E02.mkv"), "Show.S01E02");
    EXPECT_EQ(nameWithoutExtension("/a/.profile"), ".profile");
    EXPECT_EQ(nameWithoutExtension("/a/plain"), "plain");
}

TEST(ColumnTest, identifiersRoundTripAndRankHasItsOwnPreferenceSpelling) {
    for (Column column : allColumns()) EXPECT_EQ(columnFromIdentifier(identifier(column)), column);
    EXPECT_EQ(columnFromIdentifier("Name"), std::nullopt);
    EXPECT_EQ(visibilityPreference(Column::rank), "rankInVisible");
}

}  // namespace
}  // namespace quester
