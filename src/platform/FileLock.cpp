#include "platform/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <utility>

namespace quester {

namespace {

Result<int> openLockFile(const std::string& path) {
    const int descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor >= 0) return descriptor;
    const int code = errno;
    return makeError(code == EACCES ? ErrorCode::permissionDenied : ErrorCode::ioError,
                     "cannot open the lock file " + path + ": " + std::strerror(code));
}

std::string holderOf(int descriptor) {
    char text[32] = {};
    const ssize_t read = ::pread(descriptor, text, sizeof(text) - 1, 0);
    if (read <= 0) return "another process";
    std::string pid(text, static_cast<std::size_t>(read));
    while (!pid.empty() && (pid.back() == '\n' || pid.back() == ' ')) pid.pop_back();
    return "process " + pid;
}

}  // namespace

Result<FileLock> FileLock::tryAcquire(const std::string& path) {
    auto opened = openLockFile(path);
    if (!opened) return opened.error();
    FileLock lock(*opened);
    if (::flock(*opened, LOCK_EX | LOCK_NB) != 0) {
        const int code = errno;
        if (code == EWOULDBLOCK) return makeError(ErrorCode::permissionDenied, holderOf(*opened) + " holds " + path);
        return makeError(ErrorCode::ioError, "cannot lock " + path + ": " + std::strerror(code));
    }
    const std::string pid = std::to_string(::getpid()) + "\n";
    if (::ftruncate(*opened, 0) != 0 ||
        ::pwrite(*opened, pid.data(), pid.size(), 0) != static_cast<ssize_t>(pid.size())) {
        return makeError(ErrorCode::ioError, "cannot write the lock file " + path);
    }
    return lock;
}

Result<FileLock> FileLock::acquire(const std::string& path) {
    auto opened = openLockFile(path);
    if (!opened) return opened.error();
    const int descriptor = *opened;
    int locked = 0;
    do {
        locked = ::flock(descriptor, LOCK_EX);
    } while (locked != 0 && errno == EINTR);
    if (locked != 0) {
        const int code = errno;
        ::close(descriptor);
        return makeError(ErrorCode::ioError, "cannot lock " + path + ": " + std::strerror(code));
    }
    return FileLock(descriptor);
}

FileLock::FileLock(FileLock&& other) noexcept : descriptor(std::exchange(other.descriptor, -1)) {}

FileLock& FileLock::operator=(FileLock&& other) noexcept {
    if (this != &other) {
        if (descriptor >= 0) ::close(descriptor);
        descriptor = std::exchange(other.descriptor, -1);
    }
    return *this;
}

// Closing the only descriptor of the open file releases the lock.
FileLock::~FileLock() {
    if (descriptor >= 0) ::close(descriptor);
}

}  // namespace quester
