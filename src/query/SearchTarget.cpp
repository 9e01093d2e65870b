#include "query/SearchTarget.h"

namespace quester {

bool SearchTarget::operator==(const SearchTarget& other) const {
    if (const Url* url = urlValue()) {
        const Url* otherURL = other.urlValue();
        return otherURL && *url == *otherURL;
    }
    const Offline* mine = offlineValue();
    const Offline* theirs = other.offlineValue();
    if (!mine || !theirs || !mine->cache || !theirs->cache) return false;
    return mine->cache->uuid() == theirs->cache->uuid();
}

}  // namespace quester
