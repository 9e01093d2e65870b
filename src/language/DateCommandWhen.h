#pragma once

#include <chrono>
#include <optional>

namespace quester {

// An absolute instant with a fractional second.
using Date = std::chrono::system_clock::time_point;

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
