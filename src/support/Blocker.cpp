#include "support/Blocker.h"

namespace quester {

void Blocker::wait() {
    std::unique_lock guard(mutex);
    opened.wait(guard, [&] { return released; });
}

void Blocker::release() {
    {
        std::lock_guard guard(mutex);
        released = true;
    }
    opened.notify_all();
}

bool Blocker::isReleased() const {
    std::lock_guard guard(mutex);
    return released;
}

}  // namespace quester
