#include "platform/DiskInfoManager.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>

#include "testing/TempDir.h"

namespace quester {
namespace {

using namespace std::chrono_literals;

std::vector<std::string> paths(const std::vector<DiskInfo>& disks) {
    std::vector<std::string> result;
    for (const auto& disk : disks) result.push_back(disk.url.path());
    return result;
}

// A manager over a profile whose volumes folder is a temp folder, with its own
// main loop and notification center.
class DiskInfoManagerTest : public ::testing::Test {
protected:
    PlatformProfile makeProfile(std::optional<std::string> bootName = std::nullopt) {
        PlatformProfile profile = PlatformProfile::linux();
        profile.volumesFolder = media.str();
        profile.bootVolumeName = std::move(bootName);
        return profile;
    }
    MountEntry volumeEntry(int id, const std::string& name, const std::string& fsType = "vfat") {
        auto folder = media.mkdir(name);
        return MountEntry{id, 1, folder.string(), "/dev/quester-test-none", fsType, "rw"};
    }

    testing::TempDir media;
    MainLoop loop;
    NotificationCenter center{loop};
    FSUtilities fs{makeProfile()};
    DiskInfoManager manager{fs, center};
};

TEST_F(DiskInfoManagerTest, TheRealTableListsTheRootFirst) {
    ASSERT_TRUE(manager.buildAllAndWatch().ok());
    auto volumes = manager.volumes();
    ASSERT_FALSE(volumes.empty());
    EXPECT_EQ(volumes.front().url.path(), "/");
    auto root = manager.info("/");
    ASSERT_TRUE(root.has_value());
    EXPECT_FALSE(root->diskKey.empty());
    EXPECT_TRUE(fs.isDiskPresent("/", root->diskKey));
}

TEST_F(DiskInfoManagerTest, VolumesAreSortedWithTheBootVolumeFirst) {
    FSUtilities zetaBoots(makeProfile("Zeta"));
    DiskInfoManager sorted(zetaBoots, center);
    for (const auto& volume : {volumeEntry(11, "beta"), volumeEntry(12, "Zeta", "apfs"), volumeEntry(13, "alpha")}) {
        EXPECT_TRUE(sorted.add(volume));
    }
    EXPECT_TRUE(sorted.add(volumeEntry(14, "alpha")));
    EXPECT_EQ(paths(sorted.volumes()),
              (std::vector<std::string>{media.str() + "/Zeta", media.str() + "/alpha", media.str() + "/beta"}));
    EXPECT_TRUE(sorted.info(media.str() + "/Zeta")->isMacFS);
}

TEST_F(DiskInfoManagerTest, ExternalDisksLeaveOutNetworkAndInternalDisks) {
    manager.add(volumeEntry(30, "local"));
    manager.add(MountEntry{31, 1, "/mnt/nas", "nas:/export", "nfs4", "rw"});
    EXPECT_FALSE(manager.info("/mnt/nas")->isLocal);
    EXPECT_TRUE(manager.info(media.str() + "/local")->isInternal);
    EXPECT_TRUE(manager.externalDisks().empty());
}

TEST_F(DiskInfoManagerTest, ASystemDiskHoldsTheMarkerFolders) {
    MountEntry other = volumeEntry(40, "OtherLinux", "ext4");
    media.mkdir("OtherLinux/etc");
    media.mkdir("OtherLinux/usr/bin");
    manager.add(other);
    manager.add(volumeEntry(41, "Stick"));
    EXPECT_TRUE(manager.info(other.mountPoint)->isSystemDisk);
    EXPECT_FALSE(manager.info(media.str() + "/Stick")->isSystemDisk);
    EXPECT_TRUE(manager.isAppOnNonRootButBootableDisk(other.mountPoint + "/usr/bin/tool"));
    EXPECT_FALSE(manager.isAppOnNonRootButBootableDisk("/usr/bin/tool"));
}

TEST_F(DiskInfoManagerTest, MountChangesUpdateTheListAndNotifyOnTheMainLoop) {
    std::atomic<int> notified{0};
    std::atomic<bool> onLoopThread{true};
    manager.didChange([&] {
        onLoopThread = onLoopThread && loop.isLoopThread();
        ++notified;
    });
    MountEntry usb = volumeEntry(50, "USB");
    std::thread monitorThread([&] { manager.handleMountChanges(MountChanges{{usb}, {}}); });
    monitorThread.join();
    EXPECT_EQ(paths(manager.volumes()), std::vector<std::string>{usb.mountPoint});
    EXPECT_TRUE(loop.runUntil([&] { return notified == 1; }, 10s));

    manager.handleMountChanges(MountChanges{{MountEntry{51, 1, "/sys/kernel/debug", "debugfs", "debugfs", "rw"}}, {}});
    manager.handleMountChanges(MountChanges{{}, {usb}});
    EXPECT_TRUE(manager.volumes().empty());
    EXPECT_TRUE(loop.runUntil([&] { return notified == 2; }, 10s));
    loop.runPending();
    EXPECT_EQ(notified.load(), 2);
    EXPECT_TRUE(onLoopThread.load());
}

TEST_F(DiskInfoManagerTest, KnownVolumesFollowTheList) {
    manager.add(MountEntry{60, 1, "/mnt/nas", "nas:/export", "nfs4", "rw"});
    EXPECT_EQ(fs.diskPathFromFullPath("/mnt/nas/movies/a.mkv"), "/mnt/nas");
    manager.remove(Url("/mnt/nas", true));
    EXPECT_EQ(fs.diskPathFromFullPath("/mnt/nas/movies/a.mkv"), "/");
}

}  // namespace
}  // namespace quester
