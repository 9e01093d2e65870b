#pragma once

#include <cstdint>
#include <functional>

#include "support/Clock.h"
#include "support/MainLoop.h"

namespace quester {

// One-shot timers whose tasks run on the main loop, and the clock they keep
// time by. The results model and the search session take one, so that tests
// can drive their timing rules by hand.
class TimerScheduler {
public:
    using TimerId = std::uint64_t;
    using Task = std::function<void()>;

    virtual ~TimerScheduler() = default;
    // Runs `task` on the main loop once `delay` has passed on `clock()`.
    virtual TimerId schedule(Clock::Duration delay, Task task) = 0;
    // A timer that hasn't fired never will; unknown ids are ignored.
    virtual void cancel(TimerId timer) = 0;
    virtual const Clock& clock() const = 0;
};

// The timers of a main loop, on the wall clock. Thread-safe.
class MainLoopTimerScheduler final : public TimerScheduler {
public:
    // `loop` must outlive the scheduler.
    explicit MainLoopTimerScheduler(MainLoop& loop = MainLoop::shared()) : loop(loop) {}
    static MainLoopTimerScheduler& shared();

    TimerId schedule(Clock::Duration delay, Task task) override;
    void cancel(TimerId timer) override { loop.cancel(timer); }
    const Clock& clock() const override { return SystemClock::shared(); }

private:
    MainLoop& loop;
};

}  // namespace quester
