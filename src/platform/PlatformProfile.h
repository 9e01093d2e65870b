#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quester {

// The path rules of the platform as data: which folders belong to the
// operating system, where the boot volume has its second spelling, which
// folder stands for "/Volumes", which directory extensions are packages.
//
// `linux()` is what the program runs with. `macOS()` carries the other
// platform's values so that the path logic can be exercised with them too.
// A profile is a plain value; `current()` is the process-wide one.
struct PlatformProfile {
    std::string name;

    // Text prefixes that mark a path as belonging to the operating system.
    std::vector<std::string> osDirectoryPrefixes;
    // True: a prefix covers only whole components ("/usr" covers "/usr/x", not
    // "/users"). False: plain text prefixes, as the other platform uses them.
    bool osPrefixesAreWholeComponents = true;
    // Paths that are system paths by themselves.
    std::vector<std::string> osExactPaths;
    // Folders (and everything below them) that are never system paths even
    // under a system prefix: the real user's home, the desktop's application
    // folders.
    std::vector<std::string> neverOSDirectories;
    // Applications shipped with the system that a person still searches for.
    std::string systemApplicationsPrefix;
    // The folders that hold the applications of the machine, in order of
    // precedence: on Linux the desktop's application folders (the user's own
    // first), where a ".desktop" entry is one application. The folders
    // themselves are never system paths and never invisible, even when a
    // component of theirs begins with "." (~/.local/share/applications).
    std::vector<std::string> applicationFolders;
    // The second mount of the boot volume's data; empty when there is none.
    std::string dataVolumePrefix;
    // Whether the system rules apply again inside a volume under `volumesFolder`.
    bool osRulesApplyInsideVolumes = false;

    // The folder other disks are mounted under ("/Volumes"; the user's
    // removable-media folder on Linux). No trailing "/".
    std::string volumesFolder;
    // The boot volume's name when "/" has a second spelling under `volumesFolder`.
    std::optional<std::string> bootVolumeName;

    // The home Library folder, with a trailing "/"; none where the rule is skipped.
    std::optional<std::string> homeLibraryFolder;
    // Folders of the home Library folder that hold user documents.
    std::vector<std::string> homeLibraryDocumentFolders;

    // Extensions of directories that are packages.
    std::vector<std::string> packageExtensions;
    // The extension that is a package wherever it stands, the last component included.
    std::string alwaysPackageExtension;

    // Folders, relative to the root of a walked disk, that a walk never
    // enters: where the platform shows other disks and second views of the
    // same one. None on Linux, where the mount table tells where a disk ends.
    std::vector<std::string> walkSkippedFolders;
    // Texts that a folder's path holds when a walk must not enter it (stores
    // of backups that copy the disk many times over).
    std::vector<std::string> walkSkippedPathParts;

    // Names that stand directly on a disk that holds an operating system.
    std::vector<std::string> systemDiskMarkers;

    // "/" under its second spelling: the volumes folder and the boot volume's
    // name; none when the profile has no boot volume name.
    std::optional<std::string> bootVolumePath() const;

    static PlatformProfile linux();
    // `home` is the user's home folder (the real user's by default).
    static PlatformProfile macOS(std::optional<std::string> bootVolumeName = std::string("Macintosh HD"),
                                 std::optional<std::string> home = std::nullopt);

    // The profile the program's path logic uses; `linux()` until replaced.
    // Thread-safe; the answer stays valid after a later `setCurrent`.
    static std::shared_ptr<const PlatformProfile> current();
    // Replaces the current profile and answers the previous one (tests swap
    // profiles and put the old one back).
    static std::shared_ptr<const PlatformProfile> setCurrent(PlatformProfile profile);
    static void restoreCurrent(std::shared_ptr<const PlatformProfile> previous);
};

}  // namespace quester
