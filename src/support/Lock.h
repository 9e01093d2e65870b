#pragma once

#include <atomic>

#include "support/ThreadAnnotations.h"

namespace quester {

// A binary semaphore used as a lock. Not recursive: a second `lock()` on the
// same thread blocks for ever. Unlike a mutex it may be released from another
// thread, which the flag helpers in Semaphore.h rely on.
//
// Built on a futex with three states (free, held, held with waiters) so that an
// uncontended release costs no system call: libstdc++'s binary_semaphore wakes
// the kernel on every release, which showed as millions of futex calls a walk.
class CAPABILITY("mutex") Lock {
public:
    Lock() = default;
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    void lock() ACQUIRE() {
        int expected = free;
        if (state.compare_exchange_strong(expected, held, std::memory_order_acquire)) return;
        lockContended(expected);
    }
    void unlock() RELEASE() {
        if (state.exchange(free, std::memory_order_release) == heldWithWaiters) wakeOne();
    }
    // Takes the lock if it is free, without waiting.
    bool tryLock() TRY_ACQUIRE(true) {
        int expected = free;
        return state.compare_exchange_strong(expected, held, std::memory_order_acquire);
    }

    // True if someone holds the lock right now. A free lock is taken and given
    // back, so the test itself leaves nothing changed.
    bool isAlreadyAquired() NO_THREAD_SAFETY_ANALYSIS {
        if (!tryLock()) return true;
        unlock();
        return false;
    }

private:
    static constexpr int free = 0;
    static constexpr int held = 1;
    static constexpr int heldWithWaiters = 2;

    void lockContended(int seen);
    void wakeOne();

    std::atomic<int> state{free};
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
