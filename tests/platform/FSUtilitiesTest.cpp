#include "platform/FSUtilities.h"

#include <gtest/gtest.h>
#include <sys/xattr.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "support/AppDirectories.h"
#include "testing/EnvironmentVariable.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

struct PathCase {
    const char* path;
    bool isOSPath;
};

void expectOSPaths(const FSUtilities& fs, const std::vector<PathCase>& cases) {
    for (const auto& [path, isOSPath] : cases) EXPECT_EQ(fs.isInsideOSDirectory(path), isOSPath) << path;
}

TEST(MacOSPathRules, SystemFoldersOtherVolumesAndTheHomeLibrary) {
    expectOSPaths(FSUtilities(PlatformProfile::macOS("Macintosh HD", "/Users/alice")),
                  {
                      // System applications are no system path, the rest of /System is.
                      {"/System/Applications/Calculator.app", false},
                      {"/System/Library/Fonts/x.ttf", true},
                      // The data volume's spelling is stripped first.
                      {"/System/Volumes/Data/Projects/report.txt", false},
                      {"/System/Volumes/Data/usr/local/bin/tool", true},
                      {"/System/Volumes/Data/System/Applications/Mail.app", false},
                      // Paths on other volumes are judged from the volume's root.
                      {"/Volumes/Backup/usr/local/share", true},
                      {"/Volumes/Backup/Projects/usr", false},
                      // Prefixes are plain text, and some paths are system paths by themselves.
                      {"/usrdata/file", true},
                      {"/", true},
                      {"/Users/alice/Documents/a.txt", false},
                      // The home Library is a system folder but for its document folders.
                      {"/Users/alice/Library/Mobile Documents/com~apple~CloudDocs/a.txt", false},
                      {"/Users/alice/Library/Caches/com.example/c.db", true},
                      {"/Users/bob/Library/Caches/x", false},
                  });
}

TEST(LinuxPathRules, SystemPrefixesCoverWholeComponentsAndPlacesPeopleSearchAreNeverSystemPaths) {
    expectOSPaths(FSUtilities(PlatformProfile::linux()), {{"/usr", true},
                                                          {"/var/log/syslog", true},
                                                          {"/lost+found/#123", true},
                                                          {"/users", false},
                                                          {"/usrdata/x", false},
                                                          {"/binder", false},
                                                          {"/", false},
                                                          {"/home/alice/a.txt", false},
                                                          {"/tmp/x", false},
                                                          {"/media/alice/USB/a", false}});
}

TEST(LinuxPathRules, RealHomeAndApplicationFoldersAreNeverSystemPathsEvenUnderAPrefix) {
    PlatformProfile profile = [] {
        testing::EnvironmentVariable dataDirs("XDG_DATA_DIRS",
                                              "/usr/local/share:/usr/share:/var/lib/flatpak/exports/share");
        return PlatformProfile::linux();
    }();
    profile.neverOSDirectories.push_back("/var/lib/service-home");
    FSUtilities fs(profile);
    EXPECT_FALSE(fs.isInsideOSDirectory("/usr/share/applications/editor.desktop"));
    EXPECT_FALSE(fs.isInsideOSDirectory("/var/lib/flatpak/exports/share/applications/app.desktop"));
    EXPECT_TRUE(fs.isInsideOSDirectory("/usr/share/applicationsx/a"));
    EXPECT_FALSE(fs.isInsideOSDirectory("/var/lib/service-home/notes")) << "a home below a system prefix";
    std::string home = AppDirectories::homeDirectory();
    EXPECT_FALSE(fs.isInsideOSDirectory(home + "/Documents/a.txt"));
    EXPECT_FALSE(fs.isInsideOSDirectory(home + "/Library/Caches/x")) << "no home Library rule";
}

// Counts how often the file system would be asked, and answers by a fixed list.
struct CountingProbe {
    std::shared_ptr<std::atomic<int>> calls = std::make_shared<std::atomic<int>>(0);
    bool operator()(const std::string& path) const {
        ++*calls;
        return path.ends_with(".app") || path.ends_with(".bundle");
    }
};

