#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <chrono>
#include <numeric>
#include <set>
#include <thread>
#include <vector>

#include "support/Blocker.h"
#include "support/Locked.h"
#include "support/OperationQueue.h"
#include "support/TrackableOperationQueue.h"

namespace quester {
namespace {

using namespace std::chrono_literals;

std::string currentThreadName() {
    char name[16] = {};
    pthread_getname_np(pthread_self(), name, sizeof name);
    return name;
}

TEST(SerialQueue, RunsInOrderOnOneThread) {
    SerialQueue queue("ordered");
    Locked<std::vector<int>> order;
    Locked<std::set<std::thread::id>> threads;
    for (int i = 0; i < 200; ++i) {
        queue.addOperation([&, i] {
            order.access([&](auto& list) { list.push_back(i); });
            threads.access([](auto& ids) { ids.insert(std::this_thread::get_id()); });
        });
    }
    queue.waitUntilAllOperationsAreFinished();
    std::vector<int> expected(200);
    std::iota(expected.begin(), expected.end(), 0);
    EXPECT_EQ(order.value(), expected);
    EXPECT_EQ(threads.value().size(), 1u);
    EXPECT_EQ(threads.value().count(std::this_thread::get_id()), 0u);
}

TEST(SerialQueue, ThreadNameIsCutForTheKernelOnACharacterBoundaryButTheQueueKeepsItsName) {
    EXPECT_EQ(kernelThreadName("exactly15bytes!"), "exactly15bytes!");
    // "é" is two bytes; the 15th byte would be its first half.
    EXPECT_EQ(kernelThreadName("abcdefghijklmn\xC3\xA9z"), "abcdefghijklmn");
    SerialQueue queue("a rather long queue name");
    std::string seen;
    queue.addOperation([&] { seen = currentThreadName(); })->waitUntilFinished();
    EXPECT_EQ(seen, "a rather long q");
    EXPECT_EQ(queue.name(), "a rather long queue name");
    int line = __LINE__ + 1;
    SerialQueue unnamed;
    EXPECT_EQ(unnamed.name(), "OperationQueueTest #" + std::to_string(line)) << "an empty name is the file and line";
}

TEST(OperationQueue, NeverRunsMoreThanItsLimit) {
    OperationQueue queue(3, "limited");
    std::atomic<int> running = 0;
    std::atomic<int> mostAtOnce = 0;
    for (int i = 0; i < 40; ++i) {
        queue.addOperation([&] {
            int now = ++running;
            int seen = mostAtOnce.load();
            while (now > seen && !mostAtOnce.compare_exchange_weak(seen, now)) {
            }
            std::this_thread::sleep_for(2ms);
            --running;
        });
    }
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_LE(mostAtOnce.load(), 3);
}

TEST(OperationQueue, UsesItsWholeLimitWhenWorkWaits) {
    OperationQueue queue(2, "both");
    Blocker bothRunning;
    std::atomic<int> running = 0;
    auto work = [&] {
        if (++running == 2) bothRunning.release();
        bothRunning.wait();
    };
    queue.addOperation(work);
    queue.addOperation(work);
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_TRUE(bothRunning.isReleased());
}

TEST(OperationQueue, CancelledWaitingOperationsFinishWithoutRunning) {
    SerialQueue queue("cancel");
    Blocker gate;
    queue.addOperation([&] { gate.wait(); });
    bool secondRan = false;
    auto second = queue.addOperation([&] { secondRan = true; });
    second->cancel();
    // Finishes at once, while the first still holds the queue.
    second->waitUntilFinished();
    gate.release();
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_FALSE(secondRan);
}

TEST(OperationQueue, CancelAllLetsTheRunningOneEndAndDropsTheRest) {
    SerialQueue queue("cancel all");
    Blocker started;
    Blocker gate;
    std::atomic<int> ran = 0;
    auto running = queue.addOperation([&] {
        started.release();
        gate.wait();
        ++ran;
    });
    for (int i = 0; i < 5; ++i) queue.addOperation([&] { ++ran; });
    started.wait();
    queue.cancelAllOperations();
    running->cancel();
    gate.release();
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(ran, 1);
}

// Long work tests its stop flag between units; nothing is killed.
class UntilCancelledOperation : public Operation {
public:
    Blocker started;

protected:
    void main() override {
        started.release();
        while (!isCancelled()) std::this_thread::yield();
    }
};

TEST(OperationQueue, ARunningOperationSeesItsCancelAndStopsByItself) {
    OperationQueue queue(1, "stoppable");
    auto operation = std::make_shared<UntilCancelledOperation>();
    ASSERT_TRUE(queue.addOperation(operation));
    operation->started.wait();
    operation->cancel();
    operation->waitUntilFinished();
    EXPECT_FALSE(operation->isExecuting());
}

TEST(OperationQueue, SuspendedQueueStartsNothingUntilResumed) {
    OperationQueue queue(2, "suspended");
    queue.setSuspended(true);
    std::atomic<int> ran = 0;
    std::vector<std::shared_ptr<Operation>> operations;
    for (int i = 0; i < 4; ++i) operations.push_back(queue.addOperation([&] { ++ran; }));
    std::this_thread::sleep_for(20ms);
    EXPECT_EQ(ran, 0);
    EXPECT_EQ(queue.operationCount(), 4);
    queue.setSuspended(false);
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(ran, 4);
}

TEST(OperationQueue, AnOperationGoesIntoOneQueueOnce) {
    SerialQueue first("first");
    SerialQueue second("second");
    auto operation = std::make_shared<Operation>([] {});
    EXPECT_TRUE(first.addOperation(operation));
    EXPECT_FALSE(second.addOperation(operation));
    operation->waitUntilFinished();
}

TEST(OperationQueue, DestroyingTheQueueCancelsWhatHasNotBegun) {
    std::shared_ptr<Operation> waiting;
    bool waitingRan = false;
    {
        SerialQueue queue("going away");
        queue.setSuspended(true);
        waiting = queue.addOperation([&] { waitingRan = true; });
    }
    EXPECT_TRUE(waiting->isFinished());
    EXPECT_FALSE(waitingRan);
}

TEST(OperationQueue, AQueueMayBeDestroyedByItsOwnOperation) {
    auto queue = std::make_unique<SerialQueue>("self destroying");
    Blocker added;
    Blocker done;
    queue->addOperation([&] {
        added.wait();
        queue.reset();
        done.release();
    });
    added.release();
    done.wait();
    EXPECT_EQ(queue, nullptr);
}

TEST(TrackableOperationQueue, CountsTrackedOperationsUntilTheyEnd) {
    TrackableOperationQueue queue(3, "tracked");
    Blocker gate;
    auto first = queue.addTrackedOperation([&] { gate.wait(); });
    auto second = queue.addTrackedOperation([&] { gate.wait(); });
    queue.addOperation([] {})->waitUntilFinished();
    EXPECT_EQ(queue.trackedOperationsCount(), 2) << "untracked work isn't counted";
    gate.release();
    first->waitUntilFinished();
    second->waitUntilFinished();
    EXPECT_EQ(queue.trackedOperationsCount(), 0);
}

TEST(TrackableOperationQueue, CancelledAndRejectedOperationsLeaveTheCountRight) {
    TrackableOperationQueue queue(1, "tracked cancel");
    queue.setSuspended(true);
    auto operation = queue.addTrackedOperation([] {});
    EXPECT_EQ(queue.trackedOperationsCount(), 1);
    EXPECT_FALSE(queue.addTrackedOperation(operation));
    EXPECT_EQ(queue.trackedOperationsCount(), 1);
    operation->cancel();
    EXPECT_EQ(queue.trackedOperationsCount(), 0);
}

}  // namespace
}  // namespace quester
