#pragma once

#include <chrono>
#include <optional>

namespace quester {

// An absolute instant with a fractional second, held as seconds in a double: the
// clock's own nanoseconds reach only 292 years either side of 1970, too short for
// "ever" and for years a person can type; a double covers them, and converting
// system_clock::now() to it is implicit.
using Date = std::chrono::time_point<std::chrono::system_clock, std::chrono::duration<double>>;

// A half-open span of dates, lowerBound ..< upperBound.
struct DateRange {
    Date lowerBound;
    Date upperBound;

    bool contains(Date date) const { return lowerBound <= date && date < upperBound; }
    bool operator==(const DateRange&) const = default;
};

enum class WhenType { ever, now, recent, today, yesterday, tomorrow, specificDay, dateRange };

// The span a date criterion tests. `specificDay` is set for WhenType::specificDay
// (a local midnight), `dateRange` for WhenType::dateRange; both empty otherwise.
struct DateCommandWhen {
    WhenType when = WhenType::ever;
    std::optional<Date> specificDay;
    std::optional<DateRange> dateRange;

    bool operator==(const DateCommandWhen&) const = default;
};

}  // namespace quester
