#include "platform/LinuxFileSystem.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platform/MountTable.h"
#include "support/PathText.h"

namespace quester {
namespace {

constexpr unsigned kStatusMask =
    STATX_TYPE | STATX_MODE | STATX_SIZE | STATX_BTIME | STATX_MTIME | STATX_ATIME | STATX_CTIME | STATX_INO;
constexpr int kDirectoryFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

ErrorCode codeForErrno(int code) {
    switch (code) {
        case ENOENT:
        case ENODATA:
            return ErrorCode::notFound;
        case EACCES:
        case EPERM:
            return ErrorCode::permissionDenied;
        case ENOTDIR:
            return ErrorCode::invalidArgument;
        case ENOTSUP:
            return ErrorCode::unsupported;
        default:
            return ErrorCode::ioError;
    }
}

// The failure of the last system call, with `errno` read before anything else can change it.
Error systemError(const char* what, const std::string& path) {
    const int code = errno;
    return makeError(codeForErrno(code), std::string(what) + " " + path + ": " + std::strerror(code) + " (errno " +
                                             std::to_string(code) + ")");
}

class LinuxDirectory final : public DirectoryHandle {
public:
    LinuxDirectory(std::string path, int fd) : DirectoryHandle(std::move(path)), fd(fd) {}
    ~LinuxDirectory() override { ::close(fd); }

    const int fd;
};

int descriptorOf(DirectoryHandle& directory) {
    return static_cast<LinuxDirectory&>(directory).fd;
}

class LinuxWritableFile final : public WritableFile {
public:
    LinuxWritableFile(std::string path, int fd) : WritableFile(std::move(path)), fd(fd) {}
    ~LinuxWritableFile() override {
        if (fd >= 0) ::close(fd);
    }

