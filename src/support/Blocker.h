#pragma once

#include <condition_variable>
#include <mutex>

namespace quester {

// A gate that one thread waits on until another opens it, so that an
// asynchronous call can look synchronous. Once released it stays open.
// Thread-safe.
class Blocker {
public:
    Blocker() = default;
    Blocker(const Blocker&) = delete;
    Blocker& operator=(const Blocker&) = delete;

    // Blocks until `release` has been called (returns at once if it has).
    void wait();
    void release();
    bool isReleased() const;

private:
    mutable std::mutex mutex;
    std::condition_variable opened;
    bool released = false;
};

}  // namespace quester
