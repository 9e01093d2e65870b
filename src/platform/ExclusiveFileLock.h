#pragma once

#include <memory>
#include <optional>
#include <string>

#include "support/Result.h"

namespace quester {

// An exclusive advisory lock (flock) on a file that holds the owner's process
// id, so that one process at a time does a kind of work. Released when the
// object goes, or by the kernel when the process dies however it dies.
class ExclusiveFileLock {
public:
    // Takes the lock on `path` (made when missing) without waiting. Fails with
    // `permissionDenied` naming the holder's process id when another process
    // holds it, `ioError` when the file can't be made.
    static Result<std::unique_ptr<ExclusiveFileLock>> acquire(const std::string& path);
    ~ExclusiveFileLock();
    ExclusiveFileLock(const ExclusiveFileLock&) = delete;
    ExclusiveFileLock& operator=(const ExclusiveFileLock&) = delete;

    const std::string& path() const { return lockPath; }

private:
    ExclusiveFileLock(int fd, std::string path) : fd(fd), lockPath(std::move(path)) {}

    int fd;
    std::string lockPath;
};

}  // namespace quester
