#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <thread>

namespace quester {

// The one thread that stands for the application's main thread: it runs posted
// work in order and owns the timers. In the command line it is main()'s thread
// (whoever calls `run`). Posting is safe from any thread; work posted while no
// thread runs the loop waits until one does.
class MainLoop {
public:
    using Clock = std::chrono::steady_clock;
    using Task = std::function<void()>;
    using TimerId = std::uint64_t;

    MainLoop() = default;
    MainLoop(const MainLoop&) = delete;
    MainLoop& operator=(const MainLoop&) = delete;

    // The process-wide loop.
    static MainLoop& shared();

    void post(Task task);
    // Runs `task` on the loop once `delay` has passed; `cancel` stops it if it
    // has not begun.
    TimerId postAfter(Clock::duration delay, Task task);
    void cancel(TimerId timer);

    // Runs work until `stop` is called. The calling thread becomes the loop's thread.
    void run();
    // Runs work until `done()` is true or `timeout` passes; answers `done()`.
    bool runUntil(const std::function<bool()>& done, Clock::duration timeout);
    // Runs whatever is due now, without waiting.
    void runPending();
    void stop();

    // True on the thread that runs (or last ran) the loop.
    bool isLoopThread() const;

private:
    bool runOneStep(std::unique_lock<std::mutex>& guard, Clock::time_point waitUntil);

    struct Timer {
        Clock::time_point due;
        Task task;
    };

    mutable std::mutex mutex;
    std::condition_variable wakeUp;
    std::deque<Task> queue;
    std::map<TimerId, Timer> timers;
    TimerId nextTimer = 1;
    bool stopRequested = false;
    std::thread::id loopThread;
};

}  // namespace quester
