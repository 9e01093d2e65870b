#include "support/DelayTimer.h"

namespace quester {

DelayTimer::DelayTimer(std::chrono::duration<double> delay, bool fireFirstTime, const Clock& clock)
    : delay(delay), clock(clock) {
    if (!fireFirstTime) last = clock.now();
}

bool DelayTimer::hasElapsed() {
    Clock::TimePoint now = clock.now();
    LockGuard guard(lock);
    if (last) {
        auto between = now > *last ? now - *last : *last - now;
        if (std::chrono::duration<double>(between) <= delay) return false;
    }
    last = now;
    return true;
}

}  // namespace quester
