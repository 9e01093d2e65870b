#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/FSUtilities.h"
#include "platform/PlatformProfile.h"
#include "testing/EnvironmentVariable.h"

namespace quester {
namespace {

PlatformProfile linuxProfileWith(std::optional<std::string> dataHome, std::optional<std::string> dataDirs) {
    testing::EnvironmentVariable home("XDG_DATA_HOME", std::move(dataHome));
    testing::EnvironmentVariable dirs("XDG_DATA_DIRS", std::move(dataDirs));
    return PlatformProfile::linux();
}

TEST(ApplicationFolders, TheUsersFolderThenTheDataFoldersThenTheSandboxedPackagesEachOnce) {
    auto profile = linuxProfileWith("/home/ann/data", "/opt/apps/share/:relative/share:/usr/share::/opt/apps/share");
    EXPECT_EQ(profile.applicationFolders,
              (std::vector<std::string>{"/home/ann/data/applications", "/opt/apps/share/applications",
                                        "/usr/share/applications", "/var/lib/flatpak/exports/share/applications",
                                        "/var/lib/snapd/desktop/applications"}));
}

TEST(ApplicationFolders, AreNeitherSystemPathsNorInvisibleButWhatLiesBelowThemStillCanBe) {
    FSUtilities fs(linuxProfileWith("/home/ann/.local/share", std::nullopt),
                   [](const std::string& path) { return path.ends_with(".app"); });
    EXPECT_FALSE(fs.isInvisibleOrInsidePackage("/home/ann/.local/share/applications/editor.desktop"));
    EXPECT_FALSE(fs.isInsideOSDirectory("/var/lib/snapd/desktop/applications/tool.desktop"));

    EXPECT_TRUE(fs.isInvisibleOrInsidePackage("/home/ann/.local/share/applications/.cache/editor.desktop"));
    EXPECT_TRUE(fs.isInvisibleOrInsidePackage("/home/ann/.local/share/applications/Old.app/x.desktop"));
    EXPECT_TRUE(fs.isInvisibleOrInsidePackage("/home/ann/.local/share/applicationsx/editor.desktop"));
    EXPECT_TRUE(fs.isInsideOSDirectory("/var/lib/snapd/desktop/icons/tool.png"));
}

}  // namespace
}  // namespace quester
