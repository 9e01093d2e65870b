#include "CacheManagerLoading.h"

#include "stores/Preferences.h"
#include "support/AppDirectories.h"

namespace quester::cli {

Result<std::unique_ptr<ContentIndexManager>> loadCacheManager() {
    Result<std::string> folder = AppDirectories::applicationSupportDirectory();
    if (!folder) return makeError(folder.error().code, "no data folder for caches: " + folder.error().message);
    auto manager = std::make_unique<ContentIndexManager>(Preferences::shared(), *folder);
    manager->load();
    return manager;
}

}  // namespace quester::cli
