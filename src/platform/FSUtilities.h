#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/PlatformProfile.h"
#include "platform/Url.h"
#include "support/Locked.h"

namespace quester {

// Counts of the things stored on a volume.
struct VolumeObjectCounts {
    std::uint64_t objects = 0;
    std::uint64_t files = 0;
    std::uint64_t dirs = 0;
};

// The path rules every search source leans on: system paths, invisible items
// and packages, which disk a path lies on and the key that disk has in the
// caches. Called from every search thread at once: the package cache is read
// and written under its lock, with the file system asked outside it.
class FSUtilities {
public:
    // Asks whether a directory is a package; the default reads
    // `URLValues::isPackageKey` of the path as a directory.
    using PackageProbe = std::function<bool(const std::string& directoryPath)>;

    explicit FSUtilities(PlatformProfile profile, PackageProbe probe = {});
    FSUtilities(const FSUtilities&) = delete;
    FSUtilities& operator=(const FSUtilities&) = delete;

    // Made on first use with the current profile; lives for the whole run.
    static FSUtilities& shared();

    const PlatformProfile& profile() const { return platform; }
    const std::optional<std::string>& homeLibraryFolder() const { return platform.homeLibraryFolder; }

    // Whether the path belongs to the operating system and stays out of
    // searches that don't ask for hidden items. Text only.
    bool isInsideOSDirectory(const std::string& path) const;
    // A component begins with "." or lies inside a package (the package itself
    // is not inside one, except an "always" package such as a framework). The
    // components of the profile's application folders don't count.
    bool isInvisibleOrInsidePackage(const std::string& path);
    // Whether a search that doesn't show hidden items leaves the path out. A
    // folder a person names is searched whatever it is: the system, invisible
    // and package rules judge only what lies below the deepest of
    // `searchedFolders` that holds the path (and all of a path outside them).
    bool isHiddenFromSearch(const std::string& path, const std::vector<std::string>& searchedFolders);
    // Whether the path's extension is known as a package extension.
    bool hasPackageExtension(const std::string& path);

    // A backup disk: "Backups.backupdb" or "backup_manifest.plist" stands on it.
    bool isBackupDisk(const Url& url) const;
    // The mount point of the volume the path lies on, by its text: below the
    // volumes folder the folder's next component, else the deepest known volume
    // mount point holding it, else "/".
    std::string diskPathFromFullPath(const std::string& path) const;
    // The key the caches, the live cache and the groups know a disk by:
    // volume name, a blank, total capacity in bytes, a blank, file system type
    // ("unknown" when none). Empty when the URL's volume can't be read.
    std::string keyForDisk(const Url& url) const;
    // The same key for a mount; empty when its capacity can't be read.
    static std::string keyForMount(const MountEntry& mount);
    // Whether the disk recorded under `diskKey` is the one mounted at `path`
    // now. A mount point outlives its disk as an empty folder on the parent
    // file system, so a path alone never proves a disk is there.
    bool isDiskPresent(const std::string& path, const std::string& diskKey) const;
    // The file system of the path is APFS; none when it can't be read.
    std::optional<bool> isDiskAPFS(const std::string& path) const;
    std::optional<VolumeObjectCounts> volumeObjectCounts(const Url& url) const;
    // The names of the extended attributes of the path; empty on error.
    std::vector<std::string> listExtendedAttributes(const std::string& path) const;

    // The mount points `diskPathFromFullPath` knows beyond the volumes folder;
    // kept current by `DiskInfoManager`.
    void setKnownVolumePaths(std::vector<std::string> paths);
    // What the package cache holds for an extension.
    std::optional<bool> cachedPackageExtension(const std::string& extension) const;

private:
    std::string stripVolumeForOSRules(const std::string& path) const;
    bool hasOSPrefix(const std::string& path) const;
    std::size_t componentsOfApplicationFolder(const std::string& path) const;
    std::optional<bool> homeLibraryRule(const std::string& path) const;
    bool isPackageComponent(const std::string& extension, const std::string& runningPath);
    bool isInvisibleOrInsidePackageFrom(const std::string& path, std::size_t firstCountedComponent);

    const PlatformProfile platform;
    const PackageProbe packageProbe;
    Locked<std::map<std::string, bool>> packageExtensionCache;
    Locked<std::vector<std::string>> knownVolumePaths;
};

}  // namespace quester
