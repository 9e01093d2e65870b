#include "content/ContentSearchers.h"

namespace quester {

const std::vector<const ContentSearcher*>& ContentSearchers::all() {
    static const std::vector<const ContentSearcher*> searchers;
    return searchers;
}

const ContentSearcher* ContentSearchers::searcher(const std::string& path) {
    for (const ContentSearcher* candidate : all()) {
        if (candidate->canSearch(path)) return candidate;
    }
    return nullptr;
}

}  // namespace quester
