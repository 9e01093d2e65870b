#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace quester {

// One unit of work that a queue runs, or that a caller runs through `start`.
// Subclasses override `main`; a plain operation runs the block it was given.
// Operations are shared (std::shared_ptr) between the queue and whoever may
// cancel or wait for them. All operations are thread-safe.
class Operation {
public:
    using Block = std::function<void()>;

    Operation() = default;
    explicit Operation(Block block) : block(std::move(block)) {}
    virtual ~Operation() = default;
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;

    // Runs `main` unless cancelled, then finishes. A second start does nothing.
    void start();

    // Asks the operation to stop. One that hasn't begun finishes without
    // running when it is started (or at once when its queue drops it); one that
    // is running is not interrupted: `main` may test `isCancelled`.
    void cancel();
    bool isCancelled() const;
    bool isExecuting() const;
    bool isFinished() const;

    // Blocks until the operation has finished. An operation that is never
    // started never finishes.
    void waitUntilFinished();

    std::string name() const;
    void setName(std::string newName);

    // Adds a step that runs on the finishing thread after `main` (or instead of
    // it when cancelled), before `isFinished` turns true and waiters wake. On a
    // finished operation it runs at once on the caller's thread.
    void addFinishingStep(Block step);

protected:
    virtual void main();

private:
    friend class OperationQueue;
    // Called once by the queue when it takes the operation, with what to do on
    // a cancel while waiting and an optional finishing step; answers false (and
    // keeps neither) if the operation was already in a queue or started.
    bool claimForQueue(std::function<void()> onCancel, Block finishingStep);

    enum class State { ready, executing, finished };

    Block block;
    mutable std::mutex mutex;
    std::condition_variable finishedCondition;
    State state = State::ready;
    bool cancelled = false;
    bool claimed = false;
    std::string operationName;
    std::vector<Block> finishingSteps;
    std::function<void()> cancelHandler;
};

}  // namespace quester
