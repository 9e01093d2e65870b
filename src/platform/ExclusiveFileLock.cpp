#include "platform/ExclusiveFileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

namespace quester {

namespace {

std::string holderOf(int fd) {
    char text[32] = {};
    ssize_t read = pread(fd, text, sizeof(text) - 1, 0);
    if (read <= 0) return "another process";
    std::string pid(text, static_cast<std::size_t>(read));
    while (!pid.empty() && (pid.back() == '\n' || pid.back() == ' ')) pid.pop_back();
    return "process " + pid;
}

}  // namespace

Result<std::unique_ptr<ExclusiveFileLock>> ExclusiveFileLock::acquire(const std::string& path) {
    int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0) return makeError(ErrorCode::ioError, "cannot open the lock file " + path + ": " + std::strerror(errno));
    if (flock(fd, LOCK_EX | LOCK_NB) != 0) {
        int reason = errno;
        std::string holder = holderOf(fd);
        ::close(fd);
        if (reason == EWOULDBLOCK) return makeError(ErrorCode::permissionDenied, holder + " holds " + path);
        return makeError(ErrorCode::ioError, "cannot lock " + path + ": " + std::strerror(reason));
    }
    std::string pid = std::to_string(getpid()) + "\n";
    if (ftruncate(fd, 0) != 0 || pwrite(fd, pid.data(), pid.size(), 0) != static_cast<ssize_t>(pid.size())) {
        ::close(fd);
        return makeError(ErrorCode::ioError, "cannot write the lock file " + path);
    }
    return std::unique_ptr<ExclusiveFileLock>(new ExclusiveFileLock(fd, path));
}

ExclusiveFileLock::~ExclusiveFileLock() {
    ::close(fd);
}

}  // namespace quester
