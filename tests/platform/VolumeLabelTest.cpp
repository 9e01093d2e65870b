#include "platform/VolumeLabel.h"

#include <gtest/gtest.h>

#include "platform/MountEntry.h"

namespace quester {
namespace {

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
