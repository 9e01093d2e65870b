#pragma once

#include <map>
#include <utility>

#include "results/TimerScheduler.h"

namespace quester::testing {

// Timers that fire only when a test moves the clock: `advance` runs every
// task that falls due, in time order, on the calling thread, which stands
// for the main loop.
class ManualTimerScheduler final : public TimerScheduler {
public:
    TimerId schedule(Clock::Duration delay, Task task) override {
        const TimerId id = nextId++;
        timers.emplace(id, Timer{manualClock.now() + delay, std::move(task)});
        return id;
    }
    void cancel(TimerId timer) override { timers.erase(timer); }
    const Clock& clock() const override { return manualClock; }

    template <typename Rep, typename Period>
    void advance(std::chrono::duration<Rep, Period> by) {
        const auto end = manualClock.now() + std::chrono::duration_cast<Clock::Duration>(by);
        while (true) {
            auto due = timers.end();
            for (auto it = timers.begin(); it != timers.end(); ++it) {
                if (it->second.due <= end && (due == timers.end() || it->second.due < due->second.due)) due = it;
            }
            if (due == timers.end()) break;
            manualClock.set(due->second.due);
            Task task = std::move(due->second.task);
            timers.erase(due);
            task();
        }
        manualClock.set(end);
    }

    std::size_t pendingTimers() const { return timers.size(); }
    ManualClock& manual() { return manualClock; }

private:
    struct Timer {
        Clock::TimePoint due;
        Task task;
    };
    ManualClock manualClock;
    std::map<TimerId, Timer> timers;
    TimerId nextId = 1;
};

}  // namespace quester::testing
