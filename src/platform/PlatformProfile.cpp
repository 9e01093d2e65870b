#include "platform/PlatformProfile.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "support/AppDirectories.h"
#include "support/Locked.h"
#include "support/PathText.h"

namespace quester {
namespace {

std::string userName() {
    if (const passwd* entry = getpwuid(getuid()); entry != nullptr && entry->pw_name != nullptr) return entry->pw_name;
    const char* fromEnvironment = std::getenv("USER");
    return fromEnvironment != nullptr ? fromEnvironment : "";
}

// udisks mounts under /run/media/<user> on some systems and /media/<user> on
// Debian; the one that exists wins.
std::string removableMediaFolder() {
    std::string user = userName();
    std::string runMedia = "/run/media/" + user;
    std::error_code ignored;
    if (!user.empty() && std::filesystem::is_directory(runMedia, ignored)) return runMedia;
    return user.empty() ? std::string("/media") : "/media/" + user;
}

std::string environmentPath(const char* name, const std::string& fallback) {
    const char* value = std::getenv(name);
    if (value == nullptr || value[0] != '/') return fallback;
    return value;
}

// The desktop's application folders, then those of the two sandboxed package
// systems, which not every session puts into XDG_DATA_DIRS. Each folder once.
std::vector<std::string> xdgApplicationFolders(const std::string& home) {
    std::vector<std::string> folders;
    auto add = [&](const std::string& given) {
        std::string folder(withoutTrailingSlash(given));
        if (std::find(folders.begin(), folders.end(), folder) == folders.end()) folders.push_back(std::move(folder));
    };
    add(environmentPath("XDG_DATA_HOME", home + "/.local/share") + "/applications");
    std::istringstream dataDirs(environmentPath("XDG_DATA_DIRS", "/usr/local/share:/usr/share"));
    for (std::string dir; std::getline(dataDirs, dir, ':');) {
        if (!dir.empty() && dir.front() == '/') add(joinPath(dir, "applications"));
    }
    add("/var/lib/flatpak/exports/share/applications");
    add("/var/lib/snapd/desktop/applications");
    return folders;
}

std::vector<std::string> sharedPackageExtensions() {
    return {"app",  "bundle",        "framework", "plugin",      "kext",         "xpc", "appex",
            "rtfd", "photoslibrary", "xcodeproj", "xcworkspace", "sparsebundle", "pkg"};
}

Locked<std::shared_ptr<const PlatformProfile>>& currentProfile() {
    static Locked<std::shared_ptr<const PlatformProfile>> profile(
        std::make_shared<const PlatformProfile>(PlatformProfile::linux()));
    return profile;
}

}  // namespace

PlatformProfile PlatformProfile::linux() {
    PlatformProfile profile;
    profile.name = "linux";
    profile.osDirectoryPrefixes = {"/bin",   "/boot",   "/dev",        "/etc", "/lib",  "/lib32",
                                   "/lib64", "/libx32", "/lost+found", "/opt", "/proc", "/run",
                                   "/sbin",  "/snap",   "/sys",        "/usr", "/var"};
    profile.osPrefixesAreWholeComponents = true;
    std::string home = AppDirectories::homeDirectory();
    if (!home.empty() && home != "/") profile.neverOSDirectories.push_back(home);
    profile.applicationFolders = xdgApplicationFolders(home);
    for (const auto& folder : profile.applicationFolders) profile.neverOSDirectories.push_back(folder);
    profile.volumesFolder = removableMediaFolder();
    profile.packageExtensions = sharedPackageExtensions();
    profile.alwaysPackageExtension = "framework";
    profile.walkSkippedPathParts = {"/Backups.backupdb"};
    profile.systemDiskMarkers = {"etc", "usr"};
    return profile;
}

PlatformProfile PlatformProfile::macOS(std::optional<std::string> bootVolumeName, std::optional<std::string> home) {
    PlatformProfile profile;
    profile.name = "macOS";
    profile.osDirectoryPrefixes = {"/bin", "/cores", "/dev",     "/etc",  "/home",   "/Library", "/net", "/Network",
                                   "/nfs", "/opt",   "/private", "/sbin", "/System", "/tmp",     "/usr", "/var"};
    profile.osPrefixesAreWholeComponents = false;
    profile.osExactPaths = {"/Volumes", "/User", "/"};
    profile.systemApplicationsPrefix = "/System/Applications/";
    profile.applicationFolders = {"/Applications", "/Applications/Utilities",
                                  "/System/Library/CoreServices/Applications", "/System/Applications",
                                  "/System/Applications/Utilities"};
    profile.dataVolumePrefix = "/System/Volumes/Data";
    profile.osRulesApplyInsideVolumes = true;
    profile.volumesFolder = "/Volumes";
    profile.bootVolumeName = std::move(bootVolumeName);
    profile.homeLibraryFolder = (home ? std::move(*home) : AppDirectories::homeDirectory()) + "/Library/";
    profile.homeLibraryDocumentFolders = {"CloudStorage", "Mobile Documents"};
    profile.packageExtensions = sharedPackageExtensions();
    profile.alwaysPackageExtension = "framework";
    profile.walkSkippedFolders = {"/Volumes", "/System/Volumes", "/Network"};
    profile.walkSkippedPathParts = {"/Backups.backupdb"};
    profile.systemDiskMarkers = {"System", "Applications"};
    return profile;
}

std::optional<std::string> PlatformProfile::bootVolumePath() const {
    if (!bootVolumeName || bootVolumeName->empty()) return std::nullopt;
    return joinPath(volumesFolder, *bootVolumeName);
}

std::shared_ptr<const PlatformProfile> PlatformProfile::current() {
    return currentProfile().value();
}

std::shared_ptr<const PlatformProfile> PlatformProfile::setCurrent(PlatformProfile profile) {
    auto replacement = std::make_shared<const PlatformProfile>(std::move(profile));
    return currentProfile().access([&](auto& held) { return std::exchange(held, std::move(replacement)); });
}

void PlatformProfile::restoreCurrent(std::shared_ptr<const PlatformProfile> previous) {
    currentProfile().setValue(std::move(previous));
}

}  // namespace quester
