#pragma once

#include <semaphore>

#include "support/ThreadAnnotations.h"

namespace quester {

// A binary semaphore used as a lock. Not recursive: a second `lock()` on the
// same thread blocks for ever. Unlike a mutex it may be released from another
// thread, which the flag helpers in Semaphore.h rely on.
class CAPABILITY("mutex") Lock {
public:
    Lock() = default;
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    void lock() ACQUIRE() { semaphore.acquire(); }
    void unlock() RELEASE() { semaphore.release(); }
    // Takes the lock if it is free, without waiting.
    bool tryLock() TRY_ACQUIRE(true) { return semaphore.try_acquire(); }

    // True if someone holds the lock right now. A free lock is taken and given
    // back, so the test itself leaves nothing changed.
    bool isAlreadyAquired() NO_THREAD_SAFETY_ANALYSIS {
        if (!semaphore.try_acquire()) return true;
        semaphore.release();
        return false;
    }

private:
    std::binary_semaphore semaphore{1};
};

// Holds a `Lock` for the lifetime of a scope.
class SCOPED_CAPABILITY LockGuard {
public:
    explicit LockGuard(Lock& lock) ACQUIRE(lock) : held(lock) { held.lock(); }
    ~LockGuard() RELEASE() { held.unlock(); }
    LockGuard(const LockGuard&) = delete;
    LockGuard& operator=(const LockGuard&) = delete;

private:
    Lock& held;
};

}  // namespace quester
