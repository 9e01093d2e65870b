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

TEST(DateDetector, NumberAboveTwelveIsTheDayInAnyLocale) {
    EXPECT_EQ(days("13/4/21"), (Days{{2021, 4, 13}}));
    EXPECT_EQ(days("4/13/21"), (Days{{2021, 4, 13}}));
}

TEST(DateDetector, YearsFirstAndTwoDigitYears) {
    EXPECT_EQ(days("2024-03-25"), (Days{{2024, 3, 25}}));
    EXPECT_EQ(days("25.3.99"), (Days{{2099, 3, 25}}));
}

TEST(DateDetector, DaysThatDontExistAndTextWithoutDates) {
    EXPECT_TRUE(days("31/2/21").empty());
    EXPECT_TRUE(days("2016").empty());
    EXPECT_TRUE(days("report final").empty());
    EXPECT_TRUE(days("0/0/0").empty());
}

TEST(DateDetector, DayAndMonthTakeTheCurrentYear) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Calendar> calendar(icu::Calendar::createInstance(status));
    const int year = calendar->get(UCAL_YEAR, status);
    EXPECT_EQ(days("25/3"), (Days{{year, 3, 25}}));
}

}  // namespace
}  // namespace quester
