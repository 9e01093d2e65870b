#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "support/MainLoop.h"

namespace quester {
namespace {

using namespace std::chrono_literals;

TEST(MainLoop, PostedWorkRunsInOrderOnTheRunningThread) {
    MainLoop loop;
    std::vector<int> order;
    for (int i = 0; i < 5; ++i) loop.post([&, i] { order.push_back(i); });
    loop.post([&] { loop.post([&] { order.push_back(99); }); });
    loop.runPending();
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2, 3, 4, 99}));
    EXPECT_TRUE(loop.isLoopThread());
}

TEST(MainLoop, TimersRunByDueTimeAndCancelledOnesNever) {
    MainLoop loop;
    std::vector<std::string> fired;
    loop.postAfter(60ms, [&] { fired.push_back("late"); });
    auto cancelled = loop.postAfter(1ms, [&] { fired.push_back("cancelled"); });
    loop.postAfter(5ms, [&] { fired.push_back("early"); });
    loop.cancel(cancelled);
    EXPECT_TRUE(loop.runUntil([&] { return fired.size() == 2; }, 20s));
    EXPECT_EQ(fired, (std::vector<std::string>{"early", "late"}));
}

TEST(MainLoop, RunStopsWhenToldFromAnotherThread) {
    MainLoop loop;
    bool ran = false;
    std::thread worker([&] {
        loop.post([&] { ran = true; });
        loop.post([&] { loop.stop(); });
    });
    loop.run();
    worker.join();
    EXPECT_TRUE(ran);
}

TEST(MainLoop, RunUntilAnswersFalseWhenTheConditionNeverHolds) {
    MainLoop loop;
    EXPECT_FALSE(loop.runUntil([] { return false; }, 20ms));
}

}  // namespace
}  // namespace quester
