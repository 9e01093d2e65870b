#include "platform/Url.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/MountTable.h"
#include "support/AppDirectories.h"
#include "testing/ScopedPlatformProfile.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using testing::ScopedPlatformProfile;

TEST(BootVolumeSpelling, RootBasedPathsAreSpelledFromTheNamedBootVolume) {
    ScopedPlatformProfile mac(PlatformProfile::macOS("Macintosh HD"));
    ASSERT_TRUE(Url::bootVolumeURL().has_value());
    EXPECT_EQ(Url::bootVolumeURL()->path(), "/Volumes/Macintosh HD");
    EXPECT_EQ(Url::correctRootBasedPath("/Users/alice/a.txt"), "/Volumes/Macintosh HD/Users/alice/a.txt");
    EXPECT_EQ(Url::correctRootBasedPath("/System/Volumes/Data/Users/alice"), "/Volumes/Macintosh HD/Users/alice");
    EXPECT_EQ(Url::correctRootBasedPath("/"), "/Volumes/Macintosh HD");
    EXPECT_EQ(Url::correctRootBasedPath("relative/a"), "relative/a");
}

TEST(BootVolumeSpelling, ListsSwapTheTwoSpellings) {
    ScopedPlatformProfile mac(PlatformProfile::macOS("Macintosh HD"));
    Url boot("/Volumes/Macintosh HD", true), usb("/Volumes/USB", true), root("/", true);
    EXPECT_EQ(Url::namedBootVolumeURLsToSlashRoot({usb, boot}), (std::vector<Url>{root, usb}));
    EXPECT_EQ(Url::fixBootVolumeURLs({usb, root}), (std::vector<Url>{boot, usb}));
}

TEST(BootVolumeSpelling, WithoutABootVolumeNameNothingChanges) {
    for (auto profile : {PlatformProfile::macOS(std::nullopt), PlatformProfile::linux()}) {
        ScopedPlatformProfile scoped(profile);
        EXPECT_FALSE(Url::bootVolumeURL().has_value());
        EXPECT_EQ(Url::correctRootBasedPath("/Users/alice/a"), "/Users/alice/a");
        std::vector<Url> list{Url("/", true), Url("/media/x", true)};
        EXPECT_EQ(Url::fixBootVolumeURLs(list), list);
        EXPECT_EQ(Url::namedBootVolumeURLsToSlashRoot(list), list);
    }
}

TEST(UrlText, VolumeNameAndDisplayPathFromTheVolumesFolder) {
    ScopedPlatformProfile mac(PlatformProfile::macOS("Macintosh HD"));
    EXPECT_EQ(Url("/Volumes/Backup/Projects/a.txt").volumeName(), "Backup");
    EXPECT_EQ(Url("/Volumes/Backup/Projects/a.txt").displayPath(), "/Backup/Projects/a.txt");
    EXPECT_EQ(Url("/Volumes").volumeName(), std::nullopt);
}

TEST(UrlValuesTest, FileAttributesOfRealFiles) {
    testing::TempDir dir;
    auto file = dir.write("docs/report.txt", "x");
    auto hidden = dir.write("docs/.secret", "y");
    Url folder(dir.str() + "/docs", true);
    EXPECT_EQ(folder.value<bool>(URLValues::isDirectoryKey), true);
    EXPECT_EQ(Url(hidden.string()).value<bool>(URLValues::isHiddenKey), true);
    EXPECT_EQ(Url(file.string()).value<bool>(URLValues::isHiddenKey), false);
    EXPECT_EQ(Url(file.string()).value<Url>(URLValues::parentDirectoryURLKey), folder);
    EXPECT_EQ(Url(file.string()).value<std::string>(URLValues::isDirectoryKey), std::nullopt);
}

TEST(UrlValuesTest, AnyErrorReadsAsNone) {
    testing::TempDir dir;
    Url missing(dir.str() + "/missing.txt");
    for (auto value : {URLValues::isDirectoryKey, URLValues::volumeIsLocalKey, URLValues::isPackageKey}) {
        EXPECT_EQ(missing.value<bool>(value), std::nullopt) << key(value);
    }
    EXPECT_EQ(missing.value<Url>(URLValues::volumeURLKey), std::nullopt);
    EXPECT_EQ(missing.displayName(), "missing.txt");
    EXPECT_FALSE(missing.isReachable());
}

TEST(UrlValuesTest, PackagesAreDirectoriesWithAPackageExtension) {
    testing::TempDir dir;
    auto bundle = dir.mkdir("Tool.app");
    auto file = dir.write("notes.app", "not a folder");
    EXPECT_EQ(Url(bundle.string()).value<bool>(URLValues::isPackageKey), true);
    EXPECT_EQ(Url(file.string()).value<bool>(URLValues::isPackageKey), false);
    EXPECT_EQ(Url(dir.str() + "/Unseen.bundle", true).value<bool>(URLValues::isPackageKey), true);
}

TEST(UrlValuesTest, VolumeOfAPathIsItsMount) {
    testing::TempDir dir;
    auto file = dir.write("a.txt");
    auto table = MountTable::read();
    ASSERT_TRUE(table.ok());
    const MountEntry* expected = table->entryContaining(file.string());
    ASSERT_NE(expected, nullptr);
    auto volume = Url(file.string()).volume();
    ASSERT_TRUE(volume.has_value());
    EXPECT_EQ(volume->path(), expected->mountPoint);
    EXPECT_EQ(Url(expected->mountPoint, true).value<bool>(URLValues::isVolumeKey), true);
    EXPECT_EQ(Url(file.string()).diskFormatRaw(), expected->fsType);
    EXPECT_EQ(Url(file.string()).value<bool>(URLValues::volumeIsLocalKey), !expected->isNetwork());
    EXPECT_EQ(Url("/", true).value<Url>(URLValues::parentDirectoryURLKey), std::nullopt);
    EXPECT_GT(Url("/", true).volumeTotalCapacity().value_or(0), 0u);
}

TEST(UrlValuesTest, DiskUsesTheBootSpellingOnlyWhereThereIsOne) {
    {
        ScopedPlatformProfile onLinux(PlatformProfile::linux());
        EXPECT_EQ(Url("/", true).disk().path(), "/");
    }
    ScopedPlatformProfile mac(PlatformProfile::macOS("Macintosh HD"));
    EXPECT_EQ(Url("/", true).disk().path(), "/Volumes/Macintosh HD");
    EXPECT_EQ(Url("/", true).volumeName(), "Macintosh HD");
}

TEST(UrlForFileWhichExists, ExpandsTildeAndAnswersOnlyReachableFiles) {
    std::string home = AppDirectories::homeDirectory();
    auto url = Url::URLForFileWhichExists("~");
    ASSERT_TRUE(url.has_value());
    EXPECT_EQ(url->path(), home);
    EXPECT_TRUE(url->isDirectory());
    testing::TempDir dir;
    auto file = dir.write("x.txt");
    EXPECT_FALSE(Url::URLForFileWhichExists(file.string()).value_or(Url(dir.str(), true)).isDirectory());
    EXPECT_EQ(Url::URLForFileWhichExists(dir.str() + "/nothing"), std::nullopt);
}

}  // namespace
}  // namespace quester
