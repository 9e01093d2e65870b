#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "support/Blocker.h"
#include "support/GCDAdditions.h"
#include "support/Locked.h"
#include "support/MainLoop.h"

namespace quester {
namespace {

using namespace std::chrono_literals;

bool runLoopUntil(const std::function<bool()>& done) {
    return MainLoop::shared().runUntil(done, 20s);
}

TEST(GCDAdditions, PerformRunsTheBlockOnTheMainLoop) {
    std::thread::id ranOn;
    auto operation = GCDAdditions::perform(10ms, std::nullopt, [&] { ranOn = std::this_thread::get_id(); });
    ASSERT_TRUE(runLoopUntil([&] { return operation->isFinished(); }));
    EXPECT_EQ(ranOn, std::this_thread::get_id());
}

TEST(GCDAdditions, TwoCallsWithinTheDelayRunOnlyTheSecondBlock) {
    std::vector<std::string> ran;
    auto first = GCDAdditions::cancelPreviousThenPerform("burst", 300ms, [&] { ran.push_back("first"); });
    auto second = GCDAdditions::cancelPreviousThenPerform("burst", 300ms, [&] { ran.push_back("second"); });
    ASSERT_TRUE(runLoopUntil([&] { return second->isFinished(); }));
    EXPECT_EQ(ran, std::vector<std::string>{"second"});
    EXPECT_TRUE(first->isCancelled());
}

TEST(GCDAdditions, ABlockAlreadyRunningIsNotStoppedAndTheSecondRunsToo) {
    Locked<std::vector<std::string>> ran;
    Blocker secondScheduled;
    std::shared_ptr<Operation> second;
    auto first = GCDAdditions::cancelPreviousThenPerform("running", 0ms, [&] {
        // While the first block runs, the next call comes from another thread.
        std::thread caller([&] {
            second = GCDAdditions::cancelPreviousThenPerform(
                "running", 0ms, [&] { ran.access([](auto& list) { list.push_back("second"); }); });
            secondScheduled.release();
        });
        caller.join();
        ran.access([](auto& list) { list.push_back("first"); });
    });
    ASSERT_TRUE(runLoopUntil([&] { return secondScheduled.isReleased() && second->isFinished(); }));
    EXPECT_FALSE(first->isCancelled());
    EXPECT_EQ(ran.value(), (std::vector<std::string>{"first", "second"}));
}

TEST(GCDAdditions, CallSiteKeysSeparateCallSites) {
    std::atomic<int> ran = 0;
    auto schedule = [&] { return GCDAdditions::cancelPreviousThenPerform(200ms, [&] { ++ran; }); };
    auto first = schedule();
    auto second = schedule();
    auto elsewhere = GCDAdditions::cancelPreviousThenPerform(200ms, [&] { ++ran; });
    EXPECT_EQ(first->name(), second->name());
    EXPECT_NE(first->name(), elsewhere->name());
    EXPECT_EQ(first->name().rfind("GCDAdditionsTest #", 0), 0u) << first->name();
    ASSERT_TRUE(runLoopUntil([&] { return second->isFinished() && elsewhere->isFinished(); }));
    EXPECT_EQ(ran, 2);
    EXPECT_TRUE(first->isCancelled());
}

TEST(GCDAdditions, ACancelledOperationStillFinishes) {
    bool ran = false;
    auto operation = GCDAdditions::perform(10ms, std::nullopt, [&] { ran = true; });
    operation->cancel();
    operation->waitUntilFinished();
    EXPECT_FALSE(ran);
}

}  // namespace
}  // namespace quester
