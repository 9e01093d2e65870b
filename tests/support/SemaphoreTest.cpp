#include <gtest/gtest.h>

#include <thread>

#include "support/Lock.h"
#include "support/Semaphore.h"

namespace quester {
namespace {

// The analysis can't follow a lock handed to another thread.
void unlockFromThisThread(Lock& lock) NO_THREAD_SAFETY_ANALYSIS { lock.unlock(); }

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

TEST(Semaphore, BusyAndIdleTakeTheSemaphoreAndNolongerBusyGivesItBack) {
    Semaphore gate = SemaphoreNotBusy();
    EXPECT_FALSE(gate.isBusy()) << "a false answer has taken it";
    EXPECT_TRUE(gate.isBusy());
    EXPECT_FALSE(gate.isIdle());
    gate.nolongerBusy();
    EXPECT_TRUE(gate.isIdle());
    EXPECT_FALSE(gate.isIdle());
}

TEST(Semaphore, ReleasedFromAnotherThread) {
    Semaphore gate = SemaphoreNotBusy();
    ASSERT_TRUE(gate.isIdle());
    std::thread other([&] { gate.nolongerBusy(); });
    other.join();
    EXPECT_TRUE(gate.isIdle());
}

TEST(Lock, IsAlreadyAquiredLeavesAFreeLockFreeAndSeesAHeldOne) {
    Lock lock;
    EXPECT_FALSE(lock.isAlreadyAquired());
    EXPECT_TRUE(lock.tryLock()) << "the test gave the lock back";
    EXPECT_TRUE(lock.isAlreadyAquired());
    // A binary semaphore, not a mutex: another thread may release it.
    std::thread other([&] { unlockFromThisThread(lock); });
    other.join();
    EXPECT_FALSE(lock.isAlreadyAquired());
}

}  // namespace
}  // namespace quester