TEST(PackageRules, APackageIsNotInsideOneButItsContentsAndHiddenComponentsAre) {
    FSUtilities fs(PlatformProfile::macOS(), CountingProbe{});
    EXPECT_FALSE(fs.isInvisibleOrInsidePackage("/Applications/Safari.app"));
    EXPECT_TRUE(fs.isInvisibleOrInsidePackage("/Applications/Safari.app/Contents/Info.plist"));
    EXPECT_TRUE(fs.isInvisibleOrInsidePackage("/Library/Frameworks/Foo.framework"));
    EXPECT_TRUE(fs.isInvisibleOrInsidePackage("/Library/Frameworks/Foo.framework/Versions/A"));
    EXPECT_TRUE(fs.isInvisibleOrInsidePackage("/home/alice/.config/app/settings"));
    EXPECT_FALSE(fs.isInvisibleOrInsidePackage("/home/alice/notes.txt"));
    EXPECT_FALSE(fs.isInvisibleOrInsidePackage("/"));
}

TEST(SearchedFolders, AFolderANamedSearchStartsInIsSearchedWhateverItIs) {
    FSUtilities fs(PlatformProfile::linux(), CountingProbe{});
    const std::vector<std::string> system{"/usr"}, dotFolder{"/home/alice/.config"}, root{"/"};
    EXPECT_FALSE(fs.isHiddenFromSearch("/usr/share/doc/readme", system));
    EXPECT_FALSE(fs.isHiddenFromSearch("/home/alice/.config/app/settings", dotFolder));
    // Below the named folder the rules hold as ever.
    EXPECT_TRUE(fs.isHiddenFromSearch("/home/alice/.config/app/.cache/x", dotFolder));
    EXPECT_TRUE(fs.isHiddenFromSearch("/usr/share", root));
    EXPECT_TRUE(fs.isHiddenFromSearch("/home/alice/.config/app", root));
    EXPECT_FALSE(fs.isHiddenFromSearch("/home/alice/notes.txt", root));
    // A path outside every searched folder is judged whole.
    EXPECT_TRUE(fs.isHiddenFromSearch("/etc/passwd", dotFolder));
}

TEST(PackageRules, EachExtensionIsAskedOnceAndRememberedForTheRun) {
    CountingProbe probe;
    FSUtilities fs(PlatformProfile::linux(), probe);
    EXPECT_FALSE(fs.isInvisibleOrInsidePackage("/data/photos.2020/a.jpg"));
    EXPECT_EQ(fs.cachedPackageExtension("2020"), false);
    EXPECT_EQ(fs.cachedPackageExtension("jpg"), false);
    EXPECT_TRUE(fs.isInvisibleOrInsidePackage("/data/Tool.app/Contents/x"));
    EXPECT_EQ(fs.cachedPackageExtension("app"), true);
    int callsSoFar = probe.calls->load();
    EXPECT_TRUE(fs.isInvisibleOrInsidePackage("/other/Else.app/y"));
    EXPECT_FALSE(fs.isInvisibleOrInsidePackage("/other/more.2020/b.jpg"));
    EXPECT_TRUE(fs.hasPackageExtension("/b/Other.app"));
    EXPECT_EQ(probe.calls->load(), callsSoFar);
}

TEST(PackageRules, DefaultProbeUsesTheProfileExtensionListWithoutTouchingTheDisk) {
    FSUtilities fs(PlatformProfile::linux());
    EXPECT_TRUE(fs.isInvisibleOrInsidePackage("/nowhere/Project.xcodeproj/project.pbxproj"));
    EXPECT_FALSE(fs.isInvisibleOrInsidePackage("/nowhere/archive.tar/inner"));
    EXPECT_EQ(fs.cachedPackageExtension("tar"), false);
}

TEST(PackageRules, ConcurrentCallersAgree) {
    FSUtilities fs(PlatformProfile::linux(), CountingProbe{});
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 500; ++i) {
                if (!fs.isInvisibleOrInsidePackage("/x/A.app/Contents/" + std::to_string(i))) ++wrong;
                if (fs.isInvisibleOrInsidePackage("/x/d.dir" + std::to_string(i % 7) + "/f")) ++wrong;
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(wrong.load(), 0);
}

