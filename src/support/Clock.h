#pragma once

#include <chrono>

#include "support/Locked.h"

namespace quester {

// Where the time of day comes from. Code with timing rules takes a `Clock` so
// that tests can drive time by hand. Implementations are thread-safe.
class Clock {
public:
    using TimePoint = std::chrono::system_clock::time_point;
    using Duration = std::chrono::system_clock::duration;

    virtual ~Clock() = default;
    virtual TimePoint now() const = 0;
};

// The wall clock.
class SystemClock final : public Clock {
public:
    static const SystemClock& shared();
    TimePoint now() const override { return std::chrono::system_clock::now(); }
};

// The clock that date phrases are worked out from ("today", "last week", a
// date written without its year): the wall clock, unless a test puts a fixed
// clock in its place to pin those phrases. `setCalendarClock(nullptr)` puts
// the wall clock back; the clock set must outlive its use.
const Clock& calendarClock();
void setCalendarClock(const Clock* clock);

// A clock that stands still until moved; it may be moved backwards too.
class ManualClock final : public Clock {
public:
    // Starts at midnight UTC of 1 March 2024 unless told otherwise.
    explicit ManualClock(TimePoint start = std::chrono::sys_days(std::chrono::year(2024) / 3 / 1)) : current(start) {}

    TimePoint now() const override { return current.value(); }
    void set(TimePoint time) { current.setValue(time); }
    template <typename Rep, typename Period>
    void advance(std::chrono::duration<Rep, Period> by) {
        current.access([&](TimePoint& time) { time += std::chrono::duration_cast<Duration>(by); });
    }

private:
    Locked<TimePoint> current;
};

}  // namespace quester
