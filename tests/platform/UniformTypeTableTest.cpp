#include <gtest/gtest.h>

#include <set>
#include <string>

#include "platform/KindStrings.h"
#include "platform/UniformTypeTable.h"

namespace quester {
namespace {

const UniformTypeTable& table() {
    return UniformTypeTable::shared();
}

bool extensionConformsTo(const std::string& extension, const std::string& parent) {
    auto type = table().typeForExtension(extension);
    return type && table().conformsTo(*type, parent);
}

TEST(UniformTypeTable, EveryParentIsDeclaredAndEveryTypeReachesARoot) {
    std::set<std::string> identifiers;
    for (const auto& declaration : table().allDeclarations()) {
        EXPECT_TRUE(identifiers.insert(declaration.identifier).second) << "declared twice: " << declaration.identifier;
        for (const auto& parent : declaration.conformsTo) {
            EXPECT_NE(table().declaration(parent), nullptr) << declaration.identifier << " names " << parent;
        }
        EXPECT_TRUE(table().conformsTo(declaration.identifier, "public.item") ||
                    table().conformsTo(declaration.identifier, "public.content") ||
                    declaration.identifier == "com.apple.resolvable")
            << declaration.identifier << " hangs from nothing";
        for (const auto& extension : declaration.filenameExtensions) {
            EXPECT_EQ(extension.find_first_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ."), std::string::npos) << extension;
        }
    }
}

TEST(UniformTypeTable, ConformanceWalksParentsTransitivelyAndNeverDown) {
    EXPECT_TRUE(table().conformsTo("public.jpeg", "public.image"));
    EXPECT_TRUE(table().conformsTo("public.jpeg", "public.item"));
    EXPECT_TRUE(table().conformsTo("public.python-script", "public.source-code"));
    EXPECT_TRUE(table().conformsTo("public.python-script", "public.text"));
    EXPECT_TRUE(table().conformsTo("org.gnu.gnu-zip-tar-archive", "public.archive"));
    EXPECT_TRUE(table().conformsTo("com.apple.application-bundle", "com.apple.application"));
    EXPECT_TRUE(table().conformsTo("com.apple.application-bundle", "public.directory"));
    EXPECT_TRUE(table().conformsTo("public.symlink", "com.apple.resolvable"));

    EXPECT_FALSE(table().conformsTo("public.image", "public.jpeg"));
    EXPECT_FALSE(table().conformsTo("public.jpeg", "public.text"));
    EXPECT_FALSE(table().conformsTo("public.mpeg-4", "public.video"));
    EXPECT_FALSE(table().conformsTo("public.mp3", "public.movie"));
    EXPECT_FALSE(table().conformsTo("public.folder", "public.data"));
    // Every type conforms to itself, in any case.
    EXPECT_TRUE(table().conformsTo("com.example.unknown", "com.example.unknown"));
    EXPECT_TRUE(table().conformsTo("Public.JPEG", "public.IMAGE"));
}

TEST(UniformTypeTable, OfficeDocumentsAreDocumentsAndNeverArchives) {
    for (const std::string extension : {"docx", "xlsx", "pptx", "odt", "ods", "odp", "epub", "pages"}) {
        EXPECT_TRUE(extensionConformsTo(extension, "public.content")) << extension;
        EXPECT_FALSE(extensionConformsTo(extension, "public.archive")) << extension;
        EXPECT_FALSE(extensionConformsTo(extension, "public.zip-archive")) << extension;
        EXPECT_FALSE(extensionConformsTo(extension, "public.text")) << extension;
    }
    EXPECT_TRUE(extensionConformsTo("docx", "public.composite-content"));
    EXPECT_TRUE(extensionConformsTo("xlsx", "public.spreadsheet"));
    EXPECT_TRUE(extensionConformsTo("pptx", "public.presentation"));
    EXPECT_TRUE(extensionConformsTo("jar", "public.zip-archive"));
}

TEST(UniformTypeTable, MarkupIsTextOfItsOwnKindNotPlainText) {
    for (const char* markup : {"html", "rtf"}) {
        EXPECT_TRUE(extensionConformsTo(markup, "public.text")) << markup;
        EXPECT_FALSE(extensionConformsTo(markup, "public.plain-text")) << markup;
    }
    EXPECT_TRUE(extensionConformsTo("md", "public.plain-text"));
}

// Each extension a desktop search meets, with the broad kind it must fall under.
TEST(UniformTypeTable, CommonExtensionsFallUnderTheirKind) {
    const std::vector<std::pair<std::string, std::vector<std::string>>> kinds = {
        {"public.image", {"jpg", "png", "gif", "tiff", "webp", "heic", "svg", "cr2", "nef", "dng"}},
        {"public.audio", {"mp3", "m4a", "flac", "wav", "ogg", "opus"}},
        {"public.movie", {"mp4", "m4v", "mov", "mkv", "avi", "webm"}},
        {"public.text", {"txt", "md", "html", "xml", "json", "csv", "rtf"}},
        {"public.composite-content", {"pdf", "doc", "docx", "odt", "pages", "epub"}},
        {"public.spreadsheet", {"xls", "xlsx", "ods", "numbers"}},
        {"public.presentation", {"ppt", "pptx", "odp", "key"}},
        {"public.archive", {"zip", "tar", "gz", "tgz", "bz2", "xz", "7z", "rar", "zst", "deb", "rpm"}},
        {"public.disk-image", {"iso", "img", "dmg", "qcow2"}},
        {"public.font", {"ttf", "otf", "woff", "woff2"}},
        {"public.source-code", {"c", "h", "cpp", "py", "js", "ts", "java", "rs", "go", "sh", "sql"}},
        {"public.executable", {"appimage", "run", "exe", "bin"}},
        {"com.apple.application", {"desktop", "appimage", "app"}},
    };
    for (const auto& [kind, extensions] : kinds) {
        for (const auto& extension : extensions) EXPECT_TRUE(extensionConformsTo(extension, kind)) << extension;
    }
    EXPECT_TRUE(extensionConformsTo("so", "public.data"));
    EXPECT_FALSE(extensionConformsTo("so", "public.executable"));
    EXPECT_FALSE(extensionConformsTo("iso", "public.image"));
}

TEST(UniformTypeTable, ExtensionsAreFoundInAnyCaseAndUnknownOnesAreNone) {
    EXPECT_EQ(table().typeForExtension("PDF"), "com.adobe.pdf");
    EXPECT_EQ(table().typeForExtension("AppImage"), "org.appimage.appimage");
    EXPECT_EQ(table().typeForExtension("xyzzy"), std::nullopt);
    EXPECT_EQ(table().typeForExtension(""), std::nullopt);
    EXPECT_EQ(table().typeForExtension(".pdf"), std::nullopt);
}

TEST(UniformTypeTable, TypeOfAnItemComesFromItsNameAlone) {
    EXPECT_EQ(table().typeOfItem("/home/me/Photos", true), "public.folder");
    EXPECT_EQ(table().typeOfItem("/home/me/odd.zip", true), "public.folder");
    EXPECT_EQ(table().typeOfItem("/Applications/Tool.APP", true), "com.apple.application-bundle");
    EXPECT_EQ(table().typeOfItem("/home/me/report.PDF", false), "com.adobe.pdf");
    EXPECT_EQ(table().typeOfItem("/home/me/Tool.app", false), "com.apple.application-bundle");
    EXPECT_EQ(table().typeOfItem("/home/me/data.xyzzy", false), "public.data");
    EXPECT_EQ(table().typeOfItem("/home/me/.bashrc", false), "public.data");
}

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
