#pragma once

#include <memory>

#include "cache/ContentIndexManager.h"
#include "support/Result.h"

namespace quester::cli {

// The disk caches listed in the preferences, loaded from the data folder.
// Fails when there is no data folder.
Result<std::unique_ptr<ContentIndexManager>> loadCacheManager();

}  // namespace quester::cli
