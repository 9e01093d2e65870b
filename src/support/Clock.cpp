#include "support/Clock.h"

#include <atomic>

namespace quester {

namespace {

std::atomic<const Clock*> installedCalendarClock{nullptr};

}  // namespace

const Clock& calendarClock() {
    const Clock* clock = installedCalendarClock.load(std::memory_order_acquire);
    return clock ? *clock : SystemClock::shared();
}

void setCalendarClock(const Clock* clock) {
    installedCalendarClock.store(clock, std::memory_order_release);
}

const SystemClock& SystemClock::shared() {
    static const SystemClock clock;
    return clock;
}

}  // namespace quester
