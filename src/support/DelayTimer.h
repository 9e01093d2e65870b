#pragma once

#include <chrono>
#include <optional>

#include "support/Clock.h"
#include "support/Lock.h"

namespace quester {

// A time gate, not a timer: nothing fires by itself. `hasElapsed` lets at most
// one caller through per `delay`, which is how progress reports are throttled.
// Thread-safe; `clock` must outlive the gate.
class DelayTimer {
public:
    DelayTimer(std::chrono::duration<double> delay, bool fireFirstTime, const Clock& clock = SystemClock::shared());

    // True if more than `delay` lies between the last pass and now, strictly,
    // in either direction (a clock set back counts too). A true answer starts
    // the next interval.
    bool hasElapsed();

private:
    const std::chrono::duration<double> delay;
    const Clock& clock;
    Lock lock;
    // None stands for the distant past: the next test passes.
    std::optional<Clock::TimePoint> last GUARDED_BY(lock);
};

}  // namespace quester
