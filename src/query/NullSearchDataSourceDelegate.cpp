#include "query/NullSearchDataSourceDelegate.h"

#include "query/SearchResult.h"

namespace quester {

void NullSearchDataSourceDelegate::supplySearchResults(std::vector<SearchResult>, SearchDataSource&) {}

}  // namespace quester
