#include <gtest/gtest.h>

#include <chrono>
#include <memory>

#include "support/ActivityController.h"
#include "support/ActivityItem.h"
#include "support/NotificationCenter.h"

namespace quester {
namespace {

using namespace std::chrono_literals;

ActivityItem::Options autoShowing() {
    ActivityItem::Options options;
    options.autoShowWindow = true;
    return options;
}

ActivityItem::Options withParent(const Uuid& parent) {
    ActivityItem::Options options;
    options.parent = parent;
    return options;
}

class FakeWindow : public ActivityWindow {
public:
    bool openWithoutActivating() override {
        ++opened;
        return true;
    }
    void close() override { ++closed; }
    void refresh(const std::vector<std::shared_ptr<ActivityItem>>&) override {}

    int opened = 0;
    int closed = 0;
};

class ActivityTest : public ::testing::Test {
protected:
    ActivityTest() { controller.setWindow(&window); }

    std::shared_ptr<ActivityItem> makeItem(ActivityItem::Options options = {}) {
        auto item = ActivityItem::create(std::move(options), controller);
        loop.runPending();
        return item;
    }

    MainLoop loop;
    NotificationCenter center{loop};
    ManualClock clock;
    ActivityController controller{loop, center, clock};
    FakeWindow window;
};

TEST_F(ActivityTest, ProgressReachesTheDisplayAtMostFiveTimesASecondAndTheLastValueArrives) {
    auto item = makeItem();
    item->setCompletedUnitCount(1);
    EXPECT_EQ(item->displayed().completedUnitCount, 1);

    clock.advance(50ms);
    item->setCompletedUnitCount(2);
    item->setCompletedUnitCount(3);
    EXPECT_EQ(item->displayed().completedUnitCount, 1);

    clock.advance(200ms);
    EXPECT_TRUE(loop.runUntil([&] { return item->displayed().completedUnitCount == 3; }, 5s));
}

TEST_F(ActivityTest, RemovedItemsLeaveTheListAndALateSaveDoesNotBringThemBack) {
    Uuid firstCache = Uuid::random(), secondCache = Uuid::random();
    auto first = makeItem(withParent(firstCache));
    auto second = makeItem(withParent(secondCache));
    EXPECT_EQ(controller.isActivityForID(secondCache), second);
    EXPECT_EQ(controller.isActivityForID(Uuid::random()), nullptr);

    bool notified = false;
    center.addObserver(ActivityController::statusChangedNotification, [&] { notified = true; });
    controller.remove(*first);
    EXPECT_TRUE(first->isRemoved());
    EXPECT_EQ(controller.isActivityForID(firstCache), nullptr);
    controller.save(first);
    ASSERT_EQ(controller.activityItems().size(), 1u);
    EXPECT_EQ(controller.activityItems().front(), second);
    loop.runPending();
    EXPECT_TRUE(notified);
}

TEST_F(ActivityTest, LastingWorkOpensTheWindowAndClosesItWhenDone) {
    auto item = makeItem(autoShowing());
    EXPECT_EQ(window.opened, 0);
    ASSERT_TRUE(loop.runUntil([&] { return window.opened == 1; }, 10s));
    EXPECT_TRUE(item->didAutoShowController());
    controller.remove(*item);
    EXPECT_EQ(window.closed, 1);
}

TEST_F(ActivityTest, ShortWorkNeverOpensTheWindow) {
    auto item = makeItem(autoShowing());
    controller.remove(*item);
    loop.runUntil([] { return false; }, 2500ms);
    EXPECT_EQ(window.opened, 0);
}

TEST_F(ActivityTest, AWindowClosedByHandStaysClosedUntilTheNextItem) {
    auto running = makeItem(autoShowing());
    controller.windowClosedByUser();
    loop.runUntil([] { return false; }, 2500ms);
    EXPECT_EQ(window.opened, 0);

    makeItem();
    EXPECT_FALSE(controller.isWindowClosedManually());
}

class RecordingCancelTarget final : public ActivityItemCancelProtocol {
public:
    void cancel(ActivityItem& item) override { cancelledId = item.id(); }
    std::optional<Uuid> cancelledId;
};

TEST_F(ActivityTest, CancelGoesToTheTargetElseToTheFunction) {
    int functionCalls = 0;
    ActivityItem::Options options;
    options.cancel = [&](ActivityItem&) { ++functionCalls; };
    auto item = makeItem(std::move(options));
    auto target = std::make_shared<RecordingCancelTarget>();
    item->setCancelTarget(target);
    item->cancel();
    EXPECT_TRUE(item->hasCanceled());
    EXPECT_EQ(target->cancelledId, item->id());
    EXPECT_EQ(functionCalls, 0);

    target.reset();
    item->cancel();
    EXPECT_EQ(functionCalls, 1);
}

TEST_F(ActivityTest, StatusTexts) {
    ActivityItem::Options reading;
    reading.activeVerb = "Reading";
    reading.targetURL = "/home/u/notes.txt";
    auto item = makeItem(std::move(reading));
    EXPECT_EQ(item->currentItemSubtitle(), "Reading: notes.txt");
    EXPECT_EQ(item->rightText(), "");
    EXPECT_EQ(item->shortStatus(), "");

    item->setCompletedUnitCount(1234567);
    item->setTotalUnitCount(0);
    clock.advance(1s);
    item->commitProgress();
    EXPECT_EQ(item->rightText(), "1,234,567");

    item->setTotalUnitCount(1000);
    item->setCurrentItemPercentage(42.25f);
    item->setCurrentItemTarget("/a/b/report.pdf");
    clock.advance(1s);
    item->commitProgress();
    EXPECT_EQ(item->rightText(), "1,234,567 of 1,000. 100.0%");
    EXPECT_EQ(item->shortStatus(), "1,234,567/42.2%");
    EXPECT_EQ(item->currentItemSubtitle(), "Reading: report.pdf");
    auto withoutVerb = makeItem();
    withoutVerb->setCurrentItemTarget("/a/b/report.pdf");
    EXPECT_EQ(withoutVerb->currentItemSubtitle(), "report.pdf");

    item->setCompletedUnitCount(250);
    clock.advance(1s);
    item->commitProgress();
    EXPECT_EQ(item->rightText(), "250 of 1,000. 25.0%");

    item->setStatusNote("Waiting for the disk");
    EXPECT_EQ(item->shortStatus(), "Waiting for the disk");
}

}  // namespace
}  // namespace quester
