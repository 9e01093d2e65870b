#include "query/SearchResultsBucket.h"

#include <iterator>

namespace quester {

namespace {
constexpr std::chrono::milliseconds kFlushInterval{500};
}

SearchResultsBucket::SearchResultsBucket(const Clock& clock) : clock(clock), lastFlushTime(clock.now()) {}

void SearchResultsBucket::add(SearchResult result) {
    bucketItems.push_back(std::move(result));
}

void SearchResultsBucket::add(const std::vector<SearchResult>& results) {
    bucketItems.insert(bucketItems.end(), results.begin(), results.end());
}

bool SearchResultsBucket::isTimeToEmpty() const {
    return clock.now() - lastFlushTime > kFlushInterval;
}

std::vector<SearchResult> SearchResultsBucket::empty() {
    std::vector<SearchResult> taken(std::make_move_iterator(bucketItems.begin()),
                                    std::make_move_iterator(bucketItems.end()));
    bucketItems.clear();
    lastFlushTime = clock.now();
    return taken;
}

}  // namespace quester
