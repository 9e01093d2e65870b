#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "support/NotificationCenter.h"

namespace quester {
namespace {

using namespace std::chrono_literals;

class NotificationCenterTest : public ::testing::Test {
protected:
    MainLoop loop;
    NotificationCenter center{loop};
};

TEST_F(NotificationCenterTest, ObserversOfTheNameRunOnTheLoopInOrderOfAdding) {
    std::vector<std::string> calls;
    center.addObserver("preferencesDidChange", [&] { calls.push_back("first"); });
    center.addObserver("RebuildLocationPopup", [&] { calls.push_back("other name"); });
    center.addObserver("preferencesDidChange", [&] { calls.push_back("second"); });

    center.post("preferencesDidChange");
    EXPECT_TRUE(calls.empty()) << "delivery waits for the loop";
    loop.runPending();
    EXPECT_EQ(calls, (std::vector<std::string>{"first", "second"}));
}

TEST_F(NotificationCenterTest, RemovedObserversAreNotCalledEvenForPendingPosts) {
    int calls = 0;
    auto token = center.addObserver("changed", [&] { ++calls; });
    center.post("changed");
    center.removeObserver(token);
    center.removeObserver(token);
    loop.runPending();
    EXPECT_EQ(calls, 0);
}

TEST_F(NotificationCenterTest, AnObserverMayRemoveTheNextOneDuringDelivery) {
    int secondCalls = 0;
    NotificationCenter::Token second = 0;
    center.addObserver("changed", [&] { center.removeObserver(second); });
    second = center.addObserver("changed", [&] { ++secondCalls; });
    center.post("changed");
    loop.runPending();
    EXPECT_EQ(secondCalls, 0);
}

TEST_F(NotificationCenterTest, PostsFromOtherThreadsAreDeliveredOnTheLoopThread) {
    int calls = 0;
    bool allOnLoopThread = true;
    auto loopThread = std::this_thread::get_id();
    center.addObserver("changed", [&] {
        ++calls;
        allOnLoopThread = allOnLoopThread && std::this_thread::get_id() == loopThread;
    });
    std::vector<std::thread> posters;
    for (int i = 0; i < 4; ++i) posters.emplace_back([&] { center.post("changed"); });
    for (auto& poster : posters) poster.join();
    EXPECT_TRUE(loop.runUntil([&] { return calls == 4; }, 10s));
    EXPECT_TRUE(allOnLoopThread);
}

TEST_F(NotificationCenterTest, APostOutlivingItsCenterIsHarmless) {
    int calls = 0;
    {
        NotificationCenter passing(loop);
        passing.addObserver("changed", [&] { ++calls; });
        passing.post("changed");
    }
    loop.runPending();
    EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace quester
