#include <gtest/gtest.h>

#include <thread>

#include "support/Semaphore.h"

namespace quester {
namespace {

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
