#pragma once

#include "platform/FileSystem.h"

namespace quester {

// The file system through the Linux system calls: getdents64 and statx
// relative to an open folder, openat for folders below one, mkostemp and
// rename for new files, the xattr calls, libmount for the mount table.
// Stateless and thread-safe; `FileSystem::real()` is one of these.
class LinuxFileSystem final : public FileSystem {
public:
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
};

}  // namespace quester
