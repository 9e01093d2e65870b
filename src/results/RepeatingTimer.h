#pragma once

#include <memory>
#include <optional>

#include "results/TimerScheduler.h"

namespace quester {

// A timer that fires every `interval` on the main loop until invalidated or
// destroyed. Main loop only.
class RepeatingTimer {
public:
    // `scheduler` must outlive the timer.
    RepeatingTimer(TimerScheduler& scheduler, Clock::Duration interval, TimerScheduler::Task tick);
    ~RepeatingTimer() { invalidate(); }
    RepeatingTimer(const RepeatingTimer&) = delete;
    RepeatingTimer& operator=(const RepeatingTimer&) = delete;

    void invalidate();
    bool isValid() const { return pending.has_value(); }

private:
    void scheduleNext();

    TimerScheduler& scheduler;
    const Clock::Duration interval;
    const TimerScheduler::Task tick;
    std::optional<TimerScheduler::TimerId> pending;
    // Read by fired tasks, which may outlive the timer.
    std::shared_ptr<bool> alive = std::make_shared<bool>(true);
};

}  // namespace quester
