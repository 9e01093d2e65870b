#pragma once

#include <signal.h>

#include <functional>
#include <thread>

namespace quester::cli {

// Turns Ctrl-C and SIGTERM into a call of `onInterrupt` on a thread of its
// own: the signals are blocked in every thread made after this object, and
// one thread waits for them. It answers the first signal only. The signals
// stay blocked after the watcher has gone: unblocking them would let one that
// comes while the command is finishing kill the process by the default
// action instead of its own status.
class InterruptWatcher {
public:
    explicit InterruptWatcher(std::function<void()> onInterrupt);
    ~InterruptWatcher();
    InterruptWatcher(const InterruptWatcher&) = delete;
    InterruptWatcher& operator=(const InterruptWatcher&) = delete;

private:
    sigset_t signals{};
    std::thread watcher;
};

}  // namespace quester::cli
