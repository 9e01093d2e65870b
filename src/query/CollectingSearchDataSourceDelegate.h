#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <vector>

#include "query/SearchDataSourceDelegate.h"
#include "query/SearchResult.h"
#include "support/Locked.h"

namespace quester {

// Gathers every result a source supplies, so that a caller can look at them
// all once the source has finished, and the folders it skipped. Other
// progress is ignored. Thread-safe.
class CollectingSearchDataSourceDelegate final : public SearchDataSourceDelegate {
public:
    // `stopProvider` answers `shouldStop`; without one the source runs to its end.
    explicit CollectingSearchDataSourceDelegate(bool showHiddenItems, std::function<bool()> stopProvider = {})
        : hidden(showHiddenItems), stopProvider(std::move(stopProvider)) {}

    bool shouldStop() const override { return stopProvider && stopProvider(); }
    bool showHiddenItems() const override { return hidden; }

    void supplySearchResults(std::vector<SearchResult> results, SearchDataSource& fromDataSource) override;
    void supplySkippedDirectories(std::int64_t numberOfDirectories) override { skipped += numberOfDirectories; }

    // Everything collected so far, in the order supplied.
    std::vector<SearchResult> results() const { return collected.value(); }
    std::int64_t skippedDirectories() const { return skipped.load(); }

private:
    const bool hidden;
    const std::function<bool()> stopProvider;
    Locked<std::vector<SearchResult>> collected;
    std::atomic<std::int64_t> skipped{0};
};

}  // namespace quester
