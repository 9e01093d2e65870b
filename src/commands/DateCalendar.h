#pragma once

#include <optional>
#include <string>

#include "language/DateCommandWhen.h"
#include "language/TimeUnit.h"

namespace quester {

// Parts of a calendar day. A part left empty takes today's value when a date
// is made, so a date made from parts is a local midnight.
struct DayComponents {
    std::optional<int> day;
    std::optional<int> month;  // 1 to 12; 13 rolls into January of the next year
    std::optional<int> year;
};

// The calendar rules of the date criteria, in the user's calendar, locale and
// time zone, through ICU. Every call reads the clock anew; thread safe.
namespace DateCalendar {

Date now();
// The local midnight that began the day of `date`.
Date startOfDay(Date date);
// The date of the parts, today's filling the gaps; none when ICU fails.
std::optional<Date> date(const DayComponents& components);
// The same, a year earlier when it lies in the future.
std::optional<Date> dateWithYearInPast(const DayComponents& components);
// Day, month and year of `date`.
DayComponents components(Date date);
// The calendar's interval of `unit` that holds `date`: the day, the week (as
// the locale begins it), the month, the year.
DateRange unitInterval(TimeUnit unit, Date date);
// The locale's short date ("3/4/21").
std::string shortDate(Date date);

// Lower from `from` (a year earlier when in the future), upper from `to`; an
// upper before the lower becomes the lower. None when a date can't be made.
std::optional<DateRange> dateRange(const DayComponents& from, const DayComponents& to);
std::optional<DateRange> wholeYearRange(int year);
std::optional<DateRange> wholeMonthRange(int month, std::optional<int> year);
// The week before this one.
DateRange lastWeekRange();

}  // namespace DateCalendar

}  // namespace quester
