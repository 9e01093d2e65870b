#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "support/Operation.h"
#include "support/SourceLocation.h"

namespace quester {

// Runs operations on threads of its own, at most `maxConcurrentOperationCount`
// at once, in the order they were added. An empty name becomes
// "<file stem> #<line>" of the place that made the queue, so a thread name in
// a report leads to the code.
//
// Threads start when work arrives and stay until the queue goes. Destroying a
// queue waits for the operations that have begun; those that haven't are
// cancelled and finish without running. A queue may be destroyed from one of
// its own operations. All operations are thread-safe.
class OperationQueue {
public:
    explicit OperationQueue(int maxConcurrentOperationCount, std::string name = "",
                            SourceLocation where = SourceLocation::current());
    virtual ~OperationQueue();
    OperationQueue(const OperationQueue&) = delete;
    OperationQueue& operator=(const OperationQueue&) = delete;

    // Queues `operation`. False (and nothing queued) if it was already in a
    // queue or has been started.
    bool addOperation(std::shared_ptr<Operation> operation);
    // Wraps `block` in an operation, queues it and returns it.
    std::shared_ptr<Operation> addOperation(Operation::Block block);

    // Cancels every operation in the queue; those waiting finish at once.
    void cancelAllOperations();
    // Blocks until nothing waits or runs. Waits for ever on a suspended queue
    // that still holds work.
    void waitUntilAllOperationsAreFinished();

    // A suspended queue starts nothing new; running operations go on.
    void setSuspended(bool suspended);
    bool isSuspended() const;

    // Operations waiting or running.
    int operationCount() const;
    int maxConcurrentOperationCount() const { return maxConcurrent; }
    const std::string& name() const { return queueName; }

protected:
    // Queues `operation` and, only if that succeeds, gives it `finishingStep`.
    bool addOperation(std::shared_ptr<Operation> operation, Operation::Block finishingStep);

private:
    struct State;
    const int maxConcurrent;
    const std::string queueName;
    std::shared_ptr<State> state;
};

// A queue that runs one operation at a time, in order, on one thread.
class SerialQueue : public OperationQueue {
public:
    explicit SerialQueue(std::string name = "", SourceLocation where = SourceLocation::current())
        : OperationQueue(1, std::move(name), where) {}
};

// The kernel keeps at most 15 bytes of a thread's name: `name` cut to that,
// never inside a UTF-8 character.
std::string kernelThreadName(std::string_view name);

}  // namespace quester
