#include "commands/DateCommand.h"

#include "commands/DateCalendar.h"
#include "language/DateHelper.h"
#include "query/QuerySearchArguments.h"
#include "query/SearchResult.h"

namespace quester {

namespace {

using std::chrono::seconds;

// Far enough out that no file date lies beyond, near enough to do arithmetic on.
constexpr seconds kDistance{62'135'596'800};

std::int64_t wholeSeconds(Date date) {
    return std::chrono::floor<seconds>(date.time_since_epoch()).count();
}

std::int64_t dateOfResult(const SearchResult& result, DateCommandWhat what) {
    switch (what) {
        case DateCommandWhat::modificationDate:
            return result.modDate;
        case DateCommandWhat::creationDate:
            return result.creationDate;
        case DateCommandWhat::accessDate:
            return result.lastAccessDate;
    }
    return 0;
}

std::optional<std::string> monthText(const DateRange& range) {
    auto parts = DateCalendar::components(range.lowerBound);
    if (!parts.month || !parts.year) return std::nullopt;
    if (DateCalendar::wholeYearRange(*parts.year) == range) return std::to_string(*parts.year);
    if (DateCalendar::wholeMonthRange(*parts.month, parts.year) != range) return std::nullopt;
    std::string text = DateHelper::shared().monthSymbols().at(*parts.month - 1);
    if (parts.year != DateCalendar::components(DateCalendar::now()).year) text += " " + std::to_string(*parts.year);
    return text;
}

}  // namespace

DateRange timeIntervalDateRange(const DateCommandWhen& when) {
    Date now = DateCalendar::now();
    Date today = DateCalendar::startOfDay(now);
    const seconds day{86400};
    switch (when.when) {
        case WhenType::ever:
            return {Date(-kDistance), Date(kDistance)};
        case WhenType::now:
            return {now - seconds(60), now};
        case WhenType::recent:
            return {now - seconds(3600), now};
        case WhenType::today:
            return {today, today + day};
        case WhenType::yesterday:
            return {today - day, today};
        case WhenType::tomorrow:
            return {today + day, today + 2 * day};
        case WhenType::specificDay: {
            Date start = when.specificDay.value_or(today);
            return {start, start + day};
        }
        case WhenType::dateRange:
            return when.dateRange.value_or(DateRange{today, today});
    }
    return {today, today};
}

std::optional<std::string> canonicalRangeText(const DateCommandWhen& when) {
    if (when.when != WhenType::dateRange || !when.dateRange) return std::nullopt;
    const DateRange& range = *when.dateRange;
    if (range == DateCalendar::unitInterval(TimeUnit::weekOfYear, DateCalendar::now())) return "this week";
    if (range == DateCalendar::lastWeekRange()) return "last week";
    return monthText(range);
}

std::string dateToString(Date date) {
    std::string text = DateCalendar::shortDate(date);
    auto year = DateCalendar::components(date).year;
    if (!year || year != DateCalendar::components(DateCalendar::now()).year) return text;
    std::string spaced = " " + std::to_string(*year) + " ";
    if (auto at = text.find(spaced); at != std::string::npos) text.replace(at, spaced.size(), " ");
    return text;
}

std::string toString(const DateCommandWhen& when) {
    switch (when.when) {
        case WhenType::ever:
            return "ever";
        case WhenType::now:
            return "now";
        case WhenType::recent:
            return "recent";
        case WhenType::today:
            return "today";
        case WhenType::yesterday:
            return "yesterday";
        case WhenType::tomorrow:
            return "tomorrow";
        case WhenType::specificDay:
            return dateToString(when.specificDay.value_or(DateCalendar::now()));
        case WhenType::dateRange: {
            if (auto canonical = canonicalRangeText(when)) return *canonical;
            DateRange range = when.dateRange.value_or(DateRange{});
            return dateToString(range.lowerBound) + " " + dateToString(range.upperBound);
        }
    }
    return {};
}

std::string DateCommand::commandToString() const {
    return quester::toString(what) + " " + quester::toString(when);
}

std::string DateCommand::commandExample() const {
    return quester::toString(what) + " " + DateCalendar::shortDate(DateCalendar::now());
}

CommandApplyResult DateCommand::commandImpApply(SearchResult& to, SearchDataSourceDelegate*, const QueryContainer&) {
    DateRange range = timeIntervalDateRange(when);
    std::int64_t date = dateOfResult(to, what);
    bool inside = wholeSeconds(range.lowerBound) <= date && date < wholeSeconds(range.upperBound);
    return inside ? CommandApplyResult::accept : CommandApplyResult::exclude;
}

void DateCommand::commandImpQuerySearchArguments(QuerySearchArguments& to) const {
    DateRange range = timeIntervalDateRange(when);
    if (what == DateCommandWhat::modificationDate) to.modificationDate = range;
    if (what == DateCommandWhat::creationDate) to.creationDate = range;
}

}  // namespace quester
