#pragma once

#include <vector>

#include "query/SearchResult.h"
#include "support/Clock.h"

namespace quester {

// Batches results on their way to the results model, so that the model takes
// them in few large steps. Not synchronised: its owner uses it on one thread.
class SearchResultsBucket {
public:
    // `clock` must outlive the bucket; tests hand in a `ManualClock`.
    explicit SearchResultsBucket(const Clock& clock = SystemClock::shared());

    void add(SearchResult result);
    void add(const std::vector<SearchResult>& results);

    // More than half a second has passed since the last `empty` (or creation).
    bool isTimeToEmpty() const;
    // The items so far; the list is cleared, keeping its capacity, and the
    // flush time set to now.
    std::vector<SearchResult> empty();

    const std::vector<SearchResult>& items() const { return bucketItems; }
    Clock::TimePoint lastFlush() const { return lastFlushTime; }

private:
    const Clock& clock;
    std::vector<SearchResult> bucketItems;
    Clock::TimePoint lastFlushTime;
};

}  // namespace quester
