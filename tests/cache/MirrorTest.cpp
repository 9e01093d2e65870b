#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

#include "cache/CacheMirror.h"
#include "cache/ContentIndex.h"
#include "cache/ContentIndexBuild.h"
#include "platform/FaultInjectingFileSystem.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

namespace fs = std::filesystem;
using testing::readFile;
using testing::TempDir;
using Action = CacheMirror::Action;

// Puts a file's date `seconds` away from now (into the past when negative).
void dateFromNow(const fs::path& path, double seconds) {
    auto shift = std::chrono::duration_cast<fs::file_time_type::duration>(std::chrono::duration<double>(seconds));
    fs::last_write_time(path, fs::file_time_type::clock::now() + shift);
}

// Both sides hold the same bytes and the same date.
void expectLevel(const fs::path& local, const fs::path& remote) {
    ASSERT_TRUE(fs::exists(local));
    ASSERT_TRUE(fs::exists(remote));
    EXPECT_TRUE(readFile(local) == readFile(remote)) << local << " and " << remote << " differ";
    EXPECT_EQ(fs::last_write_time(local), fs::last_write_time(remote));
}

std::size_t entriesIn(const fs::path& folder) {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

class MirrorTest : public ::testing::Test {
protected:
    fs::path local() const { return here.path() / "cache.qscache"; }
    fs::path remote() const { return shared.path() / "cache.qscache"; }
    Result<Action> mirror(bool alwaysSync, FileSystem& fileSystem = FileSystem::real()) {
        CacheMirror::Rules rules;
        rules.alwaysSync = alwaysSync;
        return CacheMirror::mirrorIfNeeded(local().string(), remote().string(), rules, fileSystem);
    }
    TempDir here;
    TempDir shared;
};

TEST_F(MirrorTest, TheNewerSideWinsEitherWayAndLevelSidesStayAlone) {
    here.write("cache.qscache", "local version");
    shared.write("cache.qscache", "remote version, longer");
    dateFromNow(local(), -1000);
    dateFromNow(remote(), -500);
    ASSERT_EQ(*mirror(false), Action::pulled);
    EXPECT_EQ(readFile(local()), "remote version, longer");
    expectLevel(local(), remote());
    EXPECT_EQ(*mirror(false), Action::none);

    here.write("cache.qscache", "local edit");
    dateFromNow(local(), -200);
    ASSERT_EQ(*mirror(false), Action::pushed);
    EXPECT_EQ(readFile(remote()), "local edit");
    expectLevel(local(), remote());
    EXPECT_EQ(entriesIn(shared.path()), 1u) << "no temporary file is left behind";
}

TEST_F(MirrorTest, ASharedCopyWrittenInTheLastTwoMinutesIsBusyUnlessSyncIsForced) {
    here.write("cache.qscache", "local");
    shared.write("cache.qscache", "remote");
    dateFromNow(local(), -1000);
    dateFromNow(remote(), -60);
    EXPECT_EQ(*mirror(false), Action::busy);
    EXPECT_EQ(readFile(local()), "local");
    dateFromNow(remote(), 60);
    EXPECT_EQ(*mirror(false), Action::busy) << "a clock ahead of ours counts too";
    EXPECT_EQ(*mirror(true), Action::pulled);
    expectLevel(local(), remote());

    fs::remove(remote());
    EXPECT_EQ(*mirror(false), Action::pushed) << "a missing copy is never busy";
    fs::remove(remote());
    fs::remove(local());
    EXPECT_EQ(*mirror(false), Action::none);
    EXPECT_FALSE(fs::exists(local()));
}

TEST_F(MirrorTest, ADateRoundedByTheFileSystemDoesNotSendTheFileBack) {
    FaultInjectingFileSystem fat;
    fat.roundModificationTimes(2);
    here.write("cache.qscache", "local");
    fs::last_write_time(local(), fs::last_write_time(local()) - std::chrono::seconds(1001));
    ASSERT_EQ(*mirror(false, fat), Action::pushed);
    EXPECT_NE(fs::last_write_time(local()), fs::last_write_time(remote()));
    EXPECT_EQ(*mirror(false, fat), Action::none);
    EXPECT_EQ(*mirror(true), Action::none);
}

TEST_F(MirrorTest, AFailedCopyLeavesBothSidesAsTheyWere) {
    here.write("cache.qscache", std::string(300000, 'L'));
    shared.write("cache.qscache", "remote");
    dateFromNow(local(), -200);
    dateFromNow(remote(), -1000);
    auto localDate = fs::last_write_time(local()), remoteDate = fs::last_write_time(remote());
    FaultInjectingFileSystem fullDisk;
    fullDisk.failWritesAfter(1000);
    EXPECT_FALSE(mirror(false, fullDisk));
    FaultInjectingFileSystem gone;
    gone.removeDisk(shared.str());
    EXPECT_FALSE(mirror(false, gone));
    EXPECT_EQ(readFile(remote()), "remote");
    EXPECT_EQ(readFile(local()), std::string(300000, 'L'));
    EXPECT_EQ(fs::last_write_time(local()), localDate);
    EXPECT_EQ(fs::last_write_time(remote()), remoteDate);
    EXPECT_EQ(entriesIn(shared.path()), 1u);

    fs::remove_all(shared.path() / "missing");
    CacheMirror::Rules rules;
    auto intoMissingFolder = CacheMirror::mirrorIfNeeded(local().string(), shared.str() + "/missing/cache.qscache",
                                                         rules, FileSystem::real());
    EXPECT_FALSE(intoMissingFolder);
    EXPECT_FALSE(fs::exists(shared.path() / "missing")) << "a folder is never made for the copy";
}

// A cache with a target, a shared copy and a build of its tree.
class SharedCacheTest : public ::testing::Test {
protected:
    SharedCacheTest() {
        for (int i = 0; i < 6; ++i) tree.write("d" + std::to_string(i % 2) + "/f" + std::to_string(i) + ".txt", "x");
    }
    std::string localFile(const TempDir& folder) const { return folder.str() + "/tree.qscache"; }
    fs::path remote() const { return shared.path() / "tree.qscache"; }
    std::unique_ptr<ContentIndex> makeIndex(const TempDir& folder) {
        auto made = ContentIndex::make(
            {localFile(folder), tree.str(), std::nullopt, std::string("tree"), CachingUpdatesTag::defaultTiming});
        EXPECT_TRUE(made) << made.error().description();
        auto bookmark = Bookmark::make(remote().string());
        EXPECT_TRUE(bookmark);
        (*made)->setRemoteDBBookmark(*bookmark);
        return std::move(*made);
    }
    static ContentIndexBuild::Options userUpdate() {
        ContentIndexBuild::Options options;
        options.pauseReason = [] { return std::optional<std::string>(); };
        options.alwaysMirror = true;
        return options;
    }
    static std::optional<std::int64_t> items(const ContentIndex& index) { return index.documentInfo().numberOfFSItems; }
    TempDir tree;
    TempDir here;
    TempDir machineA;
    TempDir machineB;
    TempDir shared;
};

TEST_F(SharedCacheTest, UpdatesFromEitherMachineKeepTheCopyLevel) {
    auto onA = makeIndex(machineA);
    ASSERT_TRUE(ContentIndexBuild::build(*onA, userUpdate()));
    expectLevel(localFile(machineA), remote());

    auto onB = makeIndex(machineB);
    tree.write("d0/new.txt", "x");
    ASSERT_TRUE(ContentIndexBuild::build(*onB, userUpdate()));
    EXPECT_EQ(items(*onB), 7);
    expectLevel(localFile(machineB), remote());

    dateFromNow(remote(), -300);
    dateFromNow(localFile(machineB), -300);
    dateFromNow(localFile(machineA), -1000);
    ASSERT_EQ(*CacheMirror::mirrorIfNeeded(*onA, false), Action::pulled) << "A's older file gives way";
    EXPECT_EQ(items(*onA), 7) << "the document information is read again";
    expectLevel(localFile(machineA), remote());

    fs::remove(tree.path() / "d1/f1.txt");
    ASSERT_TRUE(ContentIndexBuild::build(*onA, userUpdate()));
    EXPECT_EQ(items(*onA), 6);
    expectLevel(localFile(machineA), remote());
}

TEST_F(SharedCacheTest, ACancelledUpdatePutsTheSharedCopyBack) {
    auto index = makeIndex(machineA);
    ASSERT_TRUE(ContentIndexBuild::build(*index, userUpdate()));
    std::string before = readFile(remote());
    index->mutableDocumentInfo().isDirty = true;
    ASSERT_TRUE(index->saveDocumentInfo());
    ContentIndexBuild::Options cancelling = userUpdate();
    cancelling.pauseReason = [&] {
        index->shouldCancel = true;
        return std::optional<std::string>();
    };
    Status cancelled = ContentIndexBuild::build(*index, cancelling);
    ASSERT_FALSE(cancelled);
    EXPECT_EQ(cancelled.error().code, ErrorCode::cancelled);
    EXPECT_EQ(readFile(remote()), before);
    expectLevel(localFile(machineA), remote());
    EXPECT_EQ(items(*index), 6);
    EXPECT_FALSE(index->documentInfo().isDirty);
}

TEST_F(SharedCacheTest, ACopyOnAMountPointWhoseDiskChangedIsNeverWritten) {
    auto index = makeIndex(machineA);
    Bookmark unplugged = *index->remoteDBBookmark();
    unplugged.diskKey = "unplugged 1000 ext4";
    index->setRemoteDBBookmark(unplugged);
    std::vector<std::string> warnings;
    ContentIndexBuild::Options options = userUpdate();
    options.mirrorWarning = [&](const std::string& warning) { warnings.push_back(warning); };
    ASSERT_TRUE(ContentIndexBuild::build(*index, options));
    EXPECT_EQ(items(*index), 6);
    EXPECT_EQ(entriesIn(shared.path()), 0u);
    ASSERT_EQ(warnings.size(), 1u) << "told once, not before and after the build";
    EXPECT_NE(warnings[0].find("unavailable"), std::string::npos);
    EXPECT_EQ(*CacheMirror::mirrorIfNeeded(*index, true), Action::unavailable);
    EXPECT_FALSE(CacheMirror::restoreFromRemote(*index));
    EXPECT_TRUE(fs::exists(localFile(machineA)));
}

TEST_F(SharedCacheTest, AnEmptyLocalStoreNeverReplacesTheSharedCopy) {
    auto built = makeIndex(machineA);
    ASSERT_TRUE(ContentIndexBuild::build(*built, userUpdate()));
    std::string copy = readFile(remote());
    dateFromNow(remote(), -300);
    auto fresh = makeIndex(machineB);
    ASSERT_TRUE(fresh->saveDocumentInfo());
    EXPECT_EQ(*CacheMirror::mirrorIfNeeded(*fresh, false), Action::pulled);
    EXPECT_EQ(items(*fresh), 6);
    EXPECT_EQ(readFile(remote()), copy);

    auto adopted = ContentIndex::make(
        {localFile(here), std::nullopt, std::nullopt, std::string("adopted"), CachingUpdatesTag::never});
    ASSERT_TRUE(adopted);
    (*adopted)->setRemoteDBBookmark(*built->remoteDBBookmark());
    fs::copy_file(remote(), localFile(here), fs::copy_options::overwrite_existing);
    ASSERT_TRUE((*adopted)->loadDocumentInfo());
    EXPECT_EQ(*CacheMirror::mirrorIfNeeded(**adopted, true), Action::none) << "an adopted cache only takes";
    EXPECT_EQ(readFile(remote()), copy);
}

}  // namespace
}  // namespace quester