    Status append(std::string_view bytes) override {
        while (!bytes.empty()) {
            const ssize_t count = ::write(fd, bytes.data(), bytes.size());
            if (count < 0 && errno == EINTR) continue;
            if (count < 0) return systemError("cannot write", path());
            bytes.remove_prefix(static_cast<std::size_t>(count));
        }
        return Status::success();
    }
    Status sync() override {
        return ::fsync(fd) == 0 ? Status::success() : Status(systemError("cannot flush", path()));
    }
    Status close() override {
        const int closing = std::exchange(fd, -1);
        return ::close(closing) == 0 ? Status::success() : Status(systemError("cannot close", path()));
    }

private:
    int fd;
};

FileKind kindOfMode(unsigned mode) {
    if (S_ISREG(mode)) return FileKind::regular;
    if (S_ISDIR(mode)) return FileKind::directory;
    if (S_ISLNK(mode)) return FileKind::symbolicLink;
    return FileKind::other;
}

FileKind kindOfType(unsigned char type) {
    switch (type) {
        case DT_REG:
            return FileKind::regular;
        case DT_DIR:
            return FileKind::directory;
        case DT_LNK:
            return FileKind::symbolicLink;
        case DT_UNKNOWN:
            return FileKind::unknown;
        default:
            return FileKind::other;
    }
}

FileTime fileTime(const struct statx_timestamp& stamp) {
    return FileTime{stamp.tv_sec, stamp.tv_nsec};
}

bool isEarlier(const FileTime& a, const FileTime& b) {
    return a.seconds < b.seconds || (a.seconds == b.seconds && a.nanoseconds < b.nanoseconds);
}

FileStatus statusOf(const struct statx& info) {
    FileStatus status;
    status.kind = kindOfMode(info.stx_mode);
    status.permissions = info.stx_mode & 07777;
    status.size = info.stx_size;
    status.modifyTime = fileTime(info.stx_mtime);
    status.accessTime = fileTime(info.stx_atime);
    status.changeTime = fileTime(info.stx_ctime);
    if (info.stx_mask & STATX_BTIME)
        status.createTime = fileTime(info.stx_btime);
    else
        status.createTime = isEarlier(status.changeTime, status.modifyTime) ? status.changeTime : status.modifyTime;
    status.device = FileSystemId{info.stx_dev_major, info.stx_dev_minor};
    status.inode = info.stx_ino;
    return status;
}

std::string childPath(const std::string& folder, std::string_view name) {
    std::string path = folder;
    if (path.empty() || path.back() != '/') path += '/';
    return path.append(name);
}

// A path too long for one call, opened one component at a time from "/" (or
// the working folder), following links as a single open would.
Result<std::unique_ptr<DirectoryHandle>> openDirectoryInPieces(const std::string& path) {
    int fd = ::open(path.front() == '/' ? "/" : ".", kDirectoryFlags);
    if (fd < 0) return systemError("cannot open", path);
    for (const auto& component : pathComponents(path)) {
        const int next = ::openat(fd, component.c_str(), kDirectoryFlags);
        ::close(fd);
        if (next < 0) return systemError("cannot open", path);
        fd = next;
    }
    return std::unique_ptr<DirectoryHandle>(std::make_unique<LinuxDirectory>(path, fd));
}

}  // namespace

FileSystem& FileSystem::real() {
    static auto* const process = new LinuxFileSystem();
    return *process;
}

Result<std::string> FileSystem::readFile(const std::string& path, std::size_t maxBytes) {
    std::string bytes;
    Result<std::string_view> read = readFileInto(path, bytes, maxBytes);
    if (!read) return read.error();
    bytes.resize(read->size());
    return bytes;
}

Result<std::unique_ptr<DirectoryHandle>> LinuxFileSystem::openDirectory(const std::string& path) {
    if (path.empty()) return makeError(ErrorCode::invalidArgument, "cannot open an empty path");
    const int fd = ::open(path.c_str(), kDirectoryFlags);
    if (fd < 0 && errno == ENAMETOOLONG) return openDirectoryInPieces(path);
    if (fd < 0) return systemError("cannot open", path);
    return std::unique_ptr<DirectoryHandle>(std::make_unique<LinuxDirectory>(path, fd));
}

Result<std::unique_ptr<DirectoryHandle>> LinuxFileSystem::openDirectoryAt(DirectoryHandle& parent,
                                                                          std::string_view name) {
    std::string path = childPath(parent.path(), name);
    const int fd =
        ::openat(descriptorOf(parent), path.c_str() + path.size() - name.size(), kDirectoryFlags | O_NOFOLLOW);
    if (fd < 0) return systemError("cannot open", path);
    return std::unique_ptr<DirectoryHandle>(std::make_unique<LinuxDirectory>(std::move(path), fd));
}

Status LinuxFileSystem::readEntries(DirectoryHandle& directory, std::span<std::byte> buffer,
                                    std::vector<DirectoryEntry>& batch) {
    batch.clear();
    ssize_t filled;
    do {
        filled = ::getdents64(descriptorOf(directory), buffer.data(), buffer.size());
    } while (filled < 0 && errno == EINTR);
    if (filled < 0) return systemError("cannot list", directory.path());
    for (ssize_t offset = 0; offset < filled;) {
        const auto* entry = reinterpret_cast<const struct dirent64*>(buffer.data() + offset);
        offset += entry->d_reclen;
        const char* name = entry->d_name;
        if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'))) continue;
        batch.push_back(DirectoryEntry{name, kindOfType(entry->d_type)});
    }
    // A folder whose remaining entries are all "." and ".." reads on until the end.
    if (batch.empty() && filled > 0) return readEntries(directory, buffer, batch);
    return Status::success();
}

Result<FileStatus> LinuxFileSystem::statusAt(DirectoryHandle& directory, const char* name) {
    struct statx info;
    if (::statx(descriptorOf(directory), name, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT, kStatusMask, &info) != 0) {
        return systemError("cannot read the status of", childPath(directory.path(), name));
    }
    return statusOf(info);
}

Result<FileStatus> LinuxFileSystem::status(const std::string& path, bool followLinks) {
    struct statx info;
    const int flags = AT_NO_AUTOMOUNT | (followLinks ? 0 : AT_SYMLINK_NOFOLLOW);
    if (::statx(AT_FDCWD, path.c_str(), flags, kStatusMask, &info) == 0) return statusOf(info);
    if (errno != ENAMETOOLONG) return systemError("cannot read the status of", path);
    auto folder = openDirectory(parentPath(path));
    if (!folder) return folder.error();
    if (::statx(descriptorOf(**folder), lastPathComponent(path).c_str(), flags, kStatusMask, &info) != 0) {
        return systemError("cannot read the status of", path);
    }
    return statusOf(info);
}

// Reads straight into the buffer, sized by the file's status: a file that
// gives exactly the size it stated, and not the byte asked past it, has
// ended, so that a small file costs one read. Anything else (a file that
// grew, or one of /proc, which states no size) is read until the end.
Result<std::string_view> LinuxFileSystem::readFileInto(const std::string& path, std::string& buffer,
                                                       std::size_t maxBytes) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return systemError("cannot open", path);
    struct stat info {};
    const bool regular = ::fstat(fd, &info) == 0 && S_ISREG(info.st_mode) && info.st_size > 0;
    const std::size_t expected = regular ? static_cast<std::size_t>(info.st_size) : 0;
    std::size_t filled = 0;
    while (filled < maxBytes) {
        const std::size_t room = std::min(maxBytes, filled < expected ? expected + 1 : filled + 65536);
        if (buffer.size() < room) buffer.resize(room);
        const ssize_t count = ::read(fd, buffer.data() + filled, room - filled);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) {
            Error failure = systemError("cannot read", path);
            ::close(fd);
            return failure;
        }
        filled += static_cast<std::size_t>(count);
        if (count == 0 || (regular && filled == expected && filled < room)) break;
    }
    ::close(fd);
    return std::string_view(buffer.data(), filled);
}

