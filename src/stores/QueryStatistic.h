#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "support/Result.h"

namespace quester {

// How long each search source took on each run of one query text: query →
// runs → sources. Plain values.
struct QueryStatistic {
    using Date = std::chrono::system_clock::time_point;

    // One source in one run. `supplier` is the raw value of the source's
    // `SearchResultSupplier` (0 none … 12), which is also how the file keeps it.
    struct Result {
        std::string id;
        int supplier = 0;
        std::int64_t durationInSeconds = 0;

        bool operator==(const Result&) const = default;
    };

    // One run of the query, by its start time.
    struct ResultSet {
        std::string id;
        Date date;
        std::vector<Result> durations;

        bool operator==(const ResultSet&) const = default;
    };

    std::string id;
    std::string rawQuery;
    std::vector<ResultSet> results;

    bool operator==(const QueryStatistic&) const = default;

    // The file's form: keys named after the fields, dates as ISO 8601 text in
    // UTC ("2024-03-01T09:30:00Z").
    nlohmann::ordered_json toJSON() const;
    // Every key is required; a supplier outside 0…12 or a date that doesn't
    // read fails as `corrupt`.
    static quester::Result<QueryStatistic> fromJSON(const nlohmann::json& object);
};

// "2024-03-01T09:30:00Z" for a time, to the whole second.
std::string iso8601Text(QueryStatistic::Date date);
// The time of such a text; an offset ("+02:00") instead of "Z" is honoured.
std::optional<QueryStatistic::Date> dateFromISO8601(const std::string& text);

}  // namespace quester
