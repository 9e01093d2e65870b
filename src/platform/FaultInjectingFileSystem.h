#pragma once

#include <optional>
#include <set>
#include <string>

#include "platform/FileSystem.h"
#include "platform/MountTable.h"
#include "support/Locked.h"

namespace quester {

// A file system for tests that passes every call to another one (the real one
// by default) unless a fault set here says otherwise: a file that vanishes
// between its listing and its status, a folder that can't be opened though
// its parent lists it, a listing that breaks, writes that fail once some
// bytes are written, a disk that goes away, a mount table of the test's own.
// Faults may be set from any thread, also while a walk runs.
class FaultInjectingFileSystem final : public FileSystem {
public:
    explicit FaultInjectingFileSystem(FileSystem& inner = FileSystem::real()) : inner(inner) {}

    // The item is listed in its folder but is gone when asked for its status or contents.
    void makeVanish(const std::string& path);
    // The folder can't be opened (nor the file read): permission denied.
    void makeUnreadable(const std::string& path);
    // Reading the folder's entries fails with an input/output error.
    void breakListing(const std::string& path);
    // Every file being written takes `bytes` more bytes in all, then fails as a full disk does.
    void failWritesAfter(std::size_t bytes);
    // Everything at or below `mountPoint` fails as a device that went away.
    void removeDisk(const std::string& mountPoint);
    // `mountTable()` answers this table instead of the inner one's.
    void setMountTable(MountTable table);
    // Modification times set from now on are cut to whole multiples of
    // `seconds`, as FAT (2 seconds) and some network file systems keep them.
    void roundModificationTimes(std::int64_t seconds);

    Result<std::unique_ptr<DirectoryHandle>> openDirectory(const std::string& path) override;
    Result<std::unique_ptr<DirectoryHandle>> openDirectoryAt(DirectoryHandle& parent, std::string_view name) override;
    Status readEntries(DirectoryHandle& directory, std::span<std::byte> buffer,
                       std::vector<DirectoryEntry>& batch) override;
    Result<FileStatus> statusAt(DirectoryHandle& directory, const char* name) override;
    Result<FileStatus> status(const std::string& path, bool followLinks) override;

    Result<std::string_view> readFileInto(const std::string& path, std::string& buffer, std::size_t maxBytes) override;
    Result<std::unique_ptr<WritableFile>> createTemporaryFile(const std::string& path,
                                                              std::uint32_t permissions) override;
    Result<std::unique_ptr<WritableFile>> openForAppending(const std::string& path) override;
    Status rename(const std::string& from, const std::string& to) override;
    Status removeFile(const std::string& path) override;
    Status createDirectories(const std::string& path) override;
    Status setModificationTime(const std::string& path, FileTime time) override;

    Result<std::string> extendedAttribute(const std::string& path, const std::string& name) override;
    Result<std::vector<std::string>> extendedAttributeNames(const std::string& path) override;
    Status setExtendedAttribute(const std::string& path, const std::string& name, std::string_view value) override;

    Result<MountTable> mountTable() override;
    Result<VolumeSpace> volumeSpace(const std::string& path) override;

private:
    struct Faults {
        std::set<std::string> vanished;
        std::set<std::string> unreadable;
        std::set<std::string> brokenListings;
        std::set<std::string> removedDisks;
        std::optional<std::size_t> writableBytes;
        std::optional<MountTable> mountTable;
        std::int64_t timeGranularity = 0;
    };

    // The injected failure for an operation on `path`, if any: a removed disk first, then `inSet`.
    std::optional<Error> faultFor(const std::string& path, std::set<std::string> Faults::*inSet, ErrorCode code) const;
    std::optional<Error> diskFault(const std::string& path) const;
    Result<std::unique_ptr<DirectoryHandle>> wrapped(Result<std::unique_ptr<DirectoryHandle>> opened);
    Result<std::unique_ptr<WritableFile>> wrapped(Result<std::unique_ptr<WritableFile>> opened);

    FileSystem& inner;
    Locked<Faults> faults;

    friend class FaultyWritableFile;
};

}  // namespace quester
