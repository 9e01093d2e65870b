#pragma once

#include <memory>
#include <string>

#include "support/Locked.h"
#include "support/OperationQueue.h"
#include "support/SourceLocation.h"

namespace quester {

// An operation queue that counts the operations added through
// `addTrackedOperation` until each has ended (run or cancelled).
// Thread-safe.
class TrackableOperationQueue : public OperationQueue {
public:
    explicit TrackableOperationQueue(int maxConcurrentOperationCount, std::string name = "",
                                     SourceLocation where = SourceLocation::current())
        : OperationQueue(maxConcurrentOperationCount, std::move(name), where) {}

    // False (and nothing counted) if the operation was already queued or started.
    bool addTrackedOperation(std::shared_ptr<Operation> operation);
    std::shared_ptr<Operation> addTrackedOperation(Operation::Block block);

    // Tracked operations that have not ended yet. The count drops before the
    // operation reads as finished.
    int trackedOperationsCount() const { return activeOperations.value(); }

private:
    // Shared with the operations' finishing steps, which may outlive the queue.
    std::shared_ptr<Locked<int>> counter = std::make_shared<Locked<int>>(0);
    Locked<int>& activeOperations = *counter;
};

}  // namespace quester
