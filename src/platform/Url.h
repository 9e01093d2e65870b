#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/MountEntry.h"
#include "platform/URLValues.h"

namespace quester {

// A file URL: an absolute UTF-8 path and whether it names a directory. A plain
// value; equal when the paths are equal. Operations that read the file system
// answer none (or false) on any error, and use `PlatformProfile::current()`
// for the path rules. Thread-safe.
class Url {
public:
    Url() = default;
    explicit Url(std::string path, bool isDirectory = false) : filePath(std::move(path)), directory(isDirectory) {}

    const std::string& path() const { return filePath; }
    bool isDirectory() const { return directory; }
    bool operator==(const Url& other) const { return filePath == other.filePath; }

    // One attribute, read now. Defined for bool, std::string and Url; asking
    // for a key of another type answers none.
    template <typename T>
    std::optional<T> value(URLValues key) const;

    // "/" under its second spelling ("/Volumes/<name>"), when the profile has one.
    static std::optional<Url> bootVolumeURL();
    // An absolute path outside the volumes folder, spelled from the boot volume.
    static std::string correctRootBasedPath(const std::string& path);
    // The list without `bootVolumeURL`; "/" first when any was removed.
    static std::vector<Url> namedBootVolumeURLsToSlashRoot(const std::vector<Url>& urls);
    // `bootVolumeURL` first and no "/"; the list as it came with no boot volume name.
    static std::vector<Url> fixBootVolumeURLs(const std::vector<Url>& urls);
    // Expands a leading "~" and answers the URL only if the file is reachable.
    static std::optional<Url> URLForFileWhichExists(const std::string& path);

    // The mount point of the volume this lies on, in its boot-volume spelling;
    // the URL itself when its volume can't be read.
    Url disk() const;
    std::optional<Url> volume() const;
    // The name of `disk()`, else a name taken from the path's text.
    std::optional<std::string> volumeName() const;
    // The file system type of the volume ("ext4", "nfs4", ...).
    std::optional<std::string> diskFormatRaw() const;
    bool isMacFormatted() const;
    bool isReachable() const;
    std::string displayName() const;
    // The path without a leading volumes folder.
    std::string displayPath() const;

    // The mount that holds this path, found through statx's mount id.
    std::optional<MountEntry> mountEntry() const;
    // Total bytes of the volume this lies on (statvfs).
    std::optional<std::uint64_t> volumeTotalCapacity() const;

private:
    std::string filePath;
    bool directory = false;
};

template <>
std::optional<bool> Url::value<bool>(URLValues key) const;
template <>
std::optional<std::string> Url::value<std::string>(URLValues key) const;
template <>
std::optional<Url> Url::value<Url>(URLValues key) const;

// The "file://" URL text of a path, percent-encoded, "/" behind a directory.
std::string fileURLString(const Url& url);
// The URL of a "file://" text; none for anything else.
std::optional<Url> urlFromFileURLString(std::string_view text);

}  // namespace quester

// Urls are equal by their paths, so they hash by them too.
template <>
struct std::hash<quester::Url> {
    std::size_t operator()(const quester::Url& url) const noexcept { return std::hash<std::string>()(url.path()); }
};
