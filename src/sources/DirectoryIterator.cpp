#include "sources/DirectoryIterator.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "support/LogFunc.h"

namespace quester {
namespace {

constexpr unsigned kStatxMask = STATX_TYPE | STATX_SIZE | STATX_BTIME | STATX_MTIME | STATX_ATIME | STATX_CTIME | STATX_INO;

// The directory as given, with one trailing "/" dropped; "/" stays itself.
std::string_view directoryPart(std::string_view path) {
    if (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
    return path;
}

// What is put before each name: the directory and a "/", without doubling it for "/".
std::string pathPrefix(std::string_view directory) {
    std::string prefix(directory);
    if (prefix != "/") prefix += '/';
    return prefix;
}

class DirectoryDescriptor {
public:
    explicit DirectoryDescriptor(const std::string& path)
        : fd(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {}
    ~DirectoryDescriptor() {
        if (fd >= 0) ::close(fd);
    }
    DirectoryDescriptor(const DirectoryDescriptor&) = delete;
    DirectoryDescriptor& operator=(const DirectoryDescriptor&) = delete;

    bool isOpen() const { return fd >= 0; }
    int get() const { return fd; }

private:
    int fd;
};

bool isDotOrDotDot(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

// Reads every entry of `fd` through `buffer`, calling `onEntry(name, d_type)`
// for each but "." and "..". Answers 0 at the end, or the errno of a failed read.
template <typename OnEntry>
int readEntries(int fd, std::byte* buffer, OnEntry&& onEntry) {
    for (;;) {
        ssize_t filled = ::getdents64(fd, buffer, DirectoryIterator::attrBufferSize);
        if (filled == 0) return 0;
        if (filled < 0) {
            if (errno == EINTR) continue;
            return errno;
        }
        for (ssize_t offset = 0; offset < filled;) {
            auto* entry = reinterpret_cast<const struct dirent64*>(buffer + offset);
            if (!isDotOrDotDot(entry->d_name)) onEntry(entry->d_name, entry->d_type);
            offset += entry->d_reclen;
        }
    }
}

FileTime fileTime(const struct statx_timestamp& stamp) { return FileTime{stamp.tv_sec, stamp.tv_nsec}; }

bool isEarlier(const FileTime& a, const FileTime& b) {
    return a.seconds < b.seconds || (a.seconds == b.seconds && a.nanoseconds < b.nanoseconds);
}

void copyAttributes(const struct statx& status, FSItemAndAttrs& item) {
    item.attributesRead = true;
    item.fileSize = item.isDirectory ? 0 : status.stx_size;
    item.modifyTime = fileTime(status.stx_mtime);
    item.accessTime = fileTime(status.stx_atime);
    if (status.stx_mask & STATX_BTIME) {
        item.createTime = fileTime(status.stx_btime);
    } else {
        FileTime change = fileTime(status.stx_ctime);
        item.createTime = isEarlier(change, item.modifyTime) ? change : item.modifyTime;
    }
    item.fileSystem = FileSystemId{status.stx_dev_major, status.stx_dev_minor};
    item.object = status.stx_ino;
}

bool statEntry(int directoryFd, const char* name, struct statx& status) {
    return ::statx(directoryFd, name, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT, kStatxMask, &status) == 0;
}

}  // namespace

DirectoryIterator::DirectoryIterator() : attrBuffer(std::make_unique_for_overwrite<std::byte[]>(attrBufferSize)) {}

DirectoryIterator::Listing DirectoryIterator::contentsOfDirectoryAtPath(std::string_view path,
                                                                        const AttributeFilter& wantsAttributes) {
    Listing listing;
    std::string_view directory = directoryPart(path);
    if (directory.empty()) return listing;
    DirectoryDescriptor descriptor{std::string(directory)};
    if (!descriptor.isOpen()) {
        LOG("open error: " + std::string(directory) + " " + std::to_string(errno));
        return listing;
    }

    listing.items.reserve(128);
    const std::string prefix = pathPrefix(directory);
    listing.errnum = readEntries(descriptor.get(), attrBuffer.get(), [&](const char* name, unsigned char type) {
        if (type != DT_REG && type != DT_DIR && type != DT_UNKNOWN) return;
        FSItemAndAttrs item;
        item.name = name;
        item.fullPath = prefix + item.name;
        item.isDirectory = type == DT_DIR;
        struct statx status;
        bool statted = false;
        if (type == DT_UNKNOWN) {
            // The type needs the call anyway; whether the attributes are kept is asked after.
            if (!statEntry(descriptor.get(), name, status)) return;
            if (!S_ISREG(status.stx_mode) && !S_ISDIR(status.stx_mode)) return;
            item.isDirectory = S_ISDIR(status.stx_mode);
            statted = true;
        }
        if (!wantsAttributes || wantsAttributes(item.fullPath, item.isDirectory)) {
            if (!statted && !statEntry(descriptor.get(), name, status)) return;
            copyAttributes(status, item);
        }
        listing.items.push_back(std::move(item));
    });
    return listing;
}

DirectoryIterator::Contents DirectoryIterator::urlContentsOfDirectory(std::string_view path) {
    Contents contents;
    std::string_view directory = directoryPart(path);
    if (directory.empty()) return contents;
    DirectoryDescriptor descriptor{std::string(directory)};
    if (!descriptor.isOpen()) return contents;

    auto buffer = std::make_unique_for_overwrite<std::byte[]>(attrBufferSize);
    const std::string prefix = pathPrefix(directory);
    (void)readEntries(descriptor.get(), buffer.get(), [&](const char* name, unsigned char type) {
        if (type == DT_UNKNOWN) {
            struct stat status;
            if (::fstatat(descriptor.get(), name, &status, AT_SYMLINK_NOFOLLOW) != 0) return;
            type = S_ISDIR(status.st_mode) ? DT_DIR : DT_REG;
        }
        (type == DT_DIR ? contents.directories : contents.files).push_back(prefix + name);
    });
    return contents;
}

}  // namespace quester
