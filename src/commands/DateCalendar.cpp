#include "commands/DateCalendar.h"

#include <unicode/calendar.h>
#include <unicode/datefmt.h>
#include <unicode/smpdtfmt.h>

#include <memory>

#include "support/Clock.h"

namespace quester {

namespace {

UDate toUDate(Date date) {
    return std::chrono::duration<double, std::milli>(date.time_since_epoch()).count();
}

Date fromUDate(UDate millis) {
    return Date(std::chrono::duration_cast<Date::duration>(std::chrono::duration<double, std::milli>(millis)));
}

std::unique_ptr<icu::Calendar> calendarAt(Date date) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Calendar> calendar(icu::Calendar::createInstance(status));
    if (U_FAILURE(status)) return nullptr;
    calendar->setTime(toUDate(date), status);
    return U_SUCCESS(status) ? std::move(calendar) : nullptr;
}

void clearTimeOfDay(icu::Calendar& calendar) {
    calendar.set(UCAL_HOUR_OF_DAY, 0);
    calendar.set(UCAL_MINUTE, 0);
    calendar.set(UCAL_SECOND, 0);
    calendar.set(UCAL_MILLISECOND, 0);
}

UCalendarDateFields fieldOf(TimeUnit unit) {
    switch (unit) {
        case TimeUnit::minute:
            return UCAL_MINUTE;
        case TimeUnit::hour:
            return UCAL_HOUR_OF_DAY;
        case TimeUnit::day:
            return UCAL_DATE;
        case TimeUnit::weekOfYear:
            return UCAL_WEEK_OF_YEAR;
        case TimeUnit::month:
            return UCAL_MONTH;
        case TimeUnit::year:
            return UCAL_YEAR;
    }
    return UCAL_DATE;
}

// The pattern with every run of "y" as one "y", which prints all the year's digits.
std::string withFullYear(const std::string& pattern) {
    std::string result;
    for (char c : pattern) {
        if (c == 'y' && !result.empty() && result.back() == 'y') continue;
        result += c;
    }
    return result;
}

}  // namespace

namespace DateCalendar {

Date now() {
    return std::chrono::time_point_cast<std::chrono::seconds>(calendarClock().now());
}

Date startOfDay(Date date) {
    auto calendar = calendarAt(date);
    if (!calendar) return date;
    clearTimeOfDay(*calendar);
    UErrorCode status = U_ZERO_ERROR;
    UDate millis = calendar->getTime(status);
    return U_SUCCESS(status) ? fromUDate(millis) : date;
}

DayComponents components(Date date) {
    auto calendar = calendarAt(date);
    if (!calendar) return {};
    UErrorCode status = U_ZERO_ERROR;
    DayComponents parts{calendar->get(UCAL_DATE, status), calendar->get(UCAL_MONTH, status) + 1,
                        calendar->get(UCAL_YEAR, status)};
    return U_SUCCESS(status) ? parts : DayComponents{};
}

std::optional<Date> date(const DayComponents& parts) {
    auto calendar = calendarAt(now());
    if (!calendar) return std::nullopt;
    UErrorCode status = U_ZERO_ERROR;
    int year = parts.year.value_or(calendar->get(UCAL_YEAR, status));
    int month = parts.month.value_or(calendar->get(UCAL_MONTH, status) + 1);
    int day = parts.day.value_or(calendar->get(UCAL_DATE, status));
    calendar->setLenient(true);
    calendar->clear();
    calendar->set(year, month - 1, day);
    UDate millis = calendar->getTime(status);
    if (U_FAILURE(status)) return std::nullopt;
    return fromUDate(millis);
}

std::optional<Date> dateWithYearInPast(const DayComponents& parts) {
    auto made = date(parts);
    if (!made || *made <= now()) return made;
    DayComponents earlier = parts;
    earlier.year = parts.year.value_or(components(now()).year.value_or(1970)) - 1;
    return date(earlier);
}

DateRange unitInterval(TimeUnit unit, Date at) {
    auto calendar = calendarAt(at);
    if (!calendar) return {at, at};
    UErrorCode status = U_ZERO_ERROR;
    switch (unit) {
        case TimeUnit::year:
            calendar->set(UCAL_MONTH, 0);
            [[fallthrough]];
        case TimeUnit::month:
            calendar->set(UCAL_DATE, 1);
            [[fallthrough]];
        case TimeUnit::day:
            clearTimeOfDay(*calendar);
            break;
        case TimeUnit::weekOfYear: {
            int back = (calendar->get(UCAL_DAY_OF_WEEK, status) - calendar->getFirstDayOfWeek(status) + 7) % 7;
            calendar->add(UCAL_DATE, -back, status);
            clearTimeOfDay(*calendar);
            break;
        }
        case TimeUnit::hour:
            calendar->set(UCAL_MINUTE, 0);
            [[fallthrough]];
        case TimeUnit::minute:
            calendar->set(UCAL_SECOND, 0);
            calendar->set(UCAL_MILLISECOND, 0);
            break;
    }
    Date lower = fromUDate(calendar->getTime(status));
    calendar->add(fieldOf(unit), 1, status);
    Date upper = fromUDate(calendar->getTime(status));
    if (U_FAILURE(status)) return {at, at};
    return {lower, upper};
}

std::string shortDate(Date at) {
    std::unique_ptr<icu::DateFormat> format(icu::DateFormat::createDateInstance(icu::DateFormat::kShort));
    if (!format) return {};
    // A two-digit year reads back as 20xx, so "1/1/70" would come back as 2070.
    if (auto* simple = dynamic_cast<icu::SimpleDateFormat*>(format.get())) {
        icu::UnicodeString pattern;
        simple->toPattern(pattern);
        std::string utf8;
        pattern.toUTF8String(utf8);
        simple->applyPattern(icu::UnicodeString::fromUTF8(withFullYear(utf8)));
    }
    icu::UnicodeString text;
    format->format(toUDate(at), text);
    std::string utf8;
    text.toUTF8String(utf8);
    return utf8;
}

std::optional<DateRange> dateRange(const DayComponents& from, const DayComponents& to) {
    auto lower = dateWithYearInPast(from);
    auto upper = date(to);
    if (!lower || !upper) return std::nullopt;
    if (*upper < *lower) upper = lower;
    return DateRange{*lower, *upper};
}

std::optional<DateRange> wholeYearRange(int year) {
    return dateRange({1, 1, year}, {31, 12, year});
}

std::optional<DateRange> wholeMonthRange(int month, std::optional<int> year) {
    return dateRange({1, month, year}, {1, month + 1, year});
}

DateRange lastWeekRange() {
    return unitInterval(TimeUnit::weekOfYear, now() - std::chrono::seconds(604800));
}

}  // namespace DateCalendar

}  // namespace quester
