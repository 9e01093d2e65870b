#include <gtest/gtest.h>

#include <unicode/calendar.h>

#include <memory>

#include "language/DateDetector.h"

namespace quester {
namespace {

std::vector<std::tuple<int, int, int>> days(std::string_view text) {
    std::vector<std::tuple<int, int, int>> out;
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Calendar> calendar(icu::Calendar::createInstance(status));
    for (Date date : DateDetector::simpleDatesInString(text)) {
        calendar->setTime(date.time_since_epoch().count() * 1000.0, status);
        out.emplace_back(calendar->get(UCAL_YEAR, status), calendar->get(UCAL_MONTH, status) + 1,
                         calendar->get(UCAL_DATE, status));
        EXPECT_EQ(calendar->get(UCAL_HOUR_OF_DAY, status), 0) << "a local midnight";
    }
    return out;
}

using Days = std::vector<std::tuple<int, int, int>>;

TEST(DateDetector, DaysFoundInText) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Calendar> calendar(icu::Calendar::createInstance(status));
    const int thisYear = calendar->get(UCAL_YEAR, status);
    const std::vector<std::pair<std::string_view, Days>> cases = {
        // A number above twelve is the day in any locale.
        {"13/4/21", {{2021, 4, 13}}},
        {"4/13/21", {{2021, 4, 13}}},
        // Years first, and two-digit years.
        {"2024-03-25", {{2024, 3, 25}}},
        {"25.3.99", {{2099, 3, 25}}},
        // A day and month take the current year.
        {"25/3", {{thisYear, 3, 25}}},
        // Days that don't exist, and text without dates.
        {"31/2/21", {}},
        {"2016", {}},
        {"report final", {}},
        {"0/0/0", {}},
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(days(text), expected) << text;
}

}  // namespace
}  // namespace quester
