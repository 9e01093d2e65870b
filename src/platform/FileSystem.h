#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/FileStatus.h"
#include "support/Result.h"

namespace quester {

class MountTable;

// An open folder, for listing it and for reaching the items in it by name.
// Made by a `FileSystem` and handed back only to the one that made it. Closed
// when destroyed. Listing is for one thread at a time; opening and statting
// what lies in it may come from several threads at once.
class DirectoryHandle {
public:
    virtual ~DirectoryHandle() = default;
    DirectoryHandle(const DirectoryHandle&) = delete;
    DirectoryHandle& operator=(const DirectoryHandle&) = delete;

    // The folder's path as it was reached, for messages and for the fault double.
    const std::string& path() const { return folderPath; }

protected:
    explicit DirectoryHandle(std::string path) : folderPath(std::move(path)) {}

private:
    std::string folderPath;
};

// A file being written. Closed (without flushing to the disk) when destroyed.
// One thread at a time.
class WritableFile {
public:
    virtual ~WritableFile() = default;
    WritableFile(const WritableFile&) = delete;
    WritableFile& operator=(const WritableFile&) = delete;

    // Writes all of `bytes` at the end; ioError with the system's reason when
    // they can't all be written (some may have been).
    virtual Status append(std::string_view bytes) = 0;
    // Waits until what was written is on the disk.
    virtual Status sync() = 0;
    // Closes the file; later calls fail. A failed close means the data may be lost.
    virtual Status close() = 0;

    const std::string& path() const { return filePath; }

protected:
    explicit WritableFile(std::string path) : filePath(std::move(path)) {}

private:
    std::string filePath;
};

// One entry of a folder listing. `name` points into the caller's buffer and
// stays valid until the next read of the same folder.
struct DirectoryEntry {
    const char* name = nullptr;
    FileKind kind = FileKind::unknown;
};

// Total and free bytes and the number of file slots of a file system.
struct VolumeSpace {
    std::uint64_t totalBytes = 0;
    std::uint64_t availableBytes = 0;
    std::uint64_t fileSlots = 0;
};

// Every call of the program that touches files goes through this interface,
// so that tests can swap in a double that makes files vanish, folders turn
// unreadable, reads and writes fail or a disk go away. `real()` is the
// process's own, over the Linux system calls.
//
// Every operation is safe from any thread at once (handles are not: one
// thread at a time each). Nothing throws: failures come back as a `Result`
// or `Status` with `notFound` for a missing item, `permissionDenied`, or
// `ioError` (and `unsupported` where the file system lacks a feature), with
// the system's reason in the message. Symbolic links are followed unless a
// function says otherwise.
class FileSystem {
public:
    static constexpr std::size_t unlimited = static_cast<std::size_t>(-1);

    virtual ~FileSystem() = default;

    // The process's file system. Lives for the whole run.
    static FileSystem& real();

    // Opens a folder for listing; invalidArgument when `path` is no folder.
    // A path of any length works: one beyond the system's limit is opened a
    // piece at a time.
    virtual Result<std::unique_ptr<DirectoryHandle>> openDirectory(const std::string& path) = 0;
    // Opens the folder `name` inside `parent` without following a symbolic
    // link, so depth costs nothing and a link can't lead the walk elsewhere.
    virtual Result<std::unique_ptr<DirectoryHandle>> openDirectoryAt(DirectoryHandle& parent,
                                                                     std::string_view name) = 0;
    // Reads the next entries of `directory` into `batch` (emptied first),
    // "." and ".." left out, with their names kept in `buffer`. An empty batch
    // means the end. A failure part way leaves what came before delivered.
    virtual Status readEntries(DirectoryHandle& directory, std::span<std::byte> buffer,
                               std::vector<DirectoryEntry>& batch) = 0;
    // The status of `name` inside `directory`, not following a symbolic link.
    // notFound when the entry went away since it was listed.
    virtual Result<FileStatus> statusAt(DirectoryHandle& directory, const char* name) = 0;
    // The status of `path`; with `followLinks` false a link answers for itself.
    virtual Result<FileStatus> status(const std::string& path, bool followLinks = true) = 0;

    // The first `maxBytes` bytes of a file (all of it by default); fewer when
    // the file is shorter.
    Result<std::string> readFile(const std::string& path, std::size_t maxBytes = unlimited);
    // The same read into the start of `buffer`, which is left at least as long
    // as what was read and is grown only when too short: one buffer serves
    // file after file without being made, filled with zeros or freed again.
    virtual Result<std::string_view> readFileInto(const std::string& path, std::string& buffer,
                                                  std::size_t maxBytes = unlimited) = 0;
    // Makes a new file with a unique name beside `path` (its name followed by
    // a dot and six characters), with the given permissions, for writing.
    virtual Result<std::unique_ptr<WritableFile>> createTemporaryFile(const std::string& path,
                                                                      std::uint32_t permissions) = 0;
    // Opens a file for appending, making it with mode 0644 when missing.
    virtual Result<std::unique_ptr<WritableFile>> openForAppending(const std::string& path) = 0;
    // Puts `from` in the place of `to` in one step, replacing what was there.
    virtual Status rename(const std::string& from, const std::string& to) = 0;
    // Removes a file (not a folder); notFound when there is none.
    virtual Status removeFile(const std::string& path) = 0;
    // Makes the folder and the missing folders above it; a folder that is
    // already there is no error.
    virtual Status createDirectories(const std::string& path) = 0;
    // Sets the file's content modification time (the access time is left
    // alone). The file system may round it: read it back to know what it kept.
    virtual Status setModificationTime(const std::string& path, FileTime time) = 0;

    // The value of one extended attribute; notFound when the item has none of that name.
    virtual Result<std::string> extendedAttribute(const std::string& path, const std::string& name) = 0;
    // The names of the item's extended attributes.
    virtual Result<std::vector<std::string>> extendedAttributeNames(const std::string& path) = 0;
    // Sets one extended attribute, replacing its value if it has one;
    // unsupported where the file system keeps none.
    virtual Status setExtendedAttribute(const std::string& path, const std::string& name, std::string_view value) = 0;

    // The process's mount table now.
    virtual Result<MountTable> mountTable() = 0;
    // Space of the file system that holds `path`.
    virtual Result<VolumeSpace> volumeSpace(const std::string& path) = 0;
};

}  // namespace quester
