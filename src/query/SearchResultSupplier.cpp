#include "query/SearchResultSupplier.h"

namespace quester {

std::optional<SearchResultSupplier> searchResultSupplierFromRaw(long long raw) {
    if (raw < 0 || raw > static_cast<long long>(SearchResultSupplier::FSCILiveSearch)) return std::nullopt;
    return static_cast<SearchResultSupplier>(raw);
}

}  // namespace quester
