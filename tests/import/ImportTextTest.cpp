#include "import/ImportText.h"

#include <gtest/gtest.h>

#include "testing/TempDir.h"

namespace quester {
namespace {

using testing::TempDir;
using Words = std::vector<std::string>;

TEST(ImportTextTest, WordsAreLoweredTrimmedAndAtMost32Characters) {
    EXPECT_EQ(ImportText::wordsFromText("\"Hello,\" she said\t(twice)..."), (Words{"hello", "she", "said", "twice"}));
    std::string thirtyTwo(32, 'x');
    EXPECT_EQ(ImportText::wordsFromText(thirtyTwo + " " + thirtyTwo + "y"), (Words{thirtyTwo}));
    // Private-use and control characters split; a word keeps inner punctuation.
    EXPECT_EQ(ImportText::wordsFromText("a\xEE\x80\x80"
                                        "b\x01"
                                        "c don't e-mail"),
              (Words{"a", "b", "c", "don't", "e-mail"}));
    // Decomposed Zoë is one word, lowered and composed like the query's words.
    EXPECT_EQ(ImportText::wordsFromText("ZOE\xCC\x88 \xC3\x89T\xC3\x89"), (Words{"zo\xC3\xAB", "\xC3\xA9t\xC3\xA9"}));
    EXPECT_EQ(ImportText::wordsFromText("-- ... !!"), Words{});
}

TEST(ImportTextTest, TextAndOcrOfOnePageCountTheRicherReadingNotTheSum) {
    WordTally tally;
    tally.add(ImportTextPages{{"total total report"}}, ImportTextPages{{"total total total"}});
    tally.add(ImportTextPages{{"report"}}, ImportTextPages{{""}});
    auto counts = tally.takeCounts();
    EXPECT_EQ(counts["total"], 3u);
    EXPECT_EQ(counts["report"], 2u);

    WordTally pieces;
    pieces.add(ImportTextPages{{"alpha beta"}}, std::nullopt);
    pieces.add(ImportTextPages{{"alpha"}}, std::nullopt);
    auto summed = pieces.takeCounts();
    EXPECT_EQ(summed["alpha"], 2u);
    EXPECT_EQ(summed["beta"], 1u);
}

TEST(ImportTextTest, ReaderIsChosenByTypeThenPlainTextThenListedExtension) {
    ImportText importer;
    EXPECT_TRUE(importer.canImportTextFrom("/a/notes.txt", false));
    EXPECT_TRUE(importer.canImportTextFrom("/a/main.rs", false));  // source code is plain text
    EXPECT_TRUE(importer.canImportTextFrom("/a/layout.INDD", false));
    EXPECT_FALSE(importer.canImportTextFrom("/a/movie.mp4", false));
    EXPECT_FALSE(importer.canImportTextFrom("/a/page.webarchive", false));
    EXPECT_FALSE(importer.canImportTextFrom("/a/no-extension", false));
    EXPECT_TRUE(importer.canImportTextFromName("inner/notes.md", false));
    EXPECT_FALSE(importer.canImportTextFromName("inner/sound.mp3", false));
}

TEST(ImportTextTest, UnknownTypeIsReadRawOnlyWhenAllowedOrListed) {
    TempDir dir;
    auto unknown = ReadableFile::open(dir.write("data.qqq", "plain words"));
    ASSERT_TRUE(unknown.ok());
    ImportText importer;
    EXPECT_EQ(importer.importFileText(*unknown, false, INT64_MAX, false), std::nullopt);
    auto allowed = importer.importFileText(*unknown, true, INT64_MAX, false);
    ASSERT_TRUE(allowed.has_value());
    EXPECT_EQ(allowed->allText(false), "plain words");

    auto listed = ReadableFile::open(dir.write("page.indd", "layout words layout"));
    ASSERT_TRUE(listed.ok());
    auto words = importer.wordsInFile(*listed, false);
    EXPECT_EQ(words["layout"], 2u);
    auto empty = ReadableFile::open(dir.write("empty.txt"));
    ASSERT_TRUE(empty.ok());
    EXPECT_EQ(importer.importFileText(*empty, false, INT64_MAX, false), std::nullopt);
}

}  // namespace
}  // namespace quester