Result<std::unique_ptr<WritableFile>> LinuxFileSystem::createTemporaryFile(const std::string& path,
                                                                           std::uint32_t permissions) {
    std::string temporary = path + ".XXXXXX";
    const int fd = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (fd < 0) return systemError("cannot create a temporary file for", path);
    if (::fchmod(fd, permissions) != 0) {
        Error failure = systemError("cannot set the permissions of", temporary);
        ::close(fd);
        ::unlink(temporary.c_str());
        return failure;
    }
    return std::unique_ptr<WritableFile>(std::make_unique<LinuxWritableFile>(std::move(temporary), fd));
}

Result<std::unique_ptr<WritableFile>> LinuxFileSystem::openForAppending(const std::string& path) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (fd < 0) return systemError("cannot open", path);
    return std::unique_ptr<WritableFile>(std::make_unique<LinuxWritableFile>(path, fd));
}

Status LinuxFileSystem::rename(const std::string& from, const std::string& to) {
    if (::rename(from.c_str(), to.c_str()) == 0) return Status::success();
    return systemError("cannot rename over", to);
}

Status LinuxFileSystem::removeFile(const std::string& path) {
    return ::unlink(path.c_str()) == 0 ? Status::success() : Status(systemError("cannot remove", path));
}

Status LinuxFileSystem::setModificationTime(const std::string& path, FileTime time) {
    const struct timespec times[2] = {{0, UTIME_OMIT}, {time.seconds, static_cast<long>(time.nanoseconds)}};
    if (::utimensat(AT_FDCWD, path.c_str(), times, 0) == 0) return Status::success();
    return systemError("cannot set the date of", path);
}

Status LinuxFileSystem::createDirectories(const std::string& path) {
    std::string made = path.front() == '/' ? "/" : "";
    for (const auto& component : pathComponents(path)) {
        made = made.empty() ? component : childPath(made, component);
        if (::mkdir(made.c_str(), 0755) == 0 || errno != EEXIST) continue;
        struct stat info;
        if (::stat(made.c_str(), &info) != 0 || !S_ISDIR(info.st_mode)) {
            return makeError(ErrorCode::ioError, "cannot make the folder " + path + ": " + made + " is no folder");
        }
    }
    struct stat info;
    if (::stat(path.c_str(), &info) != 0) return systemError("cannot make the folder", path);
    return Status::success();
}

Result<std::string> LinuxFileSystem::extendedAttribute(const std::string& path, const std::string& name) {
    for (;;) {
        const ssize_t length = ::getxattr(path.c_str(), name.c_str(), nullptr, 0);
        if (length < 0) return systemError("cannot read an extended attribute of", path);
        std::string value(static_cast<std::size_t>(length), '\0');
        const ssize_t read = ::getxattr(path.c_str(), name.c_str(), value.data(), value.size());
        if (read < 0 && errno == ERANGE) continue;  // it grew in between
        if (read < 0) return systemError("cannot read an extended attribute of", path);
        value.resize(static_cast<std::size_t>(read));
        return value;
    }
}

Result<std::vector<std::string>> LinuxFileSystem::extendedAttributeNames(const std::string& path) {
    for (;;) {
        const ssize_t length = ::listxattr(path.c_str(), nullptr, 0);
        if (length < 0) return systemError("cannot list the extended attributes of", path);
        std::string names(static_cast<std::size_t>(length), '\0');
        const ssize_t read = ::listxattr(path.c_str(), names.data(), names.size());
        if (read < 0 && errno == ERANGE) continue;
        if (read < 0) return systemError("cannot list the extended attributes of", path);
        names.resize(static_cast<std::size_t>(read));
        return splitNonEmpty(names, '\0');
    }
}

Status LinuxFileSystem::setExtendedAttribute(const std::string& path, const std::string& name, std::string_view value) {
    if (::setxattr(path.c_str(), name.c_str(), value.data(), value.size(), 0) == 0) return Status::success();
    if (errno == ENOTSUP) return Error{ErrorCode::unsupported, "no extended attributes on the disk of " + path};
    return systemError("cannot set an extended attribute of", path);
}

Result<MountTable> LinuxFileSystem::mountTable() {
    return MountTable::read();
}

Result<VolumeSpace> LinuxFileSystem::volumeSpace(const std::string& path) {
    struct statvfs info;
    if (::statvfs(path.c_str(), &info) != 0) return systemError("cannot read the space of", path);
    return VolumeSpace{static_cast<std::uint64_t>(info.f_blocks) * info.f_frsize,
                       static_cast<std::uint64_t>(info.f_bavail) * info.f_frsize, info.f_files};
}

}  // namespace quester
