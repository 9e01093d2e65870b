#include "content/ContentSearchers.h"

#include "content/SQLiteContentSearcher.h"
#include "content/TarContentSearcher.h"
#include "content/ZipContentSearcher.h"

namespace quester {

const std::vector<const ContentSearcher*>& ContentSearchers::all() {
    static const ZipContentSearcher zip;
    static const TarContentSearcher tar;
    static const SQLiteContentSearcher sqlite;
    static const std::vector<const ContentSearcher*> searchers{&zip, &tar, &sqlite};
    return searchers;
}

const ContentSearcher* ContentSearchers::searcher(const std::string& path) {
    for (const ContentSearcher* candidate : all()) {
        if (candidate->canSearch(path)) return candidate;
    }
    return nullptr;
}

}  // namespace quester
