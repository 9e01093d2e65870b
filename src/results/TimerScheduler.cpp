#include "results/TimerScheduler.h"

#include <chrono>

namespace quester {

MainLoopTimerScheduler& MainLoopTimerScheduler::shared() {
    static MainLoopTimerScheduler scheduler;
    return scheduler;
}

TimerScheduler::TimerId MainLoopTimerScheduler::schedule(Clock::Duration delay, Task task) {
    return loop.postAfter(std::chrono::duration_cast<MainLoop::Clock::duration>(delay), std::move(task));
}

}  // namespace quester
