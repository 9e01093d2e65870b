#pragma once

#include <optional>
#include <string_view>

namespace quester {

// The calendar component a "~timeUnit" word names ("last 3 weeks", "this month").
// `weekOfYear` is the calendar week, as the locale's calendar begins it.
enum class TimeUnit { minute, hour, day, weekOfYear, month, year };

// "minute", "minutes", "hour", … "years" (lower case); anything else is none.
std::optional<TimeUnit> timeUnitFromWord(std::string_view word);

}  // namespace quester
