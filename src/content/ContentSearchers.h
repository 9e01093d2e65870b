#pragma once

#include <string>
#include <vector>

#include "content/ContentSearcher.h"

namespace quester {

// The container searchers, in the order they are asked: zip, tar, SQLite.
class ContentSearchers {
public:
    static const std::vector<const ContentSearcher*>& all();
    // The first searcher that can search `path`; null when none can.
    static const ContentSearcher* searcher(const std::string& path);
};

}  // namespace quester
