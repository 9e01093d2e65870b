#include "platform/ReadableFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

namespace quester {

namespace {

Error systemError(const std::string& what, const std::string& path, int code) {
    ErrorCode kind = ErrorCode::ioError;
    if (code == ENOENT || code == ENOTDIR) kind = ErrorCode::notFound;
    if (code == EACCES || code == EPERM) kind = ErrorCode::permissionDenied;
    return Error{kind, what + " " + path + ": " + std::strerror(code)};
}

}  // namespace

Result<ReadableFile> ReadableFile::open(const std::string& path) {
    int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0) return systemError("can't open", path, errno);
    struct stat status {};
    if (::fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode)) {
        ::close(descriptor);
        return Error{ErrorCode::invalidArgument, path + " is a folder"};
    }
    // Non-blocking only mattered for the open itself (a FIFO); reads block.
    ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) & ~O_NONBLOCK);
    return ReadableFile(descriptor, path);
}

ReadableFile ReadableFile::adopt(int descriptor, std::string path) {
    return ReadableFile(descriptor, std::move(path));
}

ReadableFile::ReadableFile(ReadableFile&& other) noexcept
    : fd(std::exchange(other.fd, -1)), filePath(std::move(other.filePath)) {}

ReadableFile& ReadableFile::operator=(ReadableFile&& other) noexcept {
    if (this != &other) {
        if (fd >= 0) ::close(fd);
        fd = std::exchange(other.fd, -1);
        filePath = std::move(other.filePath);
    }
    return *this;
}

ReadableFile::~ReadableFile() {
    if (fd >= 0) ::close(fd);
}

Result<std::uint64_t> ReadableFile::size() const {
    struct stat status {};
    if (::fstat(fd, &status) != 0) return systemError("can't stat", filePath, errno);
    return static_cast<std::uint64_t>(status.st_size);
}

Result<std::size_t> ReadableFile::readAt(std::uint64_t offset, std::span<char> into) const {
    std::size_t done = 0;
    while (done < into.size()) {
        ssize_t got = ::pread(fd, into.data() + done, into.size() - done, static_cast<off_t>(offset + done));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return systemError("can't read", filePath, errno);
        if (got == 0) break;
        done += static_cast<std::size_t>(got);
    }
    return done;
}

Result<std::string> ReadableFile::readAll(std::uint64_t maxBytes) const {
    auto known = size();
    if (!known) return known.error();
    if (*known > maxBytes) {
        return Error{ErrorCode::invalidArgument, filePath + " is larger than " + std::to_string(maxBytes) + " bytes"};
    }
    std::string bytes(static_cast<std::size_t>(*known), '\0');
    auto got = readAt(0, bytes);
    if (!got) return got.error();
    bytes.resize(*got);
    return bytes;
}

void ReadableFile::dropCachedPages() const {
    ::posix_fadvise(fd, 0, 0, POSIX_FADV_DONTNEED);
}

}  // namespace quester
