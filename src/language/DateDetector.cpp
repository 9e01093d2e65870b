#include "language/DateDetector.h"

#include <unicode/calendar.h>
#include <unicode/datefmt.h>
#include <unicode/smpdtfmt.h>

#include <cctype>
#include <charconv>
#include <memory>
#include <optional>

#include "support/Clock.h"

namespace quester {

namespace {

bool localeWritesDayFirst() {
    static const bool dayFirst = [] {
        std::unique_ptr<icu::DateFormat> format(icu::DateFormat::createDateInstance(icu::DateFormat::kShort));
        auto* simple = dynamic_cast<icu::SimpleDateFormat*>(format.get());
        if (simple == nullptr) return false;
        icu::UnicodeString pattern;
        simple->toPattern(pattern);
        return pattern.length() > 0 && pattern.charAt(0) == u'd';
    }();
    return dayFirst;
}

// The local midnight of a calendar day; none for a day that doesn't exist.
std::optional<Date> localMidnight(int year, int month, int day) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Calendar> calendar(icu::Calendar::createInstance(status));
    if (U_FAILURE(status)) return std::nullopt;
    calendar->setLenient(false);
    calendar->clear();
    calendar->set(year, month - 1, day);
    const UDate millis = calendar->getTime(status);
    if (U_FAILURE(status)) return std::nullopt;
    return Date(std::chrono::duration_cast<Date::duration>(std::chrono::duration<double, std::milli>(millis)));
}

int currentYear() {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Calendar> calendar(icu::Calendar::createInstance(status));
    if (U_FAILURE(status)) return 2000;
    calendar->setTime(std::chrono::duration<double, std::milli>(calendarClock().now().time_since_epoch()).count(),
                      status);
    return U_SUCCESS(status) ? calendar->get(UCAL_YEAR, status) : 2000;
}

std::vector<int> positiveNumbers(std::string_view text) {
    std::vector<int> numbers;
    size_t i = 0;
    while (i < text.size()) {
        const bool alphanumeric = (text[i] & 0x80) != 0 || std::isalnum(static_cast<unsigned char>(text[i]));
        if (!alphanumeric) {
            ++i;
            continue;
        }
        size_t end = i;
        while (end < text.size() && ((text[end] & 0x80) != 0 || std::isalnum(static_cast<unsigned char>(text[end]))))
            ++end;
        int value = 0;
        const auto [last, error] = std::from_chars(text.data() + i, text.data() + end, value);
        if (error == std::errc() && last == text.data() + end && value > 0) numbers.push_back(value);
        i = end;
    }
    return numbers;
}

int fullYear(int n) {
    return n <= 99 ? n + 2000 : n;
}

// The state of the number walk: a day, a month and a year as they are found.
struct Reading {
    std::optional<int> year;
    std::optional<int> month;
    std::optional<int> day;
    bool resolved = false;

    void take(int n, int count, bool dayFirst) {
        if (!year && count == 3) {
            year = fullYear(n);
            resolved = true;
        } else if (n >= 32) {
            year = fullYear(n);
            resolved = true;
        } else if (n > 12 && !resolved) {
            resolved = true;
            if (day) month = day;
            day = n;
        } else if (!day || !month) {
            fill(n, dayFirst);
        } else {
            year = n + 2000;
            resolved = true;
        }
    }

    void fill(int n, bool dayFirst) {
        std::optional<int>& first = dayFirst ? day : month;
        std::optional<int>& second = dayFirst ? month : day;
        (first ? second : first) = n;
    }
};

}  // namespace

std::vector<Date> DateDetector::simpleDatesInString(std::string_view text) {
    const bool dayFirst = localeWritesDayFirst();
    std::vector<Date> dates;
    Reading reading;
    int count = 0;
    for (int n : positiveNumbers(text)) {
        reading.take(n, ++count, dayFirst);
        if (reading.resolved && reading.year && reading.month && reading.day) {
            if (auto date = localMidnight(*reading.year, *reading.month, *reading.day)) dates.push_back(*date);
            reading = Reading();
            count = 0;
        }
    }
    if (reading.day && reading.month && !reading.year) {
        if (auto date = localMidnight(currentYear(), *reading.month, *reading.day)) dates.push_back(*date);
    }
    return dates;
}

}  // namespace quester
