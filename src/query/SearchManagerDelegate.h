#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quester {

class QueryContainer;
struct SearchResult;

// The counters of one search. Items in queue may stay above zero after a stop.
struct SearchManagerProgress {
    std::int64_t numberOfResultsReturned = 0;
    std::int64_t numberOfDirectoriesSearched = 0;
    std::int64_t numberOfFilesContentSearched = 0;
    std::int64_t numberOfItemsInQueue = 0;
    // Folders that were there but couldn't be read.
    std::int64_t numberOfDirectoriesSkipped = 0;

    bool operator==(const SearchManagerProgress&) const = default;
};

// Who receives what a search manager finds. Every call but the first comes on
// the main loop's thread. The manager holds its delegate weakly.
class SearchManagerDelegate {
public:
    virtual ~SearchManagerDelegate() = default;

    // Called by `SearchManager::search` on the caller's thread.
    virtual void searchManagerIsBeginingSearches(const QueryContainer& query) = 0;
    // The survivors of one found item: the item and its folders named after a query word.
    virtual void searchManagerFoundItems(const std::vector<SearchResult>& items, const QueryContainer& forQuery) = 0;
    // The search ended or was stopped. Comes twice after a user's cancel.
    virtual void searchManagerHasFinishedAllSearches(const QueryContainer& query) = 0;
    // Counters, at most four times a second.
    virtual void searchManagerProgress(const SearchManagerProgress& progress) = 0;
    virtual void searchingInsideFile(const std::string& name, bool inProgress, float percentageProgress) = 0;
    virtual void searchInvalidQuery() = 0;
};

}  // namespace quester
