#include "InterruptWatcher.h"

#include <pthread.h>

namespace quester::cli {

InterruptWatcher::InterruptWatcher(std::function<void()> onInterrupt) {
    sigemptyset(&signals);
    for (int signal : {SIGINT, SIGTERM, SIGUSR1}) sigaddset(&signals, signal);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    watcher = std::thread([this, onInterrupt = std::move(onInterrupt)] {
        int signal = 0;
        if (sigwait(&signals, &signal) != 0 || signal == SIGUSR1) return;
        onInterrupt();
    });
}

InterruptWatcher::~InterruptWatcher() {
    pthread_kill(watcher.native_handle(), SIGUSR1);
    watcher.join();
}

}  // namespace quester::cli
