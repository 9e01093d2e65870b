#include "platform/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

namespace quester {

Result<FileLock> FileLock::acquire(const std::string& path) {
    const int descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor < 0) {
        const int code = errno;
        return makeError(code == EACCES ? ErrorCode::permissionDenied : ErrorCode::ioError,
                         "cannot open the lock file " + path + ": " + std::strerror(code));
    }
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
