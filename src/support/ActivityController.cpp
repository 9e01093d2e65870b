#include "support/ActivityController.h"

#include <algorithm>
#include <chrono>

#include "support/NotificationCenter.h"

namespace quester {
namespace {

constexpr auto kUpdateInterval = std::chrono::milliseconds(250);
// Work shorter than this never opens the window by itself.
constexpr auto kAutoShowDelay = std::chrono::seconds(2);

}  // namespace

ActivityController::ActivityController(MainLoop& loop, NotificationCenter& center, const Clock& clock)
    : loop(loop), center(center), clock(clock) {}

ActivityController::~ActivityController() {
    if (updateTask) loop.cancel(*updateTask);
    for (auto task : autoShowTasks) loop.cancel(task);
}

ActivityController& ActivityController::shared() {
    static ActivityController controller(MainLoop::shared(), NotificationCenter::shared());
    return controller;
}

bool ActivityController::isListed(const ActivityItem& item) const {
    return std::any_of(items.begin(), items.end(), [&](const auto& listed) { return listed.get() == &item; });
}

void ActivityController::save(const std::shared_ptr<ActivityItem>& item) {
    // A late save never brings a finished item back.
    if (item->isRemoved()) return;
    if (isListed(*item)) {
        scheduleUpdate();
        return;
    }
    items.push_back(item);
    if (item->autoShowWindow()) autoShowLater(item);
    scheduleUpdate();
    windowClosedManually = false;
}

void ActivityController::autoShowLater(const std::shared_ptr<ActivityItem>& item) {
    std::weak_ptr<ActivityItem> weakItem = item;
    auto task = std::make_shared<MainLoop::TimerId>();
    *task = loop.postAfter(kAutoShowDelay, [this, weakItem, task] {
        std::erase(autoShowTasks, *task);
        auto shown = weakItem.lock();
        if (!shown || windowClosedManually || !isListed(*shown) || !activityWindow) return;
        if (activityWindow->openWithoutActivating()) shown->autoShowed = true;
    });
    autoShowTasks.push_back(*task);
}

void ActivityController::remove(ActivityItem& item) {
    item.removed = true;
    std::erase_if(items, [&](const auto& listed) { return listed.get() == &item; });
    if (item.autoShowed && items.empty() && activityWindow) activityWindow->close();
    center.post(statusChangedNotification);
    scheduleUpdate();
}

std::shared_ptr<ActivityItem> ActivityController::isActivityForID(const Uuid& id) const {
    for (const auto& item : items) {
        if (!item->isRemoved() && item->parent() == id) return item;
    }
    return nullptr;
}

void ActivityController::scheduleUpdate() {
    if (items.empty()) {
        if (updateTask) loop.cancel(*updateTask);
        updateTask.reset();
        return;
    }
    if (updateTask) return;
    updateTask = loop.postAfter(kUpdateInterval, [this] { update(); });
}

void ActivityController::update() {
    updateTask.reset();
    if (activityWindow) activityWindow->refresh(items);
    center.post(statusChangedNotification);
}

}  // namespace quester
