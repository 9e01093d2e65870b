#pragma once

#include <memory>
#include <variant>

#include "platform/Url.h"
#include "query/CacheVC_IndexInterface.h"

namespace quester {

// One place a location searches: a folder or disk, or a disk cache that may be
// off line. Equal by URL, or by the cache's UUID; `isExplicit` plays no part.
struct SearchTarget {
    struct Offline {
        std::shared_ptr<const CacheVC_IndexInterface> cache;
        bool isExplicit = false;
    };

    std::variant<Url, Offline> target;

    static SearchTarget url(Url url) { return SearchTarget{std::move(url)}; }
    static SearchTarget offline(std::shared_ptr<const CacheVC_IndexInterface> cache, bool isExplicit) {
        return SearchTarget{Offline{std::move(cache), isExplicit}};
    }

    const Url* urlValue() const { return std::get_if<Url>(&target); }
    const Offline* offlineValue() const { return std::get_if<Offline>(&target); }

    bool operator==(const SearchTarget& other) const;
};

}  // namespace quester
