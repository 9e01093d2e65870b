#include <gtest/gtest.h>
#include <unicode/calendar.h>

#include "commands/DateCommand.h"
#include "commands/StandardCommandFactories.h"
#include "query/CommandRecogniser.h"
#include "query/QueryContainer.h"
#include "query/SearchResult.h"
#include "testing/FixedCalendar.h"

namespace quester {
namespace {

constexpr const char* kZone = "Europe/Berlin";

// A wall-clock time in Berlin, worked out apart from the code under test so
// that a range computed in UTC or in the machine's zone shows up.
Date berlin(int year, int month, int day, int hour = 0, int minute = 0) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Calendar> calendar(
        icu::Calendar::createInstance(icu::TimeZone::createTimeZone(kZone), icu::Locale("en_US"), status));
    calendar->clear();
    calendar->set(year, month - 1, day, hour, minute);
    return Date(std::chrono::seconds(static_cast<std::int64_t>(calendar->getTime(status) / 1000)));
}

// Wednesday 18 November 2026, 15:30 in Berlin, after the change to winter time.
const Date kNow = berlin(2026, 11, 18, 15, 30);

std::shared_ptr<DateCommand> dateCommandOf(const std::string& phrase) {
    static const CommandRecogniser parser(standardCommandFactories());
    QueryContainer query("report : " + phrase, parser);
    EXPECT_TRUE(query.invalidCommandAreaWords().empty()) << phrase;
    return query.findCommand<DateCommand>();
}

struct Phrase {
    const char* text;
    Date lower;
    Date upper;
};

TEST(DatePhrases, EveryFormSpansTheExpectedLocalDates) {
    testing::FixedCalendar calendar(kNow, kZone);
    using std::chrono::seconds;
    const Phrase phrases[] = {
        {"modified today", berlin(2026, 11, 18), berlin(2026, 11, 19)},
        {"edited yesterday", berlin(2026, 11, 17), berlin(2026, 11, 18)},
        {"modified tomorrow", berlin(2026, 11, 19), berlin(2026, 11, 20)},
        {"modified recent", kNow - seconds(3600), kNow},
        {"modified this week", berlin(2026, 11, 15), berlin(2026, 11, 22)},
        {"modified last week", berlin(2026, 11, 8), berlin(2026, 11, 15)},
        {"modified this month", berlin(2026, 11, 1), berlin(2026, 12, 1)},
        {"modified this year", berlin(2026, 1, 1), berlin(2027, 1, 1)},
        {"modified last month", berlin(2026, 10, 1), berlin(2026, 11, 1)},
        {"modified last year", berlin(2025, 1, 1), berlin(2025, 12, 31)},
        {"modified in the last 3 days", kNow - seconds(3 * 86400), kNow},
        {"modified within 2 hours", kNow - seconds(7200), kNow},
        {"modified past 2 months", kNow - seconds(2 * 2592000), kNow},
        {"modified last 1 year", kNow - seconds(31536000), kNow},
        {"modified march", berlin(2026, 3, 1), berlin(2026, 4, 1)},
        // A month still to come this year reaches back to last year's.
        {"modified december", berlin(2025, 12, 1), berlin(2027, 1, 1)},
        {"modified march 2024", berlin(2024, 3, 1), berlin(2024, 4, 1)},
        {"modified on 3 march", berlin(2026, 3, 3), berlin(2026, 3, 4)},
        {"modified 2016", berlin(2016, 1, 1), berlin(2016, 12, 31)},
        {"created 3/4/21", berlin(2021, 3, 4), berlin(2021, 3, 5)},
        {"modified from 1/2/24 to 3/4/24", berlin(2024, 1, 2), berlin(2024, 3, 4)},
        {"modified from march to may", berlin(2026, 3, 1), berlin(2026, 6, 1)},
        {"modified from march 2023 to may", berlin(2023, 3, 18), berlin(2026, 6, 18)},
        {"modified from march to may 2024", berlin(2024, 3, 1), berlin(2024, 6, 1)},
        {"modified from march 2023 to may 2024", berlin(2023, 3, 1), berlin(2024, 6, 1)},
        {"modified from march 2023 to 2024", berlin(2023, 3, 1), berlin(2024, 1, 1)},
        {"modified in 2023 from march to may", berlin(2023, 3, 1), berlin(2023, 6, 1)},
        {"modified from march 3 to may", berlin(2026, 3, 3), berlin(2026, 6, 1)},
        {"modified between 2019 and 2021", berlin(2019, 1, 1), berlin(2021, 12, 31)},
        {"modified after 2020", berlin(2020, 1, 1), berlin(2026, 11, 18)},
        {"modified since march", berlin(2026, 3, 1), berlin(2026, 11, 18)},
        {"modified after 1/2/24", berlin(2024, 1, 2), berlin(2026, 11, 18)},
        {"modified before 2020", berlin(1970, 1, 1), berlin(2020, 1, 1)},
        {"modified before june", berlin(1970, 1, 1), berlin(2026, 6, 1)},
        {"modified before 1/2/24", berlin(1970, 1, 1), berlin(2024, 1, 2)},
    };
    for (const auto& phrase : phrases) {
        SCOPED_TRACE(phrase.text);
        auto command = dateCommandOf(phrase.text);
        ASSERT_NE(command, nullptr);
        auto range = timeIntervalDateRange(command->when);
        EXPECT_EQ(range.lowerBound, phrase.lower);
        EXPECT_EQ(range.upperBound, phrase.upper);
    }
}

TEST(DatePhrases, CreatedAndModifiedTestTheirOwnDate) {
    testing::FixedCalendar calendar(kNow, kZone);
    SearchResult item;
    item.modDate = static_cast<std::int64_t>(kNow.time_since_epoch().count()) - 60;
    item.creationDate = static_cast<std::int64_t>(berlin(2026, 11, 17, 23, 59).time_since_epoch().count());
    static const QueryContainer query;
    EXPECT_EQ(dateCommandOf("modified today")->commandImpApply(item, nullptr, query), CommandApplyResult::accept);
    EXPECT_EQ(dateCommandOf("created today")->commandImpApply(item, nullptr, query), CommandApplyResult::exclude);
    EXPECT_EQ(dateCommandOf("made yesterday")->commandImpApply(item, nullptr, query), CommandApplyResult::accept);
}

TEST(DatePhrases, TodayMovesWithTheClockAndTheTimeZone) {
    testing::FixedCalendar calendar(kNow, kZone);
    auto today = dateCommandOf("modified today");
    // Half past midnight in Berlin is still the previous day in UTC.
    calendar.clock.set(std::chrono::round<Clock::Duration>(berlin(2026, 11, 19, 0, 30)));
    EXPECT_EQ(timeIntervalDateRange(today->when).lowerBound, berlin(2026, 11, 19));
    testing::FixedCalendar tokyo(berlin(2026, 11, 19, 0, 30), "Asia/Tokyo");
    EXPECT_EQ(timeIntervalDateRange(today->when).upperBound - timeIntervalDateRange(today->when).lowerBound,
              std::chrono::seconds(86400));
    EXPECT_EQ(timeIntervalDateRange(today->when).lowerBound, berlin(2026, 11, 18, 16, 0)) << "Tokyo's midnight";
}

TEST(DatePhrases, RangesThatCannotHoldAnythingMakeNoCommand) {
    testing::FixedCalendar calendar(kNow, kZone);
    static const CommandRecogniser parser(standardCommandFactories());
    // A range typed the wrong way round, or reaching back before the first
    // year, was read as another range.
    for (const char* phrase :
         {"modified from 3/4/24 to 3/4/24", "modified from 3/4/24 to 1/2/24", "modified from 2024 to 1999",
          "modified from march 2024 to january 2023", "modified last 2147483647 years", "modified last -3 days"}) {
        QueryContainer query(std::string("report : ") + phrase, parser);
        EXPECT_EQ(query.findCommand<DateCommand>(), nullptr) << phrase;
        EXPECT_FALSE(query.invalidCommandAreaWords().empty()) << phrase;
    }
}

}  // namespace
}  // namespace quester
