#include "results/ResultDateText.h"

#include <unicode/calendar.h>
#include <unicode/datefmt.h>
#include <unicode/gregocal.h>
#include <unicode/locid.h>
#include <unicode/timezone.h>

#include <chrono>

namespace quester {

struct ResultDateText::Formatters {
    std::unique_ptr<icu::DateFormat> dateAndTime;
    std::unique_ptr<icu::DateFormat> timeOnly;
    std::unique_ptr<icu::Calendar> calendar;

    // Days since 1970 in the formatters' time zone, for "today" and its neighbours.
    std::int64_t dayNumber(UDate millis) const {
        UErrorCode status = U_ZERO_ERROR;
        calendar->setTime(millis, status);
        const std::int64_t offset = calendar->get(UCAL_ZONE_OFFSET, status) + calendar->get(UCAL_DST_OFFSET, status);
        const std::int64_t local = static_cast<std::int64_t>(millis) + offset;
        return (local >= 0 ? local : local - 86399999) / 86400000;
    }

    int year(UDate millis) const {
        UErrorCode status = U_ZERO_ERROR;
        calendar->setTime(millis, status);
        return calendar->get(UCAL_YEAR, status);
    }

    std::string format(const icu::DateFormat& formatter, UDate millis) const {
        icu::UnicodeString text;
        formatter.format(millis, text);
        std::string utf8;
        text.toUTF8String(utf8);
        return utf8;
    }
};

namespace {

icu::TimeZone* makeTimeZone(const std::string& timeZone) {
    if (timeZone.empty()) return icu::TimeZone::createDefault();
    return icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(timeZone));
}

// Removes " <year> " (four or two digits) when the year stands between blanks.
std::string withoutYear(std::string text, int year) {
    for (const std::string& yearText : {std::to_string(year), std::to_string(year % 100)}) {
        const std::string between = " " + yearText + " ";
        const auto found = text.find(between);
        if (found != std::string::npos) return text.replace(found, between.size(), " ");
    }
    return text;
}

}  // namespace

ResultDateText::ResultDateText(const std::string& locale, const std::string& timeZone, const Clock& clock)
    : clock(clock), formatters(std::make_unique<Formatters>()) {
    const icu::Locale where = locale.empty() ? icu::Locale::getDefault() : icu::Locale(locale.c_str());
    UErrorCode status = U_ZERO_ERROR;
    formatters->dateAndTime.reset(
        icu::DateFormat::createDateTimeInstance(icu::DateFormat::kShort, icu::DateFormat::kShort, where));
    formatters->timeOnly.reset(icu::DateFormat::createTimeInstance(icu::DateFormat::kShort, where));
    formatters->calendar.reset(icu::Calendar::createInstance(makeTimeZone(timeZone), where, status));
    formatters->dateAndTime->setTimeZone(formatters->calendar->getTimeZone());
    formatters->timeOnly->setTimeZone(formatters->calendar->getTimeZone());
}

ResultDateText::~ResultDateText() = default;

std::string ResultDateText::dateToString(std::int64_t seconds) const {
    const UDate millis = static_cast<UDate>(seconds) * 1000.0;
    const auto now = std::chrono::duration_cast<std::chrono::milliseconds>(clock.now().time_since_epoch()).count();
    const UDate nowMillis = static_cast<UDate>(now);
    const std::int64_t days = formatters->dayNumber(millis) - formatters->dayNumber(nowMillis);
    if (days >= -1 && days <= 1) {
        static const char* const relativeDays[] = {"Yesterday at ", "Today at ", "Tomorrow at "};
        return relativeDays[days + 1] + formatters->format(*formatters->timeOnly, millis);
    }
    const std::string text = formatters->format(*formatters->dateAndTime, millis);
    const int year = formatters->year(millis);
    return year == formatters->year(nowMillis) ? withoutYear(text, year) : text;
}

}  // namespace quester
