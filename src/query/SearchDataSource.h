#pragma once

#include <string>
#include <vector>

#include "platform/Url.h"
#include "query/SearchResultSupplier.h"

namespace quester {

class QueryContainer;
class SearchDataSourceDelegate;

// One search engine of a query: the file system walk, a disk cache, the
// metadata index, a command's own engine. A source lives for one search and is
// shared (std::shared_ptr) between the command or manager that made it and the
// manager that runs it; identity is the object.
class SearchDataSource {
public:
    virtual ~SearchDataSource() = default;

    // A name for logs.
    virtual std::string debugDescription() const = 0;
    virtual SearchResultSupplier type() const = 0;

    // The folders this source itself searches. Empty for every source that
    // searches the query's own location.
    virtual std::vector<Url> dataSourceLocations(const QueryContainer& forQuery) const {
        (void)forQuery;
        return {};
    }

    // Runs the whole search on the calling thread and returns when it is done
    // or stopped. Results go to `handler.supplySearchResults`; the handler must
    // stay alive until this returns.
    virtual void search(const QueryContainer& query, SearchDataSourceDelegate& handler) = 0;

    // Asks a running search to end soon. Any thread; also fine on a source that
    // has finished or never started.
    virtual void searchShouldStop() = 0;
};

}  // namespace quester
