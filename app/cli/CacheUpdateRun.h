#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <set>
#include <vector>

#include "InterruptWatcher.h"
#include "cache/ContentIndex.h"
#include "cache/ContentIndexManager.h"

namespace quester::cli {

// Brings caches up to date one after the other, with a progress line on a
// terminal (items, rate, current folder). Ctrl-C or SIGTERM cancels the
// cache at hand cleanly: what was walked stays committed (or, for a shared
// cache, the shared copy is put back), the file is closed, and the caches
// after it are left alone. A build that has not stopped `quitWait` after the
// signal is left as a kill would leave it (every batch it committed is
// whole), and the process ends with 130. Create it before any other thread:
// the signals are blocked in every thread made after it.
class CacheUpdateRun {
public:
    static constexpr std::chrono::seconds quitWait{8};

    // `userInitiated`: a shared copy changed a moment ago is replaced all the
    // same (a timed run leaves it to its writer).
    CacheUpdateRun(ContentIndexManager& manager, bool userInitiated);
    ~CacheUpdateRun();
    CacheUpdateRun(const CacheUpdateRun&) = delete;
    CacheUpdateRun& operator=(const CacheUpdateRun&) = delete;

    // The exit status: 0 all done, 2 when one failed or was off line, 130
    // after an interrupt.
    int run(const std::vector<ContentIndex*>& caches, bool rebuild);
    // The caches whose time has come, after the daily run when it starts now.
    int runDue();

private:
    bool update(ContentIndex& index, bool rebuild);
    Status build(ContentIndex& index);
    int finish(bool allDone);
    void markFinished();
    void awaitTermination();

    ContentIndexManager& manager;
    const bool userInitiated;
    std::atomic<ContentIndex*> current{nullptr};
    std::atomic<bool> interrupted{false};
    std::mutex finishLock;
    std::condition_variable finishedSignal;
    bool finished = false;
    // Declared last: gone before what it touches.
    InterruptWatcher watcher;
};

}  // namespace quester::cli
