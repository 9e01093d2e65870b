#pragma once

#include "language/DateCommandWhat.h"
#include "language/DateCommandWhen.h"
#include "query/CommandBase.h"

namespace quester {

// One of an item's dates against a span: "modified today", "created 2016",
// "modified march", "modified 1/2/24 3/4/24".
class DateCommand final : public CommandBase<DateCommand> {
public:
    DateCommand(DateCommandWhat what, DateCommandWhen when) : what(what), when(std::move(when)) {}

    std::string commandToString() const override;
    std::string commandExample() const override;
    CommandApplyResult commandImpApply(SearchResult& to, SearchDataSourceDelegate* feedback,
                                       const QueryContainer& forQuery) override;
    void commandImpQuerySearchArguments(QuerySearchArguments& to) const override;
    bool commandSupportsBooleanCombination() const override { return true; }
    std::optional<AvailableHelpFileNames> helpFileName() const override { return AvailableHelpFileNames::DateSearches; }
    bool sameParameters(const DateCommand& other) const { return what == other.what && when.when == other.when.when; }

    DateCommandWhat what;
    DateCommandWhen when;
};

// The span as dates, worked out now: "today" is the day that holds this moment.
DateRange timeIntervalDateRange(const DateCommandWhen& when);

// The span as the language writes it: "today", "this week", "2016", "march",
// "march 2023", or two short dates.
std::string toString(const DateCommandWhen& when);

// "this week", "last week", a year or a month name when the range is exactly
// one of those; none otherwise.
std::optional<std::string> canonicalRangeText(const DateCommandWhen& when);

// A short date, without the year when it is this year's and stands between blanks.
std::string dateToString(Date date);

}  // namespace quester
