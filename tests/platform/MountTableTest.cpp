#include "platform/MountTable.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "platform/PlatformProfile.h"
#include "platform/VolumeLabel.h"

namespace quester {
namespace {

const std::string dataFolder = QUESTER_PLATFORM_TEST_DATA;

MountTable sample(const std::string& name) {
    auto table = MountTable::parse(dataFolder + "/" + name);
    EXPECT_TRUE(table.ok()) << (table.ok() ? "" : table.error().message);
    return table.ok() ? *table : MountTable();
}

std::vector<std::string> mountPoints(const std::vector<MountEntry>& entries) {
    std::vector<std::string> points;
    for (const auto& entry : entries) points.push_back(entry.mountPoint);
    return points;
}

PlatformProfile desktopProfile() {
    PlatformProfile profile = PlatformProfile::linux();
    profile.volumesFolder = "/media/alice";
    return profile;
}

TEST(MountTableParsing, ReadsEveryFieldOfAMountinfoLineAndUnescapesSpaces) {
    MountTable table = sample("mountinfo-desktop.txt");
    const MountEntry* root = table.entryAt("/");
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(root->parentId, 1);
    EXPECT_NE(root->options.find("errors=remount-ro"), std::string::npos);
    EXPECT_FALSE(root->isReadOnly());
    const MountEntry* passport = table.entryWithID(34);
    ASSERT_NE(passport, nullptr);
    EXPECT_EQ(passport->mountPoint, "/media/alice/My Passport");
    EXPECT_EQ(passport->source, "/dev/sdb1");
    EXPECT_EQ(passport->fsType, "exfat");
    EXPECT_FALSE(MountTable::parse(dataFolder + "/no-such-mountinfo").ok());
}

TEST(MountTableParsing, TheKernelTableHasARootAndIsCachedWhileNothingChanges) {
    auto table = MountTable::read();
    ASSERT_TRUE(table.ok());
    EXPECT_NE(table->entryContaining("/proc/self/status"), nullptr);
    auto first = MountTable::current();
    ASSERT_NE(first, nullptr);
    EXPECT_NE(first->entryAt("/"), nullptr);
    EXPECT_EQ(MountTable::current().get(), first.get());
}

TEST(MountTableLookup, TheDeepestMountHoldsAPath) {
    MountTable table = sample("mountinfo-desktop.txt");
    EXPECT_EQ(table.entryContaining("/home/alice/a.txt")->mountPoint, "/home");
    EXPECT_EQ(table.entryContaining("/homework")->mountPoint, "/");
    EXPECT_EQ(table.entryContaining("/home/alice/remote/x")->fsType, "fuse.sshfs");
    EXPECT_EQ(table.entryContaining("/media/alice/My Passport/inner/a")->id, 41);
    EXPECT_EQ(table.entryContaining("relative/path"), nullptr);
}

TEST(VolumeFiltering, KeepsWhatAPersonBrowsesAndDropsPseudoFileSystems) {
    MountTable table = sample("mountinfo-desktop.txt");
    auto volumes = mountPoints(table.volumes(desktopProfile()));
    EXPECT_EQ(volumes,
              (std::vector<std::string>{"/", "/home", "/media/alice/My Passport", "/mnt/archive", "/home/alice/remote",
                                        "/mnt/image", "/media/alice/My Passport/inner"}));
}

TEST(VolumeFiltering, RootIsAVolumeWhateverItsType) {
    MountEntry containerRoot{1, 0, "/", "overlay", "overlay", "rw"};
    EXPECT_TRUE(containerRoot.isVolume(desktopProfile()));
    MountEntry dockerLayer{2, 1, "/mnt/layer", "overlay", "overlay", "rw"};
    EXPECT_FALSE(dockerLayer.isVolume(desktopProfile()));
}

TEST(VolumeFiltering, TheProfileVolumesFolderCountsButNotItself) {
    PlatformProfile profile = desktopProfile();
    profile.volumesFolder = "/tmp/quester-volumes";
    MountEntry below{5, 1, "/tmp/quester-volumes/USB", "/dev/sdz1", "vfat", "rw"};
    MountEntry itself{6, 1, "/tmp/quester-volumes", "/dev/sdz2", "ext4", "rw"};
    EXPECT_TRUE(below.isVolume(profile));
    EXPECT_FALSE(itself.isVolume(profile));
}

TEST(VolumeFiltering, NetworkMountsAreNotLocal) {
    MountTable table = sample("mountinfo-desktop.txt");
    EXPECT_TRUE(table.entryAt("/mnt/archive")->isNetwork());
    EXPECT_FALSE(table.entryAt("/home")->isNetwork());
    EXPECT_TRUE(table.entryAt("/mnt/image")->isReadOnly());
}

TEST(MountChangesTest, UnpluggingAndPluggingAreToldApart) {
    MountTable before = sample("mountinfo-desktop.txt");
    MountTable after = sample("mountinfo-desktop-unplugged.txt");
    MountChanges changes = after.changesSince(before);
    EXPECT_EQ(mountPoints(changes.unmounted),
              (std::vector<std::string>{"/media/alice/My Passport", "/media/alice/My Passport/inner"}));
    EXPECT_EQ(mountPoints(changes.mounted), (std::vector<std::string>{"/media/alice/CAMERA"}));
    EXPECT_TRUE(before.changesSince(before).empty());
}

TEST(VolumeLabelTest, ANameIsNeverEmpty) {
    EXPECT_EQ(VolumeLabel::nameFor(MountEntry{1, 0, "/mnt/archive", "nas:/export", "nfs4", "rw"}), "archive");
    EXPECT_EQ(VolumeLabel::nameFor(MountEntry{2, 0, "/media/alice/My Passport", "/dev/quester-none", "exfat", "rw"}),
              "My Passport");
    EXPECT_EQ(VolumeLabel::nameFor(MountEntry{3, 0, "/", "overlay", "overlay", "rw"}), "/");
    EXPECT_EQ(VolumeLabel::nameFor(MountEntry{4, 0, "", "", "", ""}), "/");
}

TEST(VolumeLabelTest, OnlyDeviceNodesHaveLabels) {
    EXPECT_EQ(VolumeLabel::ofDevice("nas:/export"), std::nullopt);
    EXPECT_EQ(VolumeLabel::ofDevice("tmpfs"), std::nullopt);
    EXPECT_EQ(VolumeLabel::ofDevice("/dev/quester-no-such-device"), std::nullopt);
}

}  // namespace
}  // namespace quester
