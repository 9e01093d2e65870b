#pragma once

#include <string>

#include "support/Result.h"

namespace quester {

// An exclusive advisory lock (flock) on a lock file, held for the object's
// life. Two processes, or two threads each with its own FileLock, that lock
// the same path take turns: the second `acquire` waits for the first lock to
// go. The lock file is made when missing and left in place, since removing it
// would let a third party lock a new file while the old one is still held.
class FileLock {
public:
    // Waits for the lock on `path`; fails when the file can't be made or opened.
    static Result<FileLock> acquire(const std::string& path);
    // Takes the lock on `path` without waiting and writes this process's id
    // into the file, so that one process at a time does a kind of work. Fails
    // with `permissionDenied`, naming the holder's process id, when another
    // process holds it; with `ioError` when the file can't be made or written.
    static Result<FileLock> tryAcquire(const std::string& path);

    FileLock(FileLock&& other) noexcept;
    FileLock& operator=(FileLock&& other) noexcept;
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;
    ~FileLock();

private:
    explicit FileLock(int descriptor) : descriptor(descriptor) {}

    int descriptor = -1;
};

}  // namespace quester
