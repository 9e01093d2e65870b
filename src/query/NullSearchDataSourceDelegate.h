#pragma once

#include <atomic>

#include "query/SearchDataSourceDelegate.h"

namespace quester {

// A delegate that wants nothing: it answers the two questions a source asks
// and drops everything it is told. Thread-safe.
class NullSearchDataSourceDelegate final : public SearchDataSourceDelegate {
public:
    explicit NullSearchDataSourceDelegate(bool showHiddenItems = false) : hidden(showHiddenItems) {}

    bool shouldStop() const override { return stopped.load(); }
    void setShouldStop(bool value) { stopped = value; }
    bool showHiddenItems() const override { return hidden; }

    void supplySearchResults(std::vector<SearchResult> results, SearchDataSource& fromDataSource) override;

private:
    std::atomic<bool> stopped{false};
    const bool hidden;
};

}  // namespace quester
