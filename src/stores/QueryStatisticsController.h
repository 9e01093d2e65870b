#pragma once

#include <string>
#include <vector>

#include "stores/QueryStatistic.h"
#include "support/Locked.h"

namespace quester {

// The durations of search sources per query text, kept in
// "QueryStatistics.json" in the data folder as a pretty-printed JSON array.
// A developer's view of where time goes; it never changes a search.
//
// Thread-safe: `add` may come from the sources' threads. Saving never
// disturbs the caller: a failure is logged and the list in memory stays.
class QueryStatisticsController {
public:
    static constexpr const char* fileName = "QueryStatistics.json";

    // Keeps its file at `path`; an empty path means the data folder could not
    // be had, and every save fails (and is logged).
    explicit QueryStatisticsController(std::string path);
    // The controller of the data folder's file, made on first use.
    static QueryStatisticsController& shared();

    std::vector<QueryStatistic> all() const { return statistics.value(); }

    // Reads the file into `all`; a missing or unreadable file leaves it empty.
    void load();
    // Writes `all` atomically.
    Status save() const;
    // Empties `all` and saves.
    void clear();
    // Appends a source's duration to the run of `rawQuery` that began at
    // `startTime`, making the query's entry and the run when they are new.
    void add(QueryStatistic::Date startTime, const std::string& rawQuery, int supplier, std::int64_t durationInSeconds);

    const std::string& path() const { return filePath; }

private:
    const std::string filePath;
    Locked<std::vector<QueryStatistic>> statistics;
};

}  // namespace quester
