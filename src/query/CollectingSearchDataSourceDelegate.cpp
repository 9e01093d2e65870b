#include "query/CollectingSearchDataSourceDelegate.h"

#include <iterator>

namespace quester {

void CollectingSearchDataSourceDelegate::supplySearchResults(std::vector<SearchResult> results, SearchDataSource&) {
    collected.access([&](std::vector<SearchResult>& list) {
        list.insert(list.end(), std::make_move_iterator(results.begin()), std::make_move_iterator(results.end()));
    });
}

}  // namespace quester
