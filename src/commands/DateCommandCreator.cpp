#include "commands/DateCommandCreator.h"

#include <array>
#include <functional>
#include <map>

#include "commands/DateCalendar.h"
#include "commands/DateCommand.h"
#include "language/DateCommandWhat.h"
#include "language/TimeUnit.h"

namespace quester {

namespace {

using Span = std::optional<DateRange>;
using std::chrono::seconds;

// 1 January of the year 1, in the Gregorian calendar.
constexpr Date earliestDate{seconds(-62135596800)};

// The values behind `what`, read by type and position.
class DateArguments {
public:
    explicit DateArguments(const VariableArguments& args) : args(args) {}

    std::optional<int> integer(size_t index) const { return get<int>(index); }
    std::optional<TimeUnit> unit(size_t index) const { return get<TimeUnit>(index); }
    std::optional<DateCommandWhen> when(size_t index) const { return get<DateCommandWhen>(index); }
    size_t count() const { return args.size(); }

private:
    template <typename T>
    std::optional<T> get(size_t index) const {
        const T* value = argumentAt<T>(args, index + 1);
        return value ? std::optional<T>(*value) : std::nullopt;
    }

    const VariableArguments& args;
};

DayComponents nowComponents() {
    return DateCalendar::components(DateCalendar::now());
}

Span untilToday(const DayComponents& from) {
    return DateCalendar::dateRange(from, nowComponents());
}

Span fromDayToDay(Date from, Date to) {
    return DateCalendar::dateRange(DateCalendar::components(from), DateCalendar::components(to));
}

// A span typed as "from ... to ...": written the wrong way round it holds
// nothing, and is no sentence the language understands rather than a search
// that silently finds nothing.
Span typedSpan(const DayComponents& from, const DayComponents& to) {
    Span span = DateCalendar::dateRange(from, to);
    if (span && !(span->lowerBound < span->upperBound)) return std::nullopt;
    return span;
}

Span thisTimeUnit(const DateArguments& a) {
    auto unit = a.unit(0);
    if (unit != TimeUnit::year && unit != TimeUnit::month && unit != TimeUnit::weekOfYear) return std::nullopt;
    return DateCalendar::unitInterval(*unit, DateCalendar::now());
}

Span lastTimeUnit(const DateArguments& a) {
    auto unit = a.unit(0);
    auto today = nowComponents();
    if (!unit || !today.year || !today.month) return std::nullopt;
    switch (*unit) {
        case TimeUnit::year:
            return DateCalendar::dateRange({1, 1, *today.year - 1}, {31, 12, *today.year - 1});
        case TimeUnit::month:
            if (*today.month == 1) return DateCalendar::wholeMonthRange(12, *today.year - 1);
            return DateCalendar::wholeMonthRange(*today.month - 1, today.year);
        case TimeUnit::weekOfYear:
            return DateCalendar::lastWeekRange();
        default:
            return std::nullopt;
    }
}

std::optional<seconds> unitLength(TimeUnit unit) {
    switch (unit) {
        case TimeUnit::minute:
            return seconds(60);
        case TimeUnit::hour:
            return seconds(3600);
        case TimeUnit::day:
            return seconds(86400);
        case TimeUnit::weekOfYear:
            return seconds(604800);
        case TimeUnit::month:
            return seconds(2592000);
        case TimeUnit::year:
            return seconds(31536000);
    }
    return std::nullopt;
}

Span lastNDateUnit(const DateArguments& a) {
    auto count = a.integer(0);
    auto unit = a.unit(1);
    if (!count || *count < 0 || !unit) return std::nullopt;
    auto length = unitLength(*unit);
    if (!length) return std::nullopt;
    Date now = DateCalendar::now();
    Date lower = now - *count * *length;
    // Further back than the calendar's first year is no date a file can have,
    // and no calendar prints it.
    if (lower < earliestDate) return std::nullopt;
    return DateRange{lower, now};
}

// Works out the span of one sentence from the values behind `what`.
using Builder = std::function<Span(const DateArguments&)>;

template <size_t N>
bool readIntegers(const DateArguments& a, std::array<int, N>& values) {
    for (size_t i = 0; i < N; ++i) {
        auto value = a.integer(i);
        if (!value) return false;
        values[i] = *value;
    }
    return true;
}

template <size_t N>
Builder fromIntegers(std::function<Span(const std::array<int, N>&)> build) {
    return [build](const DateArguments& a) -> Span {
        std::array<int, N> values{};
        if (!readIntegers(a, values)) return std::nullopt;
        return build(values);
    };
}

Span specificDateRange(const DateArguments& a) {
    auto first = a.when(0);
    if (!first) return std::nullopt;
    auto second = a.when(1);
    if (!second) return std::nullopt;
    if (!first->specificDay || !second->specificDay || !(*first->specificDay < *second->specificDay))
        return std::nullopt;
    return fromDayToDay(*first->specificDay, *second->specificDay);
}

Builder withSpecificDay(std::function<Span(Date)> build) {
    return [build](const DateArguments& a) -> Span {
        auto when = a.when(0);
        if (!when || !when->specificDay) return std::nullopt;
        return build(*when->specificDay);
    };
}

const std::map<std::string, Builder, std::less<>>& builders() {
    using I1 = std::array<int, 1>;
    using I2 = std::array<int, 2>;
    using I3 = std::array<int, 3>;
    using I4 = std::array<int, 4>;
    static const std::map<std::string, Builder, std::less<>> table{
        {"specificDateRange", specificDateRange},
        {"thisTimeUnit", thisTimeUnit},
        {"lastTimeUnit", lastTimeUnit},
        {"lastNDateUnit", lastNDateUnit},
        {"month", fromIntegers<1>([](const I1& v) { return DateCalendar::wholeMonthRange(v[0], std::nullopt); })},
        {"monthYear", fromIntegers<2>([](const I2& v) { return DateCalendar::wholeMonthRange(v[0], v[1]); })},
        {"dayMonth", fromIntegers<2>([](const I2& v) {
             return DateCalendar::dateRange({v[0], v[1], {}}, {v[0] + 1, v[1], {}});
         })},
        {"monthToMonth", fromIntegers<2>([](const I2& v) {
             return typedSpan({1, v[0], {}}, {1, v[1] + 1, {}});
         })},
        {"monthYearToMonth", fromIntegers<3>([](const I3& v) {
             auto today = nowComponents().day;
             return typedSpan({today, v[0], v[1]}, {today, v[2] + 1, {}});
         })},
        {"monthToMonthYear", fromIntegers<3>([](const I3& v) {
             return typedSpan({1, v[0], v[2]}, {1, v[1] + 1, v[2]});
         })},
        {"monthYearToMonthYear", fromIntegers<4>([](const I4& v) {
             return typedSpan({1, v[0], v[1]}, {1, v[2] + 1, v[3]});
         })},
        {"monthYearToYear", fromIntegers<3>([](const I3& v) {
             return typedSpan({1, v[0], v[1]}, {1, 1, v[2]});
         })},
        {"yearMonthToMonth", fromIntegers<3>([](const I3& v) {
             return typedSpan({1, v[1], v[0]}, {1, v[2] + 1, v[0]});
         })},
        {"monthDayToMonth", fromIntegers<3>([](const I3& v) {
             return typedSpan({v[1], v[0], {}}, {1, v[2] + 1, {}});
         })},
        {"yearToYear", fromIntegers<2>([](const I2& v) {
             return typedSpan({1, 1, v[0]}, {31, 12, v[1]});
         })},
        {"year", fromIntegers<1>([](const I1& v) { return DateCalendar::wholeYearRange(v[0]); })},
        {"afterDate", withSpecificDay([](Date day) { return untilToday(DateCalendar::components(day)); })},
        {"afterYear", fromIntegers<1>([](const I1& v) {
             return untilToday({1, 1, v[0]});
         })},
        {"afterMonth", fromIntegers<1>([](const I1& v) {
             return untilToday({1, v[0], {}});
         })},
        {"beforeDate", withSpecificDay([](Date day) {
             return DateCalendar::dateRange({1, 1, 1970}, DateCalendar::components(day));
         })},
        {"beforeYear", fromIntegers<1>([](const I1& v) {
             return DateCalendar::dateRange({1, 1, 1970}, {1, 1, v[0]});
         })},
        {"beforeMonth", fromIntegers<1>([](const I1& v) {
             return DateCalendar::dateRange({1, 1, 1970}, {1, v[0], {}});
         })},
    };
    return table;
}

}  // namespace

std::vector<std::string> DateCommandCreator::commandNames() const {
    return {"specificDateRange", "thisTimeUnit",     "lastTimeUnit",     "lastNDateUnit",    "month",
            "monthYear",         "monthToMonth",     "monthYearToMonth", "monthToMonthYear", "monthYearToMonthYear",
            "monthYearToYear",   "yearMonthToMonth", "monthDayToMonth",  "yearToYear",       "year",
            "afterDate",         "afterYear",        "afterMonth",       "beforeDate",       "beforeYear",
            "beforeMonth",       "dayMonth"};
}

const std::vector<std::string>& DateCommandCreator::commandAutoCompletionWords() {
    static const std::vector<std::string> words{"ever",     "now",      "recent",  "today",  "yesterday",
                                                "tomorrow", "modified", "changed", "edited", "created",
                                                "made",     "week",     "year",    "month"};
    return words;
}

CommandPtr DateCommandCreator::create(std::string_view commandName, const VariableArguments& args,
                                      const TemplateFlags&) const {
    const auto* what = argumentAt<DateCommandWhat>(args, 0);
    auto builder = builders().find(commandName);
    if (!what || builder == builders().end()) return nullptr;
    DateArguments values(args);
    if (commandName == "specificDateRange" && values.count() == 2) {
        auto when = values.when(0);
        if (!when) return nullptr;
        return std::make_shared<DateCommand>(*what, *when);
    }
    auto span = builder->second(values);
    if (!span) return nullptr;
    return std::make_shared<DateCommand>(*what, DateCommandWhen{WhenType::dateRange, std::nullopt, *span});
}

}  // namespace quester
