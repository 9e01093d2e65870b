#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "support/DelayTimer.h"

namespace quester {
namespace {

using namespace std::chrono_literals;

TEST(DelayTimer, FireFirstTimePassesAtOnceThenOnlyAfterTheDelay) {
    ManualClock clock;
    DelayTimer timer(0.25s, true, clock);
    EXPECT_TRUE(timer.hasElapsed());
    EXPECT_FALSE(timer.hasElapsed());
    clock.advance(200ms);
    EXPECT_FALSE(timer.hasElapsed());
    clock.advance(51ms);
    EXPECT_TRUE(timer.hasElapsed());
    EXPECT_FALSE(timer.hasElapsed()) << "a pass starts the next interval";
}

TEST(DelayTimer, WithoutFireFirstTimeTheFirstIntervalCountsFromCreationStrictly) {
    ManualClock clock;
    DelayTimer timer(0.25s, false, clock);
    EXPECT_FALSE(timer.hasElapsed());
    clock.advance(250ms);
    EXPECT_FALSE(timer.hasElapsed()) << "exactly the delay is not more than it";
    clock.advance(1us);
    EXPECT_TRUE(timer.hasElapsed());
}

TEST(DelayTimer, AClockSetBackFarEnoughAlsoPasses) {
    ManualClock clock;
    DelayTimer timer(1s, false, clock);
    clock.advance(-500ms);
    EXPECT_FALSE(timer.hasElapsed());
    clock.advance(-1s);
    EXPECT_TRUE(timer.hasElapsed());
}

TEST(DelayTimer, OneCallerPassesPerIntervalAcrossThreads) {
    ManualClock clock;
    DelayTimer timer(1s, true, clock);
    std::atomic<int> passes = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 1000; ++i)
                if (timer.hasElapsed()) ++passes;
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(passes, 1);
}

}  // namespace
}  // namespace quester
