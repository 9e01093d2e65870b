// Any bytes as the stored list of caches: the decoder must neither crash nor
// throw, and a shared copy it reads back names an absolute path on a disk
// with a key, or is left out.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "cache/ContentIndexManager.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quester;
    const std::string text(reinterpret_cast<const char*>(data), size);
    const auto entries = ContentIndexManager::decodeSavedIndexInfo(text);
    if (!entries) return 0;
    for (const auto& entry : *entries) {
        const auto& remote = entry.remoteDBBookmark;
        if (remote && (!remote->path.starts_with('/') || remote->diskKey.empty())) std::abort();
    }
    return 0;
}
