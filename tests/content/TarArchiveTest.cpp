#include "content/TarArchive.h"

#include <gtest/gtest.h>
#include <sys/xattr.h>

#include <string>
#include <vector>

#include "content/TarWriter.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using testing::TarWriter;
using ExtractError = TarArchive::ExtractError;
using Category = FoundItem::Category;

std::vector<std::string> pathsOf(std::string_view data) {
    std::vector<std::string> paths;
    for (const auto& entry : TarArchive::parseBlocks(data)) paths.push_back(entry.path);
    return paths;
}

TEST(TarArchiveTest, LoneZeroBlockIsPassedOverButTwoEndTheArchive) {
    TarWriter writer;
    writer.add("a.txt", "alpha").zeroBlock().add("b.txt", "beta").zeroBlock().zeroBlock().add("c.txt", "gamma");
    EXPECT_EQ(pathsOf(writer.contents()), (std::vector<std::string>{"a.txt", "b.txt"}));
}

TEST(TarArchiveTest, GnuLongNameIsCutTo8192BytesAndNamesOnlyTheNextEntry) {
    const std::string longName(10'000, 'n');
    TarWriter writer;
    writer.add("././@LongLink", longName, 'L').add("short", "x").add("after", "y");
    const auto entries = TarArchive::parseBlocks(writer.finish());
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].path, std::string(8'192, 'n'));
    EXPECT_EQ(entries[1].path, "after");
}

TEST(TarArchiveTest, BaseTwoFiftySixSizeIsReadAndPlacesTheNextHeader) {
    const std::string content(700, 'z');
    TarWriter writer;
    writer.add({.name = "big.bin", .content = content, .sizeField = TarWriter::base256(content.size())});
    writer.add("next.txt", "n");
    const std::string bytes = writer.finish();  // the archive reads these bytes in place
    const TarArchive archive(bytes);
    ASSERT_EQ(archive.entries().size(), 2u);
    EXPECT_EQ(archive.entries()[0].size, 700u);
    EXPECT_EQ(archive.entries()[1].path, "next.txt");
    EXPECT_EQ(archive.contents(archive.entries()[0]).bytes, content);
}

TEST(TarArchiveTest, OctalPassesOverZerosAndBlanksAndRefusesOtherBytesAndOverflow) {
    EXPECT_EQ(TarArchive::octal(std::string_view(" 0000644\0 ", 10)), 0644);
    EXPECT_EQ(TarArchive::octal(std::string(12, '\0')), 0);
    EXPECT_EQ(TarArchive::octal("00000000009x"), std::nullopt);
    EXPECT_EQ(TarArchive::octal("7777777777777777777777"), std::nullopt);
    std::string hugeBase256(12, '\xFF');
    EXPECT_EQ(TarArchive::octal(hugeBase256), std::nullopt);
}

TEST(TarArchiveTest, PaxPathReplacesTheNextNameAndARecordWithoutPathLeavesIt) {
    TarWriter writer;
    writer.pax(TarWriter::paxRecord("mtime", "1") + TarWriter::paxRecord("path", "long/named.txt"));
    writer.add("short.txt", "a").add("own.txt", "b");
    writer.pax(TarWriter::paxRecord("mtime", "2")).add("kept.txt", "c");
    EXPECT_EQ(pathsOf(writer.finish()), (std::vector<std::string>{"long/named.txt", "own.txt", "kept.txt"}));
}

TEST(TarArchiveTest, PaxParseStopsAtAMalformedRecord) {
    const std::string good = TarWriter::paxRecord("path", "first");
    EXPECT_EQ(TarArchive::paxPath(good + "99 path=second\n"), "first");
    EXPECT_EQ(TarArchive::paxPath("x path=a\n"), std::nullopt);
    EXPECT_EQ(TarArchive::paxPath(good + TarWriter::paxRecord("path", "second")), "second");
}

TEST(TarArchiveTest, UstarPrefixIsJoinedOnlyUnderThePosixMagic) {
    TarWriter posix;
    posix.add({.name = "file.txt", .content = "a", .prefix = "deep/folder"});
    EXPECT_EQ(pathsOf(posix.finish()), std::vector<std::string>{"deep/folder/file.txt"});
    std::string gnu = posix.finish();
    gnu.replace(257, 8, std::string_view("ustar  \0", 8));
    EXPECT_EQ(pathsOf(gnu), std::vector<std::string>{"file.txt"});
}

TEST(TarArchiveTest, CategoriesComeFromTypeAndTrailingSlash) {
    TarWriter writer;
    writer.add("dir", "", '5').add("slashed/", "").add("link", "", '2').add("file", "");
    std::vector<Category> categories;
    for (const auto& entry : TarArchive::parseBlocks(writer.finish())) categories.push_back(entry.category);
    EXPECT_EQ(categories,
              (std::vector<Category>{Category::directory, Category::directory, Category::link, Category::file}));
}

TEST(TarArchiveTest, NamesAreRepairedUTF8) {
    TarWriter writer;
    writer.add("bad\xFFname", "x");
    EXPECT_EQ(pathsOf(writer.finish()), std::vector<std::string>{"bad\uFFFDname"});
}

TEST(TarArchiveTest, TruncatedArchiveKeepsTheEntriesBefore) {
    TarWriter writer;
    writer.add("a.txt", std::string(600, 'a')).add("b.txt", std::string(600, 'b'));
    const std::string whole = writer.finish();
    const std::size_t secondHeader = 512 + 1024;
    EXPECT_EQ(pathsOf(whole.substr(0, secondHeader + 100)), std::vector<std::string>{"a.txt"});
    const TarArchive cutInData(whole.substr(0, secondHeader + 700));
    ASSERT_EQ(cutInData.entries().size(), 2u);
    EXPECT_EQ(cutInData.contents(cutInData.entries()[1]).error, ExtractError::corrupt);
    std::string badSize = whole;
    badSize.replace(secondHeader + 124, 3, "9x9");
    EXPECT_EQ(pathsOf(badSize), std::vector<std::string>{"a.txt"});
}

TEST(TarArchiveTest, SidecarPathLiesBesideTheEntry) {
    EXPECT_EQ(TarArchive::sidecarPath("folder/name.txt"), "folder/._name.txt");
    EXPECT_EQ(TarArchive::sidecarPath("name.txt"), "._name.txt");
    EXPECT_EQ(TarArchive::sidecarPath("folder/"), std::nullopt);
    EXPECT_EQ(TarArchive::sidecarPath("folder/._name.txt"), std::nullopt);
}

class TarExtractTest : public ::testing::Test {
protected:
    std::string archiveOf(const TarWriter& writer) const { return temp.write("archive.tar", writer.finish()).string(); }
    std::string target() const { return (temp.path() / "out.bin").string(); }

    testing::TempDir temp;
};

TEST_F(TarExtractTest, WritesTheEntryAndReportsStartAndEnd) {
    TarWriter writer;
    const std::string content(600'000, 'c');
    writer.add("docs/", "", '5').add("docs/a.txt", content);
    std::vector<float> reports;
    const ContentProgress progress{[&](float percent) { reports.push_back(percent); }, {}};
    EXPECT_EQ(TarArchive::extract(archiveOf(writer), "docs/a.txt", target(), progress), std::nullopt);
    EXPECT_EQ(testing::readFile(target()), content);
    EXPECT_EQ(reports, (std::vector<float>{0, 100}));
}

TEST_F(TarExtractTest, WalkOverTheFileListsWhatTheWalkOverMemoryLists) {
    TarWriter writer;
    writer.add("././@LongLink", std::string(9'000, 'l'), 'L').add("x", std::string(1'000, 'x'));
    writer.pax(TarWriter::paxRecord("path", "pax/named")).add("y", "").zeroBlock().add("z/", "", '5');
    const std::string whole = writer.finish();
    for (const std::size_t length : {whole.size(), std::size_t{512} * 25, std::size_t{512} * 26 + 7}) {
        const std::string path = temp.write("walk.tar", whole.substr(0, length)).string();
        auto file = ReadableFile::open(path);
        ASSERT_TRUE(file);
        const auto fromFile = TarArchive::parseFile(*file);
        const auto fromMemory = TarArchive::parseBlocks(whole.substr(0, length));
        ASSERT_EQ(fromFile.size(), fromMemory.size()) << length;
        for (std::size_t index = 0; index < fromFile.size(); ++index) {
            EXPECT_EQ(fromFile[index].path, fromMemory[index].path);
            EXPECT_EQ(fromFile[index].dataOffset, fromMemory[index].dataOffset);
        }
    }
}

TEST_F(TarExtractTest, ErrorsComeInOrder) {
    TarWriter writer;
    writer.add({.name = "huge", .content = "", .sizeField = TarWriter::base256(2'000'000'001)});
    const std::string huge = archiveOf(writer);
    const ContentProgress cancelled{{}, [] { return true; }};
    EXPECT_EQ(TarArchive::extract(huge, "huge", target(), cancelled), ExtractError::cancelled);
    EXPECT_EQ(TarArchive::extract((temp.path() / "missing.tar").string(), "huge", target()), ExtractError::corrupt);
    EXPECT_EQ(TarArchive::extract(huge, "other", target()), ExtractError::notFound);
    EXPECT_EQ(TarArchive::extract(huge, "huge", target()), ExtractError::tooLarge);

    TarWriter exact;
    exact.add({.name = "limit", .content = "", .sizeField = TarWriter::base256(2'000'000'000)});
    EXPECT_EQ(TarArchive::extract(archiveOf(exact), "limit", target()), ExtractError::corrupt);
    EXPECT_FALSE(std::filesystem::exists(target()));
}

TEST_F(TarExtractTest, TargetInAMissingFolderIsUnwritable) {
    TarWriter writer;
    writer.add("a.txt", "alpha");
    const std::string into = (temp.path() / "no such folder" / "a.txt").string();
    EXPECT_EQ(TarArchive::extract(archiveOf(writer), "a.txt", into), ExtractError::unwritable);
}

TEST_F(TarExtractTest, SidecarMetadataIsRestoredAsExtendedAttributes) {
    std::string sidecar(26, '\0');
    sidecar.replace(0, 4, "\x00\x05\x16\x07", 4);
    sidecar[25] = 1;
    sidecar += std::string("\x00\x00\x00\x09\x00\x00\x00\x26\x00\x00\x00\x04", 12);
    sidecar += "INFO";
    TarWriter writer;
    writer.add("dir/a.txt", "alpha").add("dir/._a.txt", sidecar);
    ASSERT_EQ(TarArchive::extract(archiveOf(writer), "dir/a.txt", target()), std::nullopt);
    char value[16] = {};
    const ssize_t length = ::getxattr(target().c_str(), "user.com.apple.FinderInfo", value, sizeof value);
    if (length < 0 && errno == ENOTSUP) GTEST_SKIP() << "no user extended attributes in the temp folder";
    EXPECT_EQ(std::string(value, static_cast<std::size_t>(std::max<ssize_t>(length, 0))), "INFO");
}

}  // namespace
}  // namespace quester
