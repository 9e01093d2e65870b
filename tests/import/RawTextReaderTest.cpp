#include "import/RawTextReader.h"

#include <gtest/gtest.h>

#include "import/ImportText.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using testing::TempDir;

ImportTextPages readPages(const std::string& path) {
    auto file = ReadableFile::open(path);
    EXPECT_TRUE(file.ok()) << path;
    ImportTextPages pages;
    RawTextReader::importText(
        ImportContext{*file, INT64_MAX, false, {}, {}, [&](std::optional<ImportTextPages> text, auto) {
                          for (auto& page : text.value_or(ImportTextPages{})) {
                              pages.push_back(std::move(page));
                          }
                          return true;
                      }});
    return pages;
}

TEST(RawTextReaderTest, CharacterAcrossThePieceBoundaryArrivesWholeInTheSecondPiece) {
    TempDir dir;
    std::string bytes(RawTextReader::pieceSize - 1, 'a');
    bytes += "\xE2\x82\xAC tail";  // the euro sign starts one byte before the boundary
    auto pages = readPages(dir.write("big.txt", bytes));
    ASSERT_EQ(pages.size(), 2u);
    EXPECT_EQ(pages[0].text.size(), RawTextReader::pieceSize - 1);
    EXPECT_EQ(pages[1].text, "\xE2\x82\xAC tail");
}

TEST(RawTextReaderTest, BytesThatAreNotUTF8AreReadAsMacRoman) {
    TempDir dir;
    // 0x8E is "é" and 0xA5 "•" in Mac Roman; neither is valid UTF-8 here.
    auto pages = readPages(dir.write("old.txt", "caf\x8E \xA5 list"));
    ASSERT_EQ(pages.size(), 1u);
    EXPECT_EQ(pages[0].text, "caf\xC3\xA9 \xE2\x80\xA2 list");
    // A file cut inside a UTF-8 character keeps the text before; the unfinished
    // bytes come last, as Mac Roman.
    auto cut = readPages(dir.write("cut.txt", "ok \xE2\x82"));
    ASSERT_EQ(cut.size(), 2u);
    EXPECT_EQ(cut[0].text, "ok ");
    EXPECT_EQ(cut[1].text, "\xE2\x80\x9A\xC3\x87");  // "‚Ç"
    EXPECT_EQ(readPages(dir.write("empty.txt")).size(), 0u);
}

TEST(RawTextReaderTest, TrimIncompleteSuffixCutsOnlyAnUnfinishedSequence) {
    std::string twoOfThree = "ab\xE2\x82";
    EXPECT_EQ(RawTextReader::trimIncompleteUTF8Suffix(twoOfThree), "\xE2\x82");
    EXPECT_EQ(twoOfThree, "ab");
    std::string whole = "ab\xE2\x82\xAC";
    EXPECT_EQ(RawTextReader::trimIncompleteUTF8Suffix(whole), "");
    EXPECT_EQ(whole, "ab\xE2\x82\xAC");
    std::string leadOfFour = "x\xF0\x9F\x98";
    EXPECT_EQ(RawTextReader::trimIncompleteUTF8Suffix(leadOfFour), "\xF0\x9F\x98");
    std::string continuations = "x\x80\x80\x80\x80";
    EXPECT_EQ(RawTextReader::trimIncompleteUTF8Suffix(continuations), "");
}

TEST(RawTextReaderTest, StopsWhenTheCallerSaysSo) {
    TempDir dir;
    std::string bytes(RawTextReader::pieceSize + 10, 'b');
    auto file = ReadableFile::open(dir.write("two-pieces.txt", bytes));
    ASSERT_TRUE(file.ok());
    int calls = 0;
    RawTextReader::importText(ImportContext{*file, INT64_MAX, false, {}, {}, [&](auto, auto) {
                                                ++calls;
                                                return false;
                                            }});
    EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace quester
