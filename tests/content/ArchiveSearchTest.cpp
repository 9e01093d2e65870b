#include <gtest/gtest.h>
#include <sys/xattr.h>

#include <string>
#include <vector>

#include "content/ContentSearchers.h"
#include "content/TarContentSearcher.h"
#include "content/TarWriter.h"
#include "content/ZipContentSearcher.h"
#include "import/ZipArchive.h"
#include "import/ZipWriter.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using testing::TarWriter;
using testing::ZipWriter;
using Category = FoundItem::Category;

std::vector<std::string> titlesOf(const std::vector<FoundItem>& items) {
    std::vector<std::string> titles;
    titles.reserve(items.size());
    for (const auto& item : items) titles.push_back(item.title);
    return titles;
}

class ArchiveSearchTest : public ::testing::Test {
protected:
    std::string zipOf(std::initializer_list<const char*> names) const {
        ZipWriter writer;
        for (const char* name : names) writer.add(name, std::string("content of ") + name);
        return temp.write("archive.zip", writer.finish()).string();
    }
    std::vector<std::string> zipTitles(const std::string& path, const std::vector<std::string>& words,
                                       bool allWords = false, bool caseSensitive = false) const {
        return titlesOf(zip.search(path, words, allWords, caseSensitive, ContentProgress::none()));
    }

    testing::TempDir temp;
    ZipContentSearcher zip;
    TarContentSearcher tar;
};

TEST_F(ArchiveSearchTest, SearchersAreChosenByTypeAndExtension) {
    EXPECT_EQ(ContentSearchers::searcher("/x/a.ZIP"), ContentSearchers::all()[0]);
    EXPECT_EQ(ContentSearchers::searcher("/x/a.jar"), ContentSearchers::all()[0]);
    EXPECT_EQ(ContentSearchers::searcher("/x/a.tar"), ContentSearchers::all()[1]);
    EXPECT_EQ(ContentSearchers::searcher("/x/report.docx"), nullptr);
    EXPECT_EQ(ContentSearchers::searcher("/x/a.tar.gz"), nullptr);
}

TEST_F(ArchiveSearchTest, DiacriticsAndCaseAreIgnoredUnlessCaseSensitive) {
    const std::string path = zipOf({"docs/Café.txt", "other.txt"});
    EXPECT_EQ(zipTitles(path, {"cafe"}), std::vector<std::string>{"Café.txt"});
    EXPECT_EQ(zipTitles(path, {"CAFÉ"}), std::vector<std::string>{"Café.txt"});
    EXPECT_TRUE(zipTitles(path, {"cafe"}, false, true).empty());
    EXPECT_TRUE(zipTitles(path, {"café"}, false, true).empty());
    EXPECT_EQ(zipTitles(path, {"Café"}, false, true), std::vector<std::string>{"Café.txt"});
}

TEST_F(ArchiveSearchTest, OnlyTheLastComponentIsMatchedAndSidecarsArePassedOver) {
    const std::string path =
        zipOf({"report/", "report/notes.txt", "__MACOSX/report/._notes.txt", "__MACOSX/report.txt", "._report"});
    EXPECT_EQ(zipTitles(path, {"report"}), std::vector<std::string>{"report"});
    EXPECT_EQ(zipTitles(path, {"notes"}), std::vector<std::string>{"notes.txt"});
}

TEST_F(ArchiveSearchTest, AllWordsMustMeetInTheNameAndEmptyWordsAreDropped) {
    const std::string path = zipOf({"red apple.txt", "red pear.txt", "green apple.txt"});
    EXPECT_EQ(zipTitles(path, {"red", "apple"}, true), std::vector<std::string>{"red apple.txt"});
    EXPECT_EQ(zipTitles(path, {"red", "apple"}).size(), 3u);
    EXPECT_EQ(zipTitles(path, {"", "pear"}, true), std::vector<std::string>{"red pear.txt"});
    EXPECT_TRUE(zipTitles(path, {""}).empty());
}

TEST_F(ArchiveSearchTest, ZipHitCarriesTheEntryFacts) {
    ZipWriter writer;
    writer.add({.path = "dir/Sub/", .content = "", .externalAttributes = 0x41ED0000u});
    writer.add({.path = "dir/link", .content = "target", .externalAttributes = 0xA1FF0000u});
    writer.add({.path = "dir/big.bin", .content = "", .uncompressedSize = 0xFFFFFFFF});
    writer.add({.path = "dir/match.txt", .content = "twelve bytes", .dosTime = 0x6000, .dosDate = 0x5A21});
    const std::string path = temp.write("facts.zip", writer.finish()).string();
    const auto items = zip.search(path, {"sub", "link", "big", "match"}, false, false, ContentProgress::none());
    ASSERT_EQ(items.size(), 4u);
    EXPECT_EQ(items[0].type, Category::directory);
    EXPECT_EQ(items[0].title, "Sub");
    EXPECT_EQ(items[1].type, Category::link);
    EXPECT_EQ(items[2].size, 0u);
    const FoundItem& match = items[3];
    EXPECT_EQ(match.type, Category::file);
    EXPECT_EQ(match.location, "dir/match.txt");
    EXPECT_EQ(match.entry, "");
    EXPECT_EQ(match.size, 12u);
    EXPECT_EQ(match.crc32, ZipWriter::crcOf("twelve bytes"));
    EXPECT_EQ(match.modified, ZipArchive::dosDateToUnix(0x5A21, 0x6000));
}

