#include "platform/BlockDevice.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/MountTable.h"

namespace quester {
namespace {

bool isBlockNode(const char* path) {
    struct stat info {};
    return stat(path, &info) == 0 && S_ISBLK(info.st_mode);
}

TEST(BlockDeviceTest, SourcesThatAreNoBlockDeviceAreNotFound) {
    EXPECT_FALSE(BlockDevice::forSource("tmpfs").has_value());
    EXPECT_FALSE(BlockDevice::forSource("nas.local:/export").has_value());
    EXPECT_FALSE(BlockDevice::forSource("/dev/null").has_value());
    EXPECT_FALSE(BlockDevice::forSource("/dev/quester-no-such-device").has_value());
}

TEST(BlockDeviceTest, LoopDevicesAreDiskImages) {
    if (!isBlockNode("/dev/loop0")) GTEST_SKIP() << "no loop device node here";
    auto loop = BlockDevice::forSource("/dev/loop0");
    ASSERT_TRUE(loop.has_value());
    EXPECT_TRUE(loop->isLoop());
    EXPECT_NE(loop->sysfsDiskPath().find("loop0"), std::string::npos);
}

TEST(BlockDeviceTest, ARootDiskIsNoDiskImage) {
    auto table = MountTable::read();
    ASSERT_TRUE(table.ok());
    auto root = BlockDevice::forSource(table->entryAt("/")->source);
    if (!root) GTEST_SKIP() << "the root file system has no block device here";
    EXPECT_FALSE(root->isLoop());
    EXPECT_EQ(root->sysfsDiskPath().rfind("/sys/", 0), 0u);
}

}  // namespace
}  // namespace quester