TEST(DiskPaths, PathsBelowTheVolumesFolderNameTheirVolume) {
    FSUtilities fs(PlatformProfile::macOS());
    EXPECT_EQ(fs.diskPathFromFullPath("/Volumes/Backup/a/b.txt"), "/Volumes/Backup");
    EXPECT_EQ(fs.diskPathFromFullPath("/Volumes/Backup/"), "/Volumes/Backup");
    EXPECT_EQ(fs.diskPathFromFullPath("/Users/alice/a"), "/");
    EXPECT_EQ(fs.diskPathFromFullPath("/Volumes"), "/");
}

TEST(DiskPaths, KnownMountPointsNameTheDeepestVolume) {
    PlatformProfile profile = PlatformProfile::linux();
    profile.volumesFolder = "/media/alice";
    FSUtilities fs(profile);
    fs.setKnownVolumePaths({"/", "/home", "/mnt/archive", "/mnt/archive/deep"});
    EXPECT_EQ(fs.diskPathFromFullPath("/home/alice/a.txt"), "/home");
    EXPECT_EQ(fs.diskPathFromFullPath("/homework/a"), "/");
    EXPECT_EQ(fs.diskPathFromFullPath("/mnt/archive/deep/x"), "/mnt/archive/deep");
    EXPECT_EQ(fs.diskPathFromFullPath("/mnt/archive/other"), "/mnt/archive");
    EXPECT_EQ(fs.diskPathFromFullPath("/media/alice/USB/photos/a.jpg"), "/media/alice/USB");
}

TEST(DiskKeys, MountWithoutTypeEndsInUnknown) {
    MountEntry mount{1, 0, "/", "/dev/none", "", "rw"};
    std::string key = FSUtilities::keyForMount(mount);
    EXPECT_TRUE(key.ends_with(" unknown")) << key;
    EXPECT_TRUE(key.starts_with("/ ")) << key;
}

TEST(DiskKeys, ADiskIsPresentOnlyWhileItsKeyIsFoundThere) {
    FSUtilities fs(PlatformProfile::linux());
    testing::TempDir dir;
    std::string key = fs.keyForDisk(Url(dir.str(), true));
    EXPECT_EQ(fs.keyForDisk(Url(dir.write("a.txt", "x").string())), key);
    EXPECT_EQ(fs.keyForDisk(Url(dir.str() + "/missing")), "");
    EXPECT_TRUE(fs.isDiskPresent(dir.str(), key));
    EXPECT_FALSE(fs.isDiskPresent(dir.str(), "USB 123456 vfat"));
    EXPECT_FALSE(fs.isDiskPresent(dir.str(), ""));
}

TEST(VolumeFacts, ApfsObjectCountsAndAttributesOfRealFiles) {
    FSUtilities fs(PlatformProfile::linux());
    testing::TempDir dir;
    auto file = dir.write("tagged.txt", "x");
    EXPECT_EQ(fs.isDiskAPFS(file.string()), false);
    EXPECT_FALSE(fs.isBackupDisk(Url(dir.str(), true)));
    dir.write("backup_manifest.plist");
    EXPECT_TRUE(fs.isBackupDisk(Url(dir.str(), true)));
    if (auto counts = fs.volumeObjectCounts(Url("/", true))) {
        EXPECT_GT(counts->objects, 0u);
    }
    EXPECT_FALSE(fs.volumeObjectCounts(Url(dir.str() + "/missing")).has_value());

    EXPECT_TRUE(fs.listExtendedAttributes(file.string()).empty());
    if (setxattr(file.c_str(), "user.xdg.tags", "red", 3, 0) != 0) GTEST_SKIP() << "no user xattrs here";
    setxattr(file.c_str(), "user.other", "1", 1, 0);
    auto names = fs.listExtendedAttributes(file.string());
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"user.other", "user.xdg.tags"}));
}

}  // namespace
}  // namespace quester
