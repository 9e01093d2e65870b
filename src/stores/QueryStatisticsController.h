#pragma once

#include <functional>
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
// Several processes may save at once: each save takes a lock on
// "QueryStatistics.json.lock", reads the file anew and adds its own runs to
// what it found, so no process loses another's. An entry of the file that
// doesn't read is dropped and the others are kept.
class QueryStatisticsController {
public:
    static constexpr const char* fileName = "QueryStatistics.json";
    // What the file keeps at most: the runs of a query, and the queries.
    static constexpr std::size_t maxRunsPerQuery = 20;
    static constexpr std::size_t maxQueries = 200;

    // Keeps its file at `path`; an empty path means the data folder could not
    // be had, and every save fails (and is logged).
    explicit QueryStatisticsController(std::string path);
    // The controller of the data folder's file, made on first use.
    static QueryStatisticsController& shared();

    std::vector<QueryStatistic> all() const { return statistics.value(); }

    // Reads the file into `all`; a missing or unreadable file leaves it empty.
    void load();
    // Adds the runs of `all` that the file lacks to it, atomically, keeping
    // the latest `maxRunsPerQuery` runs of the latest `maxQueries` queries,
    // and keeps what was written as `all`.
    Status save();
    // Empties `all` and the file.
    void clear();
    // Appends a source's duration to the run of `rawQuery` that began at
    // `startTime`, making the query's entry and the run when they are new.
    void add(QueryStatistic::Date startTime, const std::string& rawQuery, int supplier, std::int64_t durationInSeconds);

    const std::string& path() const { return filePath; }

private:
    std::vector<QueryStatistic> readFile() const;
    // Applies `change` to the file's list under the file lock and writes it.
    Status rewrite(const std::function<void(std::vector<QueryStatistic>& onFile)>& change);
    static void keepTheLatest(std::vector<QueryStatistic>& statistics);
    // Adds the queries, runs and durations of `ours` that `onFile` lacks, by id.
    static void mergeInto(std::vector<QueryStatistic>& onFile, const std::vector<QueryStatistic>& ours);

    const std::string filePath;
    Locked<std::vector<QueryStatistic>> statistics;
};

}  // namespace quester
