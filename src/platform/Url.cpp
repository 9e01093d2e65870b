#include "platform/Url.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>

#include "platform/MountTable.h"
#include "platform/PlatformProfile.h"
#include "platform/VolumeLabel.h"
#include "support/AppDirectories.h"
#include "support/PathText.h"

namespace quester {
namespace {

constexpr std::string_view kFileScheme = "file://";

bool isAllowedInURLPath(unsigned char c) {
    if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')) return true;
    return std::string_view("-._~!$&'()*+,;=:@/").find(static_cast<char>(c)) != std::string_view::npos;
}

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

std::optional<std::string> percentDecoded(std::string_view text) {
    std::string decoded;
    decoded.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            decoded += text[i];
            continue;
        }
        if (i + 2 >= text.size()) return std::nullopt;
        int high = hexValue(text[i + 1]);
        int low = hexValue(text[i + 2]);
        if (high < 0 || low < 0) return std::nullopt;
        decoded += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return decoded;
}

std::optional<struct statx> statxOf(const std::string& path, unsigned mask) {
    struct statx info {};
    if (path.empty() || statx(AT_FDCWD, path.c_str(), 0, mask, &info) != 0) return std::nullopt;
    return info;
}

std::optional<struct statvfs> statvfsOf(const std::string& path) {
    struct statvfs info {};
    if (path.empty() || statvfs(path.c_str(), &info) != 0) return std::nullopt;
    return info;
}

bool isPackagePath(const std::string& path, const PlatformProfile& profile) {
    std::string extension = pathExtension(path);
    const auto& list = profile.packageExtensions;
    return !extension.empty() && std::find(list.begin(), list.end(), extension) != list.end();
}

bool isMountRoot(const std::string& path) {
    auto info = statxOf(path, STATX_BASIC_STATS);
    if (!info) return false;
    if (info->stx_attributes_mask & STATX_ATTR_MOUNT_ROOT) return (info->stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
    auto mount = Url(path).mountEntry();
    return mount && mount->mountPoint == path;
}

std::optional<bool> isDirectoryOnDisk(const std::string& path) {
    auto info = statxOf(path, STATX_TYPE);
    if (!info) return std::nullopt;
    return S_ISDIR(info->stx_mode);
}

std::optional<bool> isPackage(const Url& url) {
    auto profile = PlatformProfile::current();
    if (url.isDirectory()) return isPackagePath(url.path(), *profile);
    auto directory = isDirectoryOnDisk(url.path());
    if (!directory) return std::nullopt;
    return *directory && isPackagePath(url.path(), *profile);
}

std::optional<bool> volumeIsReadOnly(const std::string& path) {
    auto info = statvfsOf(path);
    if (!info) return std::nullopt;
    return (info->f_flag & ST_RDONLY) != 0;
}

std::optional<std::string> localizedName(const std::string& path) {
    if (!statxOf(path, STATX_TYPE)) return std::nullopt;
    if (isMountRoot(path)) {
        if (auto mount = Url(path).mountEntry()) return VolumeLabel::nameFor(*mount);
    }
    return lastPathComponent(path);
}

std::optional<Url> parentDirectory(const std::string& path) {
    std::string parent = parentPath(path);
    if (parent.empty() || !statxOf(path, STATX_TYPE)) return std::nullopt;
    return Url(parent, true);
}

std::string volumesFolder() {
    return PlatformProfile::current()->volumesFolder;
}

// A volume name read from the path alone, for paths whose volume can't be read.
std::optional<std::string> volumeNameFromText(const std::string& path) {
    std::string folder = volumesFolder();
    if (isStrictlyBelow(path, folder)) {
        std::string rest = path.substr(joinPath(folder, "").size() + 1);
        return rest.substr(0, rest.find('/'));
    }
    auto pieces = pathComponents(path);
    if (pieces.size() < 2) return std::nullopt;
    return pieces.front();
}

std::string expandTilde(const std::string& path) {
    if (path == "~" || path.rfind("~/", 0) == 0) return AppDirectories::homeDirectory() + path.substr(1);
    return path;
}

}  // namespace

template <>
std::optional<bool> Url::value<bool>(URLValues key) const {
    switch (key) {
        case URLValues::isDirectoryKey:
            return isDirectoryOnDisk(filePath);
        case URLValues::isHiddenKey:
            if (!isReachable()) return std::nullopt;
            return lastPathComponent(filePath).rfind('.', 0) == 0;
        case URLValues::isPackageKey:
            return isPackage(*this);
        case URLValues::isVolumeKey:
            if (!isReachable()) return std::nullopt;
            return isMountRoot(filePath);
        case URLValues::isWritableKey:
            if (!isReachable()) return std::nullopt;
            return access(filePath.c_str(), W_OK) == 0;
        case URLValues::volumeIsLocalKey: {
            auto mount = mountEntry();
            if (!mount) return std::nullopt;
            return !mount->isNetwork();
        }
        case URLValues::volumeIsReadOnlyKey:
            return volumeIsReadOnly(filePath);
        default:
            return std::nullopt;
    }
}

template <>
std::optional<std::string> Url::value<std::string>(URLValues key) const {
    switch (key) {
        case URLValues::localizedNameKey:
            return localizedName(filePath);
        case URLValues::volumeLocalizedFormatDescriptionKey:
            return diskFormatRaw();
        default:
            return std::nullopt;
    }
}

template <>
std::optional<Url> Url::value<Url>(URLValues key) const {
    switch (key) {
        case URLValues::parentDirectoryURLKey:
            return parentDirectory(filePath);
        case URLValues::volumeURLKey: {
            auto mount = mountEntry();
            if (!mount) return std::nullopt;
            return Url(mount->mountPoint, true);
        }
        default:
            return std::nullopt;
    }
}

std::optional<Url> Url::bootVolumeURL() {
    auto path = PlatformProfile::current()->bootVolumePath();
    if (!path) return std::nullopt;
    return Url(*path, true);
}

std::string Url::correctRootBasedPath(const std::string& path) {
    auto boot = bootVolumeURL();
    if (!boot || path.empty() || path.front() != '/' || isStrictlyBelow(path, volumesFolder())) return path;
    std::string rest = path;
    const std::string& dataPrefix = PlatformProfile::current()->dataVolumePrefix;
    if (!dataPrefix.empty() && rest.rfind(dataPrefix, 0) == 0) rest = rest.substr(dataPrefix.size());
    return joinPath(boot->path(), rest);
}

std::vector<Url> Url::namedBootVolumeURLsToSlashRoot(const std::vector<Url>& urls) {
    auto boot = bootVolumeURL();
    std::vector<Url> result;
    bool removed = false;
    for (const auto& url : urls) {
        if (boot && url == *boot) {
            removed = true;
        } else {
            result.push_back(url);
        }
    }
    if (removed) result.insert(result.begin(), Url("/", true));
    return result;
}

std::vector<Url> Url::fixBootVolumeURLs(const std::vector<Url>& urls) {
    auto boot = bootVolumeURL();
    if (!boot) return urls;
    std::vector<Url> result{*boot};
    std::copy_if(urls.begin(), urls.end(), std::back_inserter(result),
                 [](const Url& url) { return url.path() != "/"; });
    return result;
}

std::optional<Url> Url::URLForFileWhichExists(const std::string& path) {
    std::string expanded = expandTilde(path);
    auto directory = isDirectoryOnDisk(expanded);
    if (!directory) return std::nullopt;
    return Url(expanded, *directory);
}

std::optional<Url> Url::volume() const {
    return value<Url>(URLValues::volumeURLKey);
}

Url Url::disk() const {
    auto mountPoint = volume();
    if (!mountPoint) return *this;
    if (mountPoint->path() == "/") {
        if (auto boot = bootVolumeURL()) return *boot;
    }
    return *mountPoint;
}

std::optional<std::string> Url::volumeName() const {
    Url diskURL = disk();
    if (auto mount = diskURL.mountEntry()) return VolumeLabel::nameFor(*mount);
    return volumeNameFromText(diskURL.path());
}

std::optional<std::string> Url::diskFormatRaw() const {
    auto mount = mountEntry();
    if (!mount || mount->fsType.empty()) return std::nullopt;
    return mount->fsType;
}

bool Url::isMacFormatted() const {
    auto format = diskFormatRaw();
    return format && (*format == "apfs" || *format == "hfs" || *format == "hfsplus");
}

bool Url::isReachable() const {
    return statxOf(filePath, STATX_TYPE).has_value();
}

std::string Url::displayName() const {
    if (auto name = value<std::string>(URLValues::localizedNameKey)) return *name;
    return lastPathComponent(filePath);
}

std::string Url::displayPath() const {
    std::string folder = volumesFolder();
    if (!isStrictlyBelow(filePath, folder)) return filePath;
    return filePath.substr(joinPath(folder, "").size());
}

std::optional<MountEntry> Url::mountEntry() const {
    auto info = statxOf(filePath, STATX_TYPE | STATX_MNT_ID);
    if (!info) return std::nullopt;
    auto table = MountTable::current();
    if (!table) return std::nullopt;
    const MountEntry* entry =
        (info->stx_mask & STATX_MNT_ID) ? table->entryWithID(static_cast<int>(info->stx_mnt_id)) : nullptr;
    if (entry == nullptr) entry = table->entryContaining(filePath);
    if (entry == nullptr) return std::nullopt;
    return *entry;
}

std::optional<std::uint64_t> Url::volumeTotalCapacity() const {
    auto info = statvfsOf(filePath);
    if (!info) return std::nullopt;
    return static_cast<std::uint64_t>(info->f_blocks) * info->f_frsize;
}

std::string fileURLString(const Url& url) {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string text(kFileScheme);
    for (unsigned char c : url.path()) {
        if (isAllowedInURLPath(c)) {
            text += static_cast<char>(c);
        } else {
            text += '%';
            text += digits[c >> 4];
            text += digits[c & 0x0F];
        }
    }
    if (url.isDirectory() && !url.path().ends_with('/')) text += '/';
    return text;
}

std::optional<Url> urlFromFileURLString(std::string_view text) {
    if (!text.starts_with(kFileScheme)) return std::nullopt;
    auto path = percentDecoded(text.substr(kFileScheme.size()));
    if (!path || !path->starts_with('/')) return std::nullopt;
    bool isDirectory = path->size() > 1 && path->ends_with('/');
    if (isDirectory) path->pop_back();
    return Url(*path, isDirectory);
}

}  // namespace quester
