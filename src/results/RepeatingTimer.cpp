#include "results/RepeatingTimer.h"

namespace quester {

RepeatingTimer::RepeatingTimer(TimerScheduler& scheduler, Clock::Duration interval, TimerScheduler::Task tick)
    : scheduler(scheduler), interval(interval), tick(std::move(tick)) {
    scheduleNext();
}

void RepeatingTimer::invalidate() {
    if (pending) scheduler.cancel(*pending);
    pending.reset();
    *alive = false;
}

void RepeatingTimer::scheduleNext() {
    std::weak_ptr<bool> stillAlive = alive;
    pending = scheduler.schedule(interval, [this, stillAlive] {
        const auto flag = stillAlive.lock();
        if (!flag || !*flag) return;
        // The next tick is due before this one runs, so a slow tick doesn't
        // stretch the rhythm; a tick may invalidate the timer.
        scheduleNext();
        const TimerScheduler::Task task = tick;
        task();
    });
}

}  // namespace quester
