#include "support/TrackableOperationQueue.h"

namespace quester {

bool TrackableOperationQueue::addTrackedOperation(std::shared_ptr<Operation> operation) {
    activeOperations.access([](int& count) { ++count; });
    bool added =
        addOperation(std::move(operation), [counter = counter] { counter->access([](int& count) { --count; }); });
    if (!added) activeOperations.access([](int& count) { --count; });
    return added;
}

std::shared_ptr<Operation> TrackableOperationQueue::addTrackedOperation(Operation::Block block) {
    auto operation = std::make_shared<Operation>(std::move(block));
    addTrackedOperation(operation);
    return operation;
}

}  // namespace quester
