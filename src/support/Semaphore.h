#pragma once

#include <atomic>

namespace quester {

// A counting semaphore that also serves as a flag or a try-lock. Every test
// below waits with a zero time-out, so none of them blocks. Thread-safe.
//
// Built on an atomic counter rather than std::counting_semaphore, whose
// release makes a futex call whenever the count was zero, waiter or not: a
// lock taken and given back per record cost a system call each time.
class Semaphore {
public:
    explicit Semaphore(int initialValue) : count(initialValue) {}
    Semaphore(const Semaphore&) = delete;
    Semaphore& operator=(const Semaphore&) = delete;

    // Blocks until the semaphore can be taken.
    void wait() {
        while (!tryTake()) count.wait(0, std::memory_order_relaxed);
    }
    // Wakes a waiter only when there is one.
    void signal() {
        count.fetch_add(1, std::memory_order_release);
        count.notify_one();
    }

    // Sets the flag, whatever it was.
    void set() { (void)tryTake(); }
    // True if the flag is set. Takes nothing away: a successful test gives the
    // semaphore back at once.
    bool isSet() {
        if (!tryTake()) return true;
        signal();
        return false;
    }
    // True if someone else holds it. A false answer has taken the semaphore,
    // and the caller must give it back with `nolongerBusy`.
    bool isBusy() { return !tryTake(); }
    // True if the semaphore was taken by this call.
    bool isIdle() { return tryTake(); }
    void nolongerBusy() { signal(); }

private:
    bool tryTake() {
        int available = count.load(std::memory_order_relaxed);
        while (available > 0)
            if (count.compare_exchange_weak(available, available - 1, std::memory_order_acquire,
                                            std::memory_order_relaxed))
                return true;
        return false;
    }

    std::atomic<int> count;
};

// A semaphore with the value 1: a flag that is not set, a try-lock that is free.
inline Semaphore SemaphoreNotBusy() {
    return Semaphore(1);
}

}  // namespace quester
