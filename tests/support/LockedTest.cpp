#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "support/Locked.h"
#include "support/Semaphore.h"

namespace quester {
namespace {

TEST(Locked, AccessSerialisesReadModifyWriteAcrossThreads) {
    Locked<int> counter(0);
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 10000; ++i) counter.access([](int& value) { ++value; });
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(counter.value(), 80000);
}

TEST(Locked, IsAlreadyAquiredLeavesAFreeLockFree) {
    Locked<int> value(1);
    EXPECT_FALSE(value.isAlreadyAquired());
    EXPECT_FALSE(value.isAlreadyAquired());
    value.access([&](int&) { EXPECT_TRUE(value.isAlreadyAquired()); });
    EXPECT_FALSE(value.isAlreadyAquired());
}

// A binary semaphore, not a mutex: a waiter parked on a held lock must wake when
// another thread, not the holder, releases it. The flag helpers hand a lock
// across threads this way.
TEST(Lock, ReleaseFromAnotherThreadWakesAWaiter) {
    Lock lock;
    lock.lock();
    EXPECT_TRUE(lock.isAlreadyAquired());
    std::atomic<bool> acquired{false};
    std::thread waiter([&] {
        lock.lock();
        acquired = true;
        lock.unlock();
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));  // let the waiter park in the kernel
    std::thread releaser([&]() NO_THREAD_SAFETY_ANALYSIS { lock.unlock(); });
    releaser.join();
    waiter.join();
    EXPECT_TRUE(acquired);
    EXPECT_FALSE(lock.isAlreadyAquired());
    EXPECT_TRUE(lock.tryLock());
    lock.unlock();
}

TEST(Semaphore, FlagIsSetOnlyAfterSetAndTestingChangesNothing) {
    Semaphore flag = SemaphoreNotBusy();
    EXPECT_FALSE(flag.isSet());
    EXPECT_FALSE(flag.isSet());
    flag.set();
    EXPECT_TRUE(flag.isSet());
    EXPECT_TRUE(flag.isSet());
    flag.set();
    EXPECT_TRUE(flag.isSet()) << "setting a set flag keeps it set";
}

TEST(Semaphore, BusyAndIdleTakeTheSemaphoreAndNolongerBusyGivesItBackFromAnyThread) {
    Semaphore gate = SemaphoreNotBusy();
    EXPECT_FALSE(gate.isBusy()) << "a false answer has taken it";
    EXPECT_TRUE(gate.isBusy());
    EXPECT_FALSE(gate.isIdle());
    std::thread other([&] { gate.nolongerBusy(); });
    other.join();
    EXPECT_TRUE(gate.isIdle());
    EXPECT_FALSE(gate.isIdle());
}

}  // namespace
}  // namespace quester
