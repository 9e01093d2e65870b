#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

#include "BuildFixture.h"
#include "import/ImportTextXPC.h"
#include "platform/FileLock.h"

namespace quester {
namespace {

namespace fs = std::filesystem;
using testing::BuildTest;
using testing::Census;
using testing::namesOnly;

TEST_F(BuildTest, ACacheHoldsOneRecordPerFileAndFolderAndTheCounter) {
    makeTree(3, 4);
    tree.write("top.txt", "t");
    tree.mkdir("empty");
    tree.write("bad:name/inside.txt", "skipped with its folder");
    tree.write("line\nfeed.txt", "skipped");
    ASSERT_TRUE(build());
    Census counted = census();
    EXPECT_EQ(counted.files, 13u);
    EXPECT_EQ(counted.folders, 7u);  // d0..d2, their sub folders, empty
    EXPECT_EQ(counted.records, 13u + 7u + 1u);
    EXPECT_FALSE(counted.duplicateNames);
    EXPECT_TRUE(counted.paths.contains(tree.str() + "/d1/sub/f3.txt"));
    EXPECT_EQ(makeIndex()->documentInfo().numberOfFSItems, 13);
    EXPECT_FALSE(fs::exists(cacheFile() + "-lock"));
}

// The library's own tools read the file as LMDB writes it: one file, no lock file.
TEST_F(BuildTest, LMDBsOwnToolsReadTheCache) {
    makeTree(2, 3);
    ASSERT_TRUE(build());
    std::string command = "mdb_dump -n -p -s SimpleLMDB '" + cacheFile() + "' 2>&1";
    FILE* dump = popen(command.c_str(), "r");
    ASSERT_NE(dump, nullptr);
    std::string text;
    char buffer[4096];
    while (std::size_t read = fread(buffer, 1, sizeof(buffer), dump)) text.append(buffer, read);
    int status = pclose(dump);
    if (WEXITSTATUS(status) == 127) GTEST_SKIP() << "mdb_dump is not installed (lmdb-utils)";
    EXPECT_EQ(WEXITSTATUS(status), 0) << text;
    EXPECT_NE(text.find(" Fprivate.lastAutoID\n"), std::string::npos) << text;
    EXPECT_NE(text.find(" DdocumentInfo\n"), std::string::npos);
    EXPECT_NE(text.find(" C0\n"), std::string::npos);
}

TEST_F(BuildTest, AnUpdateSeesAddedAndRemovedFilesAndFolders) {
    makeTree(3, 2);
    ASSERT_TRUE(build());
    tree.write("d0/sub/new.txt", "n");
    fs::remove(tree.path() / "d1/sub/f0.txt");
    fs::remove_all(tree.path() / "d2");
    ASSERT_TRUE(build());
    Census counted = census();
    EXPECT_TRUE(counted.paths.contains(tree.str() + "/d0/sub/new.txt"));
    EXPECT_FALSE(counted.paths.contains(tree.str() + "/d1/sub/f0.txt"));
    EXPECT_FALSE(counted.paths.contains(tree.str() + "/d2"));
    EXPECT_FALSE(counted.paths.contains(tree.str() + "/d2/sub/f1.txt"));
    EXPECT_EQ(counted.files, 4u);
    EXPECT_EQ(counted.folders, 4u);
    EXPECT_EQ(makeIndex()->documentInfo().numberOfFSItems, 4);
}

TEST_F(BuildTest, AFileEditedInPlaceInAnUnchangedFolderKeepsItsOldRecord) {
    fs::path file = tree.write("docs/report.txt", "short");
    auto folderTime = fs::last_write_time(tree.path() / "docs");
    ASSERT_TRUE(build());
    tree.write("docs/report.txt", "a much longer text than before");
    fs::last_write_time(file, fs::last_write_time(file) + std::chrono::hours(2));
    fs::last_write_time(tree.path() / "docs", folderTime);
    ASSERT_TRUE(build());
    auto index = makeIndex();
    ASSERT_TRUE(index->open());
    std::optional<FSItem> record = *index->findItem(file.string());
    ASSERT_TRUE(record);
    EXPECT_EQ(record->size, 5);
    ASSERT_TRUE(index->close());
}

TEST_F(BuildTest, ATargetOnAnotherDiskThanRecordedIsOffLineAndLeftAlone) {
    makeTree(1, 3);
    ASSERT_TRUE(build());
    {
        auto index = makeIndex();
        index->mutableDocumentInfo().diskKey = "unplugged 1000 ext4";
        ASSERT_TRUE(index->saveDocumentInfo());
    }
    fs::remove_all(tree.path() / "d0");
    auto index = makeIndex();
    Status refused = ContentIndexBuild::build(*index, namesOnly());
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().code, ErrorCode::notFound);
    EXPECT_FALSE(ContentIndexBuild::isTargetMounted(*index));
    EXPECT_EQ(census().files, 3u);
}

TEST_F(BuildTest, ARebuildStartsFromNothingAndACancelStopsEarly) {
    makeTree(4, 5);
    ASSERT_TRUE(build());
    {
        auto index = makeIndex();
        index->mutableDocumentInfo().isDirty = true;
        ASSERT_TRUE(index->saveDocumentInfo());
    }
    ASSERT_TRUE(build());
    EXPECT_EQ(census().records, 20u + 8u + 1u);
    auto index = makeIndex();
    index->mutableDocumentInfo().isDirty = true;
    ContentIndexBuild::Options options = namesOnly();
    options.pauseReason = [&]() {
        index->shouldCancel = true;
        return std::optional<std::string>();
    };
    Status cancelled = ContentIndexBuild::build(*index, options);
    ASSERT_FALSE(cancelled);
    EXPECT_EQ(cancelled.error().code, ErrorCode::cancelled);
    EXPECT_EQ(census().records, 0u);
}

TEST_F(BuildTest, ASecondWriterIsTurnedAway) {
    makeTree(1, 1);
    auto acquired = FileLock::tryAcquire(makeIndex()->writerLockPath());
    ASSERT_TRUE(acquired);
    std::optional<FileLock> held(std::move(*acquired));
    Status refused = build();
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().code, ErrorCode::permissionDenied);
    held.reset();
    EXPECT_TRUE(build());
}

}  // namespace
}  // namespace quester
