#pragma once

#include <atomic>
#include <vector>

#include "InterruptWatcher.h"
#include "cache/ContentIndex.h"
#include "cache/ContentIndexManager.h"

namespace quester::cli {

// Brings caches up to date one after the other, with a progress line on a
// terminal (items, rate, current folder). Ctrl-C or SIGTERM cancels the
// cache at hand cleanly: what was walked stays committed, the file is
// closed, and the caches after it are left alone. Create it before any other
// thread: the signals are blocked in every thread made after it.
class CacheUpdateRun {
public:
    explicit CacheUpdateRun(ContentIndexManager& manager);
    CacheUpdateRun(const CacheUpdateRun&) = delete;
    CacheUpdateRun& operator=(const CacheUpdateRun&) = delete;

    // The exit status: 0 all done, 2 when one failed or was off line, 130
    // after an interrupt.
    int run(const std::vector<ContentIndex*>& caches, bool rebuild);

private:
    bool update(ContentIndex& index, bool rebuild);
    Status build(ContentIndex& index);

    ContentIndexManager& manager;
    std::atomic<ContentIndex*> current{nullptr};
    std::atomic<bool> interrupted{false};
    // Declared last: gone before what it touches.
    InterruptWatcher watcher;
};

}  // namespace quester::cli
