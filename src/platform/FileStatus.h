#pragma once

#include <cstdint>

namespace quester {

// A point in time as the file system gives it.
struct FileTime {
    std::int64_t seconds = 0;
    std::uint32_t nanoseconds = 0;

    bool operator==(const FileTime&) const = default;
};

// The device an item lives on, as its major and minor numbers.
struct FileSystemId {
    std::uint32_t major = 0;
    std::uint32_t minor = 0;

    bool operator==(const FileSystemId&) const = default;
};

// What an item is. `unknown` comes only from a listing whose file system
// doesn't tell the type with the name; a status always knows it.
enum class FileKind : std::uint8_t { regular, directory, symbolicLink, other, unknown };

// The attributes of one item, as one statx gives them.
struct FileStatus {
    FileKind kind = FileKind::unknown;
    std::uint32_t permissions = 0;  // the mode's low twelve bits
    std::uint64_t size = 0;
    FileTime modifyTime;
    // Birth time; where the file system keeps none, the earlier of change and modification.
    FileTime createTime;
    FileTime accessTime;
    // Set by the system at every change to the file or its status; no one can
    // set it back.
    FileTime changeTime;
    FileSystemId device;
    std::uint64_t inode = 0;

    bool isDirectory() const { return kind == FileKind::directory; }
    bool isRegular() const { return kind == FileKind::regular; }
};

}  // namespace quester
