#include "platform/FSUtilities.h"

#include <sys/statvfs.h>
#include <sys/xattr.h>

#include <algorithm>

#include "platform/MountTable.h"
#include "platform/VolumeLabel.h"
#include "support/PathText.h"

namespace quester {
namespace {

bool startsWith(const std::string& text, const std::string& prefix) {
    return !prefix.empty() && text.compare(0, prefix.size(), prefix) == 0;
}

bool readsAsPackage(const std::string& directoryPath) {
    return Url(directoryPath, true).value<bool>(URLValues::isPackageKey).value_or(false);
}

std::vector<std::string> volumeMountPoints(const PlatformProfile& profile) {
    std::vector<std::string> paths;
    if (auto table = MountTable::read()) {
        for (const auto& entry : table->volumes(profile)) paths.push_back(entry.mountPoint);
    }
    return paths;
}

}  // namespace

FSUtilities::FSUtilities(PlatformProfile profile, PackageProbe probe)
    : platform(std::move(profile)), packageProbe(probe ? std::move(probe) : PackageProbe(readsAsPackage)) {}

FSUtilities& FSUtilities::shared() {
    static FSUtilities* instance = [] {
        auto* made = new FSUtilities(*PlatformProfile::current());
        made->setKnownVolumePaths(volumeMountPoints(made->profile()));
        return made;
    }();
    return *instance;
}

std::string FSUtilities::stripVolumeForOSRules(const std::string& path) const {
    std::string folder = joinPath(platform.volumesFolder, "") + "/";
    if (!platform.osRulesApplyInsideVolumes || !startsWith(path, folder)) return path;
    std::string rest = path.substr(folder.size());
    auto slash = rest.find('/');
    return slash == std::string::npos ? rest : rest.substr(slash);
}

bool FSUtilities::hasOSPrefix(const std::string& path) const {
    return std::any_of(
        platform.osDirectoryPrefixes.begin(), platform.osDirectoryPrefixes.end(), [&](const auto& prefix) {
            return platform.osPrefixesAreWholeComponents ? isSameOrBelow(path, prefix) : startsWith(path, prefix);
        });
}

// The answer of the home Library folder rule; none when the rule doesn't apply.
std::optional<bool> FSUtilities::homeLibraryRule(const std::string& path) const {
    if (!platform.homeLibraryFolder || !startsWith(path, *platform.homeLibraryFolder)) return std::nullopt;
    const auto& documents = platform.homeLibraryDocumentFolders;
    return std::none_of(documents.begin(), documents.end(),
                        [&](const auto& folder) { return startsWith(path, *platform.homeLibraryFolder + folder); });
}

bool FSUtilities::isInsideOSDirectory(const std::string& fullPath) const {
    std::string path = fullPath;
    while (true) {
        if (startsWith(path, platform.systemApplicationsPrefix)) return false;
        if (!startsWith(path, platform.dataVolumePrefix)) break;
        path = path.substr(platform.dataVolumePrefix.size());
    }
    path = stripVolumeForOSRules(path);
    const auto& never = platform.neverOSDirectories;
    if (std::any_of(never.begin(), never.end(), [&](const auto& folder) { return isSameOrBelow(path, folder); })) {
        return false;
    }
    if (hasOSPrefix(path)) return true;
    const auto& exact = platform.osExactPaths;
    if (std::find(exact.begin(), exact.end(), path) != exact.end()) return true;
    return homeLibraryRule(path).value_or(false);
}

bool FSUtilities::isPackageComponent(const std::string& extension, const std::string& runningPath) {
    auto cached = cachedPackageExtension(extension);
    if (cached) return *cached;
    bool package = packageProbe(runningPath);
    packageExtensionCache.access([&](auto& cache) { cache.emplace(extension, package); });
    return package;
}

// The components of an application folder that holds the path don't count:
// the user's own applications lie under a dot folder and are still wanted.
std::size_t FSUtilities::componentsOfApplicationFolder(const std::string& path) const {
    std::size_t skipped = 0;
    for (const auto& folder : platform.applicationFolders) {
        if (isSameOrBelow(path, folder)) skipped = std::max(skipped, pathComponentCount(folder));
    }
    return skipped;
}

bool FSUtilities::isInvisibleOrInsidePackage(const std::string& path) {
    return isInvisibleOrInsidePackageFrom(path, componentsOfApplicationFolder(path));
}

// The rule for the components from `first` on; those before it only make up the running path.
bool FSUtilities::isInvisibleOrInsidePackageFrom(const std::string& path, std::size_t first) {
    auto components = pathComponents(path);
    std::string runningPath = "/";
    for (std::size_t index = 0; index < first && index < components.size(); ++index) {
        runningPath += components[index] + '/';
    }
    for (std::size_t index = first; index < components.size(); ++index) {
        const std::string& component = components[index];
        if (component.front() == '.') return true;
        runningPath += component;
        std::string extension = pathExtension(component);
        if (!extension.empty()) {
            if (extension == platform.alwaysPackageExtension) return true;
            bool isLast = index + 1 == components.size();
            if (isPackageComponent(extension, runningPath) && !isLast) return true;
        }
        runningPath += '/';
    }
    return false;
}

bool FSUtilities::isHiddenFromSearch(const std::string& path, const std::vector<std::string>& searchedFolders) {
    const std::string* base = nullptr;
    for (const auto& folder : searchedFolders) {
        if (isSameOrBelow(path, folder) && (base == nullptr || folder.size() > base->size())) base = &folder;
    }
    if (base == nullptr) return isInsideOSDirectory(path) || isInvisibleOrInsidePackage(path);
    if (!isStrictlyBelow(path, *base)) return false;
    if (!isInsideOSDirectory(*base) && isInsideOSDirectory(path)) return true;
    const std::size_t first = std::max(pathComponentCount(*base), componentsOfApplicationFolder(path));
    return isInvisibleOrInsidePackageFrom(path, first);
}

bool FSUtilities::hasPackageExtension(const std::string& path) {
    std::string extension = pathExtension(path);
    if (extension.empty()) return false;
    if (auto cached = cachedPackageExtension(extension)) return *cached;
    static_cast<void>(isInvisibleOrInsidePackage(path));
    return cachedPackageExtension(extension).value_or(false);
}

std::optional<bool> FSUtilities::cachedPackageExtension(const std::string& extension) const {
    return packageExtensionCache.access([&](const auto& cache) -> std::optional<bool> {
        auto found = cache.find(extension);
        if (found == cache.end()) return std::nullopt;
        return found->second;
    });
}

bool FSUtilities::isBackupDisk(const Url& url) const {
    return Url(joinPath(url.path(), "Backups.backupdb")).isReachable() ||
           Url(joinPath(url.path(), "backup_manifest.plist")).isReachable();
}

std::string FSUtilities::diskPathFromFullPath(const std::string& path) const {
    const std::string& folder = platform.volumesFolder;
    if (isStrictlyBelow(path, folder)) {
        std::string prefix = joinPath(folder, "") + "/";
        std::string rest = path.substr(prefix.size());
        auto slash = rest.find('/');
        return slash == std::string::npos ? path : prefix + rest.substr(0, slash);
    }
    return knownVolumePaths.access([&](const auto& paths) {
        std::string best = "/";
        for (const auto& volume : paths) {
            if (isSameOrBelow(path, volume) && volume.size() > best.size()) best = volume;
        }
        return best;
    });
}

std::string FSUtilities::keyForDisk(const Url& url) const {
    auto mount = url.mountEntry();
    return mount ? keyForMount(*mount) : std::string();
}

std::string FSUtilities::keyForMount(const MountEntry& mount) {
    auto capacity = Url(mount.mountPoint, true).volumeTotalCapacity();
    if (!capacity) return {};
    std::string format = mount.fsType.empty() ? std::string("unknown") : mount.fsType;
    return VolumeLabel::nameFor(mount) + " " + std::to_string(*capacity) + " " + format;
}

bool FSUtilities::isDiskPresent(const std::string& path, const std::string& diskKey) const {
    return !diskKey.empty() && keyForDisk(Url(path, true)) == diskKey;
}

std::optional<bool> FSUtilities::isDiskAPFS(const std::string& path) const {
    auto mount = Url(path).mountEntry();
    if (!mount) return std::nullopt;
    return mount->fsType == "apfs";
}

// statvfs has no count of folders apart from files: every count is the number
// of inodes in use, an upper bound of each, which is close enough to size a
// progress bar. File systems that keep no inode count give none.
std::optional<VolumeObjectCounts> FSUtilities::volumeObjectCounts(const Url& url) const {
    struct statvfs info {};
    if (statvfs(url.path().c_str(), &info) != 0 || info.f_files == 0) return std::nullopt;
    std::uint64_t used = info.f_files - info.f_ffree;
    return VolumeObjectCounts{used, used, used};
}

std::vector<std::string> FSUtilities::listExtendedAttributes(const std::string& path) const {
    ssize_t size = listxattr(path.c_str(), nullptr, 0);
    if (size <= 0) return {};
    std::string buffer(static_cast<std::size_t>(size), '\0');
    size = listxattr(path.c_str(), buffer.data(), buffer.size());
    if (size <= 0) return {};
    buffer.resize(static_cast<std::size_t>(size));
    return splitNonEmpty(buffer, '\0');
}

void FSUtilities::setKnownVolumePaths(std::vector<std::string> paths) {
    knownVolumePaths.setValue(std::move(paths));
}

}  // namespace quester
