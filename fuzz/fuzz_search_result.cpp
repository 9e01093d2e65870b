// Any bytes as a stored search result in JSON. A result that reads back is
// written again and must read back to the same JSON.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "query/SearchResult.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto result = quester::SearchResult::fromJSON(text);
    if (!result) return 0;
    const std::string written = result->toJSON();
    const auto again = quester::SearchResult::fromJSON(written);
    if (!again || again->toJSON() != written) std::abort();
    return 0;
}
