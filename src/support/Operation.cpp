#include "support/Operation.h"

namespace quester {

void Operation::start() {
    bool runMain;
    {
        std::lock_guard guard(mutex);
        if (state != State::ready) return;
        claimed = true;
        runMain = !cancelled;
        state = State::executing;
    }
    if (runMain) main();
    std::vector<Block> steps;
    {
        std::lock_guard guard(mutex);
        steps.swap(finishingSteps);
    }
    for (auto& step : steps) step();
    std::lock_guard guard(mutex);
    state = State::finished;
    cancelHandler = nullptr;
    finishedCondition.notify_all();
}

void Operation::main() {
    if (block) block();
}

void Operation::cancel() {
    std::function<void()> handler;
    {
        std::lock_guard guard(mutex);
        if (cancelled || state == State::finished) return;
        cancelled = true;
        if (state == State::ready) handler = cancelHandler;
    }
    if (handler) handler();
}

bool Operation::isCancelled() const {
    std::lock_guard guard(mutex);
    return cancelled;
}

bool Operation::isExecuting() const {
    std::lock_guard guard(mutex);
    return state == State::executing;
}

bool Operation::isFinished() const {
    std::lock_guard guard(mutex);
    return state == State::finished;
}

void Operation::waitUntilFinished() {
    std::unique_lock guard(mutex);
    finishedCondition.wait(guard, [&] { return state == State::finished; });
}

std::string Operation::name() const {
    std::lock_guard guard(mutex);
    return operationName;
}

void Operation::setName(std::string newName) {
    std::lock_guard guard(mutex);
    operationName = std::move(newName);
}

void Operation::addFinishingStep(Block step) {
    {
        std::lock_guard guard(mutex);
        if (state != State::finished) {
            finishingSteps.push_back(std::move(step));
            return;
        }
    }
    step();
}

bool Operation::claimForQueue(std::function<void()> onCancel, Block finishingStep) {
    std::lock_guard guard(mutex);
    if (claimed || state != State::ready) return false;
    claimed = true;
    cancelHandler = std::move(onCancel);
    if (finishingStep) finishingSteps.push_back(std::move(finishingStep));
    return true;
}

}  // namespace quester
