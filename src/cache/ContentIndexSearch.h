#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "cache/ContentIndex.h"
#include "query/SearchDataSource.h"

namespace quester {

class Preferences;

// The search source over the disk caches that the query's location selects.
// A name pass reads every record of each cache and supplies those whose name
// may match, with the size and dates recorded; a content pass, for a query
// with a content criterion, reads the posting lists of the caches that hold
// words and supplies the documents that hold the words, ranked by their
// counts. A cache answers while its disk is not connected: its results are
// then marked off line.
//
// A cache whose store turns out damaged while it is read is set aside
// (".corrupt"), unless another program is writing caches, and the search
// goes on with the next cache. Runs on the search manager's thread; the
// caches belong to their manager and must outlive the search.
class ContentIndexSearch final : public SearchDataSource {
public:
    // `caches`: every cache there is; `preferences`: where "diskCatalogCaching"
    // is read (the shared store when null).
    explicit ContentIndexSearch(std::vector<ContentIndex*> caches, const Preferences* preferences = nullptr);

    std::string debugDescription() const override { return "CompactContentIndexSearch"; }
    SearchResultSupplier type() const override { return SearchResultSupplier::CompactContentIndex; }
    void search(const QueryContainer& query, SearchDataSourceDelegate& handler) override;
    // The source polls the handler between caches instead.
    void searchShouldStop() override {}

    // The caches that the query's location names or lies on, each once.
    std::vector<ContentIndex*> cachesForLocations(const QueryContainer& query) const;
    // The content pass over `caches`.
    void searchContentIfNeeded(const QueryContainer& query, const std::vector<ContentIndex*>& caches,
                               SearchDataSourceDelegate& handler);

private:
    static void syncSharedCopy(ContentIndex& cache);
    void searchNames(ContentIndex& cache, const QueryContainer& query, SearchDataSourceDelegate& handler);
    std::vector<SearchResult> contentResults(ContentIndex& cache, const QueryContainer& query,
                                             const std::map<std::string, std::int64_t>& ranks);

    std::vector<ContentIndex*> caches;
    const Preferences& preferences;
};

}  // namespace quester
