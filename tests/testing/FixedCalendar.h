#pragma once

#include <unicode/locid.h>
#include <unicode/timezone.h>

#include <memory>
#include <string>

#include "support/Clock.h"

namespace quester::testing {

// Pins what date phrases are worked out from: the moment, the time zone and
// the locale, all put back when the object goes away.
class FixedCalendar {
public:
    // `now` is any time point of the system clock, at whole-second or finer steps.
    template <typename Duration>
    FixedCalendar(std::chrono::time_point<std::chrono::system_clock, Duration> now, const std::string& timeZone,
                  const char* locale = "en_US")
        : clock(std::chrono::round<Clock::Duration>(now)),
          previousZone(icu::TimeZone::createDefault()),
          previousLocale(icu::Locale::getDefault()) {
        icu::TimeZone::adoptDefault(icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(timeZone)));
        UErrorCode status = U_ZERO_ERROR;
        icu::Locale::setDefault(icu::Locale(locale), status);
        setCalendarClock(&clock);
    }

    ~FixedCalendar() {
        setCalendarClock(nullptr);
        icu::TimeZone::adoptDefault(previousZone.release());
        UErrorCode status = U_ZERO_ERROR;
        icu::Locale::setDefault(previousLocale, status);
    }

    FixedCalendar(const FixedCalendar&) = delete;
    FixedCalendar& operator=(const FixedCalendar&) = delete;

    ManualClock clock;

private:
    std::unique_ptr<icu::TimeZone> previousZone;
    icu::Locale previousLocale;
};

}  // namespace quester::testing