TEST_F(ArchiveSearchTest, CancelIsAskedBeforeTheFirstEntry) {
    const std::string path = zipOf({"a.txt"});
    int asked = 0;
    const ContentProgress progress{{}, [&] { return ++asked > 0; }};
    EXPECT_TRUE(zip.search(path, {"a"}, false, false, progress).empty());
    EXPECT_EQ(asked, 1);
}

TEST_F(ArchiveSearchTest, UnreadableOrDamagedArchivesGiveNothing) {
    EXPECT_TRUE(zipTitles((temp.path() / "missing.zip").string(), {"a"}).empty());
    EXPECT_TRUE(zipTitles(temp.write("junk.zip", std::string(5000, 'j')).string(), {"j"}).empty());
}

TEST_F(ArchiveSearchTest, TarSearchPassesOverSidecarsButNotTheMacOSXFolder) {
    TarWriter writer;
    writer.add("__MACOSX/plan.txt", "1234").add("dir/._plan.txt", "x").add("dir/plan.txt", "abc");
    const std::string path = temp.write("a.tar", writer.finish()).string();
    const auto items = tar.search(path, {"PLAN"}, false, false, ContentProgress::none());
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(items[0].location, "__MACOSX/plan.txt");
    EXPECT_EQ(items[0].size, 4u);
    EXPECT_EQ(items[1].location, "dir/plan.txt");
    EXPECT_EQ(items[1].modified, 1'700'000'000);
    EXPECT_EQ(items[1].crc32, std::nullopt);
}

TEST_F(ArchiveSearchTest, TruncatedTarStillFindsTheEntriesBefore) {
    TarWriter writer;
    writer.add("first.txt", std::string(2000, 'a')).add("second.txt", "b");
    const std::string whole = writer.finish();
    const std::string path = temp.write("cut.tar", whole.substr(0, 512 * 5 + 10)).string();
    EXPECT_EQ(titlesOf(tar.search(path, {"txt"}, false, false, ContentProgress::none())),
              std::vector<std::string>{"first.txt"});
}

TEST(ZipSidecarTest, SidecarLivesInTheMacOSXFolder) {
    EXPECT_EQ(ZipContentSearcher::sidecarPath("a/b.txt"), "__MACOSX/a/._b.txt");
    EXPECT_EQ(ZipContentSearcher::sidecarPath("b.txt"), "__MACOSX/._b.txt");
    EXPECT_EQ(ZipContentSearcher::sidecarPath("a/"), std::nullopt);
    EXPECT_EQ(ZipContentSearcher::sidecarPath("__MACOSX/a/._b.txt"), std::nullopt);
}

class ZipExtractTest : public ArchiveSearchTest {
protected:
    std::string target() const { return (temp.path() / "out.bin").string(); }
};

TEST_F(ZipExtractTest, WritesTheEntryAndRestoresItsSidecar) {
    std::string sidecar(26, '\0');
    sidecar.replace(0, 4, "\x00\x05\x16\x07", 4);
    sidecar[25] = 2;
    sidecar += std::string("\x00\x00\x00\x02\x00\x00\x00\x32\x00\x00\x00\x04", 12);
    sidecar += std::string("\x00\x00\x00\x09\x00\x00\x00\x32\x00\x00\x01\x00", 12);
    sidecar += "FORK";
    ZipWriter writer;
    writer.add("a/b.txt", std::string(100'000, 'q'));
    writer.add("__MACOSX/a/._b.txt", sidecar);
    const std::string path = temp.write("meta.zip", writer.finish()).string();
    ASSERT_EQ(ZipContentSearcher::extract(path, "a/b.txt", target()), std::nullopt);
    EXPECT_EQ(testing::readFile(target()), std::string(100'000, 'q'));
    char value[16] = {};
    const ssize_t length = ::getxattr(target().c_str(), "user.com.apple.ResourceFork", value, sizeof value);
    if (length < 0 && errno == ENOTSUP) GTEST_SKIP() << "no user extended attributes in the temp folder";
    EXPECT_EQ(std::string(value, static_cast<std::size_t>(std::max<ssize_t>(length, 0))), "FORK");
    EXPECT_LT(::getxattr(target().c_str(), "user.com.apple.FinderInfo", value, sizeof value), 0);
}

TEST_F(ZipExtractTest, ErrorsComeInOrderAndLeaveNoTarget) {
    ZipWriter writer;
    writer.add({.path = "bad.txt", .content = "stored", .deflate = false, .crc = 1});
    const std::string path = temp.write("bad.zip", writer.finish()).string();
    using Error = ZipContentSearcher::ExtractError;
    EXPECT_EQ(ZipContentSearcher::extract((temp.path() / "none.zip").string(), "bad.txt", target()), Error::corrupt);
    EXPECT_EQ(ZipContentSearcher::extract(path, "missing", target()), Error::notFound);
    EXPECT_EQ(ZipContentSearcher::extract(path, "bad.txt", target()), Error::corrupt);
    EXPECT_FALSE(std::filesystem::exists(target()));
    const ContentProgress cancelled{{}, [] { return true; }};
    EXPECT_EQ(ZipContentSearcher::extract(path, "bad.txt", target(), cancelled), Error::cancelled);
    const std::string into = (temp.path() / "no folder" / "out").string();
    ZipWriter good;
    good.add("ok.txt", "fine");
    EXPECT_EQ(ZipContentSearcher::extract(temp.write("good.zip", good.finish()).string(), "ok.txt", into),
              Error::unwritable);
}

}  // namespace
}  // namespace quester
