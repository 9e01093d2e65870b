#include "support/Blocker.h"

namespace quester {

void Blocker::wait() {
    std::unique_lock guard(mutex);
    opened.wait(guard, [&] { return released; });
}

// Notifies under the lock: the waiter may destroy the blocker as soon as it
// sees `released`.
void Blocker::release() {
    std::lock_guard guard(mutex);
    released = true;
    opened.notify_all();
}

bool Blocker::isReleased() const {
    std::lock_guard guard(mutex);
    return released;
}

}  // namespace quester
