#include "support/OperationQueue.h"

#include <pthread.h>

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

#include "support/SourceLocation.h"

namespace quester {

struct OperationQueue::State : std::enable_shared_from_this<State> {
    std::string threadName;
    int maxConcurrent = 1;

    std::mutex mutex;
    std::condition_variable workArrived;
    std::condition_variable allFinished;
    std::deque<std::shared_ptr<Operation>> waiting;
    std::vector<std::thread> workers;
    int running = 0;
    int idleWorkers = 0;
    bool suspended = false;
    bool shuttingDown = false;

    bool hasWorkToStart() const { return !suspended && !waiting.empty(); }

    // Called with the lock held. Each idle worker (counted from its creation)
    // will take one waiting operation, so workers are made only for the rest,
    // up to the limit.
    void startWorkersIfNeeded() {
        if (suspended) return;
        while (static_cast<int>(workers.size()) < maxConcurrent && idleWorkers < static_cast<int>(waiting.size())) {
            ++idleWorkers;
            workers.emplace_back([self = shared_from_this()] { self->workLoop(); });
        }
    }

    void workLoop() {
        pthread_setname_np(pthread_self(), kernelThreadName(threadName).c_str());
        std::unique_lock guard(mutex);
        for (;;) {
            workArrived.wait(guard, [&] { return shuttingDown || hasWorkToStart(); });
            if (shuttingDown) return;
            --idleWorkers;
            auto operation = std::move(waiting.front());
            waiting.pop_front();
            ++running;
            guard.unlock();
            operation->start();
            operation.reset();
            guard.lock();
            --running;
            ++idleWorkers;
            if (running == 0 && waiting.empty()) allFinished.notify_all();
            if (hasWorkToStart()) workArrived.notify_one();
        }
    }

    // A waiting operation that gets cancelled leaves the queue at once and
    // finishes on the cancelling thread.
    void dropCancelled(const Operation* cancelled) {
        std::shared_ptr<Operation> dropped;
        {
            std::lock_guard guard(mutex);
            auto found = std::find_if(waiting.begin(), waiting.end(),
                                      [&](const auto& operation) { return operation.get() == cancelled; });
            if (found == waiting.end()) return;
            dropped = std::move(*found);
            waiting.erase(found);
        }
        dropped->start();
        std::lock_guard guard(mutex);
        if (running == 0 && waiting.empty()) allFinished.notify_all();
    }
};

OperationQueue::OperationQueue(int maxConcurrentOperationCount, std::string name, SourceLocation where)
    : maxConcurrent(std::max(1, maxConcurrentOperationCount)),
      queueName(name.empty() ? callSiteName(where) : std::move(name)),
      state(std::make_shared<State>()) {
    state->threadName = queueName;
    state->maxConcurrent = maxConcurrent;
}

OperationQueue::~OperationQueue() {
    std::deque<std::shared_ptr<Operation>> notStarted;
    std::vector<std::thread> workers;
    {
        std::lock_guard guard(state->mutex);
        state->shuttingDown = true;
        notStarted.swap(state->waiting);
        workers.swap(state->workers);
    }
    state->workArrived.notify_all();
    for (auto& operation : notStarted) {
        operation->cancel();
        operation->start();
    }
    for (auto& worker : workers) {
        if (worker.get_id() == std::this_thread::get_id()) {
            worker.detach();
        } else {
            worker.join();
        }
    }
}

bool OperationQueue::addOperation(std::shared_ptr<Operation> operation) {
    return addOperation(std::move(operation), {});
}

bool OperationQueue::addOperation(std::shared_ptr<Operation> operation, Operation::Block finishingStep) {
    std::weak_ptr<State> weakState = state;
    const Operation* identity = operation.get();
    bool claimed = operation->claimForQueue(
        [weakState, identity] {
            if (auto alive = weakState.lock()) alive->dropCancelled(identity);
        },
        std::move(finishingStep));
    if (!claimed) return false;
    // Notified under the lock: once it is released, a running operation may
    // destroy the queue.
    std::lock_guard guard(state->mutex);
    state->waiting.push_back(std::move(operation));
    state->startWorkersIfNeeded();
    state->workArrived.notify_one();
    return true;
}

std::shared_ptr<Operation> OperationQueue::addOperation(Operation::Block block) {
    auto operation = std::make_shared<Operation>(std::move(block));
    addOperation(operation);
    return operation;
}

void OperationQueue::cancelAllOperations() {
    std::vector<std::shared_ptr<Operation>> all;
    {
        std::lock_guard guard(state->mutex);
        all.assign(state->waiting.begin(), state->waiting.end());
    }
    for (auto& operation : all) operation->cancel();
}

void OperationQueue::waitUntilAllOperationsAreFinished() {
    std::unique_lock guard(state->mutex);
    state->allFinished.wait(guard, [&] { return state->running == 0 && state->waiting.empty(); });
}

void OperationQueue::setSuspended(bool suspended) {
    std::lock_guard guard(state->mutex);
    state->suspended = suspended;
    state->startWorkersIfNeeded();
    state->workArrived.notify_all();
}

bool OperationQueue::isSuspended() const {
    std::lock_guard guard(state->mutex);
    return state->suspended;
}

int OperationQueue::operationCount() const {
    std::lock_guard guard(state->mutex);
    return state->running + static_cast<int>(state->waiting.size());
}

std::string kernelThreadName(std::string_view name) {
    constexpr std::size_t kLimit = 15;
    if (name.size() <= kLimit) return std::string(name);
    std::size_t cut = kLimit;
    // Step back over continuation bytes (10xxxxxx) to the start of a character.
    while (cut > 0 && (static_cast<unsigned char>(name[cut]) & 0xC0) == 0x80) --cut;
    return std::string(name.substr(0, cut));
}

}  // namespace quester
