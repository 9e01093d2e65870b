#include <gtest/gtest.h>

#include "platform/KindStrings.h"
#include "platform/UniformTypeTable.h"

namespace quester {
namespace {

class KindStringsTest : public ::testing::Test {
protected:
    KindStrings kinds{UniformTypeTable::shared()};
};

TEST_F(KindStringsTest, KindOfAnExtensionIsItsTypesDescriptionCapitalised) {
    EXPECT_EQ(kinds.kindStringForExtension("pdf"), "PDF document");
    EXPECT_EQ(kinds.kindStringForExtension("PDF"), "PDF document");
    EXPECT_EQ(kinds.kindStringForExtension("vcf"), "VCard");
    EXPECT_EQ(kinds.kindStringForExtension(""), std::nullopt);
    // Asked twice, so the second answer comes from the cache, absent ones too.
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(kinds.kindStringForExtension("xyzzy"), std::nullopt);
        EXPECT_EQ(kinds.kindStringForExtension("Docx"), "Microsoft Word document");
    }
}

TEST_F(KindStringsTest, KindOfAFileFallsBackToDocumentAndOfAFolderToFolder) {
    EXPECT_EQ(kinds.kindStringForFile(Url("/d/Report.PDF"), false), "PDF document");
    EXPECT_EQ(kinds.kindStringForFile(Url("/d/data.xyzzy"), false), "Document");
    EXPECT_EQ(kinds.kindStringForFile(Url("/d/Tool.app", true), false), "Application");
    EXPECT_EQ(kinds.kindStringForFolder("/d/Projects"), "Folder");
    EXPECT_EQ(kinds.kindStringForFolder("/d/odd.zip"), "ZIP archive");
}

TEST_F(KindStringsTest, TheFileManagerKindDescribesTheItemRatherThanItsExtension) {
    const Url zipNamedFolder("/d/odd.zip", true);
    EXPECT_EQ(kinds.kindStringForFile(zipNamedFolder, false), "ZIP archive");
    EXPECT_EQ(kinds.kindStringForFile(zipNamedFolder, true), "Folder");
    EXPECT_EQ(kinds.kindStringForFile(Url("/d/song.mp3"), true), "MP3 audio");
}

}  // namespace
}  // namespace quester
