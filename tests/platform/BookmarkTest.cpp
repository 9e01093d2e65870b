#include "platform/Bookmark.h"

#include <gtest/gtest.h>

#include "platform/FSUtilities.h"
#include "platform/FaultInjectingFileSystem.h"
#include "platform/FileSystem.h"
#include "platform/Url.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using testing::TempDir;

TEST(Bookmark, ResolvesOnlyOnTheRecordedDisk) {
    TempDir folder;
    std::string file = folder.str() + "/copy.qscache";
    Result<Bookmark> made = Bookmark::make(file);
    ASSERT_TRUE(made) << made.error().description();
    EXPECT_EQ(made->diskKey, FSUtilities::shared().keyForDisk(Url(folder.str(), true)));
    EXPECT_TRUE(file.ends_with("/" + made->pathOnDisk)) << made->pathOnDisk;
    Result<Bookmark::Resolved> resolved = made->resolve();
    ASSERT_TRUE(resolved);
    EXPECT_EQ(resolved->path, file) << "the file need not exist";
    EXPECT_FALSE(resolved->isStale);

    Bookmark unplugged = *made;
    unplugged.diskKey = "Unplugged 1000 ext4";
    Result<Bookmark::Resolved> gone = unplugged.resolve();
    ASSERT_FALSE(gone);
    EXPECT_EQ(gone.error().code, ErrorCode::notFound);
    EXPECT_FALSE(Bookmark::make(folder.str() + "/missing/copy.qscache"));
}

TEST(FileSystem, AModificationTimeIsSetAndAFaultRoundsItAsFATDoes) {
    TempDir folder;
    std::string file = folder.write("a.txt", "x").string();
    FileSystem& real = FileSystem::real();
    ASSERT_TRUE(real.setModificationTime(file, {1700000001, 123456789}));
    EXPECT_EQ(real.status(file)->modifyTime, (FileTime{1700000001, 123456789}));
    FaultInjectingFileSystem fat;
    fat.roundModificationTimes(2);
    ASSERT_TRUE(fat.setModificationTime(file, {1700000001, 123456789}));
    EXPECT_EQ(real.status(file)->modifyTime, (FileTime{1700000000, 0}));
    EXPECT_FALSE(real.setModificationTime(folder.str() + "/missing", {1, 0}));
}

}  // namespace
}  // namespace quester
