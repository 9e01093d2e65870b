#pragma once

#include <optional>

namespace quester {

// Which source made a result. The raw values travel in the network format and
// feed the query statistics, so they never change.
enum class SearchResultSupplier {
    none = 0,
    fileSystem = 1,
    spotlight = 2,
    spotlightContent = 3,
    recentItem = 4,
    FSCompactSearch = 5,
    KnownDirectoriesSearch = 6,
    sqlCache = 7,
    showAppsCmd = 8,
    sidebar = 9,
    CompactContentIndex = 10,
    MailSearchDataSource = 11,
    FSCILiveSearch = 12,
};

// The case for a raw value; none for a value no case has.
std::optional<SearchResultSupplier> searchResultSupplierFromRaw(long long raw);

}  // namespace quester
