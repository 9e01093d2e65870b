#pragma once

#include <climits>
#include <semaphore>

namespace quester {

// A counting semaphore that also serves as a flag or a try-lock. Every test
// below waits with a zero time-out, so none of them blocks. Thread-safe.
class Semaphore {
public:
    explicit Semaphore(int initialValue) : semaphore(initialValue) {}
    Semaphore(const Semaphore&) = delete;
    Semaphore& operator=(const Semaphore&) = delete;

    // Blocks until the semaphore can be taken.
    void wait() { semaphore.acquire(); }
    void signal() { semaphore.release(); }

    // Sets the flag, whatever it was.
    void set() { (void)semaphore.try_acquire(); }
    // True if the flag is set. Takes nothing away: a successful test gives the
    // semaphore back at once.
    bool isSet() {
        if (!semaphore.try_acquire()) return true;
        semaphore.release();
        return false;
    }
    // True if someone else holds it. A false answer has taken the semaphore,
    // and the caller must give it back with `nolongerBusy`.
    bool isBusy() { return !semaphore.try_acquire(); }
    // True if the semaphore was taken by this call.
    bool isIdle() { return semaphore.try_acquire(); }
    void nolongerBusy() { semaphore.release(); }

private:
    std::counting_semaphore<INT_MAX> semaphore;
};

// A semaphore with the value 1: a flag that is not set, a try-lock that is free.
inline Semaphore SemaphoreNotBusy() {
    return Semaphore(1);
}

}  // namespace quester
