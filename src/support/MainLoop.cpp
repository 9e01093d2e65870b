#include "support/MainLoop.h"

#include <algorithm>

namespace quester {

MainLoop& MainLoop::shared() {
    static MainLoop loop;
    return loop;
}

void MainLoop::post(Task task) {
    {
        std::lock_guard guard(mutex);
        queue.push_back(std::move(task));
    }
    wakeUp.notify_all();
}

MainLoop::TimerId MainLoop::postAfter(Clock::duration delay, Task task) {
    TimerId id;
    {
        std::lock_guard guard(mutex);
        id = nextTimer++;
        timers.emplace(id, Timer{Clock::now() + delay, std::move(task)});
    }
    wakeUp.notify_all();
    return id;
}

void MainLoop::cancel(TimerId timer) {
    std::lock_guard guard(mutex);
    timers.erase(timer);
}

// Runs one posted task or one due timer, waiting no later than `waitUntil`.
// Answers false when nothing ran. Called with `guard` held; runs work without it.
bool MainLoop::runOneStep(std::unique_lock<std::mutex>& guard, Clock::time_point waitUntil) {
    for (;;) {
        if (stopRequested) return false;
        if (!queue.empty()) {
            Task task = std::move(queue.front());
            queue.pop_front();
            guard.unlock();
            task();
            guard.lock();
            return true;
        }
        auto earliest = std::min_element(timers.begin(), timers.end(),
                                         [](const auto& a, const auto& b) { return a.second.due < b.second.due; });
        auto now = Clock::now();
        if (earliest != timers.end() && earliest->second.due <= now) {
            Task task = std::move(earliest->second.task);
            timers.erase(earliest);
            guard.unlock();
            task();
            guard.lock();
            return true;
        }
        if (now >= waitUntil) return false;
        auto until = waitUntil;
        if (earliest != timers.end()) until = std::min(until, earliest->second.due);
        wakeUp.wait_until(guard, until);
    }
}

void MainLoop::run() {
    std::unique_lock guard(mutex);
    loopThread = std::this_thread::get_id();
    stopRequested = false;
    while (!stopRequested) runOneStep(guard, Clock::time_point::max());
}

bool MainLoop::runUntil(const std::function<bool()>& done, Clock::duration timeout) {
    auto deadline = Clock::now() + timeout;
    std::unique_lock guard(mutex);
    loopThread = std::this_thread::get_id();
    stopRequested = false;
    for (;;) {
        guard.unlock();
        bool finished = done();
        guard.lock();
        if (finished) return true;
        if (Clock::now() >= deadline || stopRequested) break;
        // Wake at least every 10 ms so a condition changed off the loop is seen.
        runOneStep(guard, std::min(deadline, Clock::now() + std::chrono::milliseconds(10)));
    }
    guard.unlock();
    return done();
}

void MainLoop::runPending() {
    std::unique_lock guard(mutex);
    loopThread = std::this_thread::get_id();
    stopRequested = false;
    while (runOneStep(guard, Clock::now())) {
    }
}

void MainLoop::stop() {
    {
        std::lock_guard guard(mutex);
        stopRequested = true;
    }
    wakeUp.notify_all();
}

bool MainLoop::isLoopThread() const {
    std::lock_guard guard(mutex);
    return loopThread == std::this_thread::get_id();
}

}  // namespace quester
