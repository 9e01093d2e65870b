#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "support/ActivityItem.h"
#include "support/Clock.h"
#include "support/MainLoop.h"

namespace quester {

class NotificationCenter;

// What shows the activity list to the user, if anything does.
class ActivityWindow {
public:
    virtual ~ActivityWindow() = default;
    // Opens the window without bringing an open one to the front; answers
    // whether this call opened it.
    virtual bool openWithoutActivating() = 0;
    virtual void close() = 0;
    virtual void refresh(const std::vector<std::shared_ptr<ActivityItem>>& items) = 0;
};

// The list of running activities, in the order they began. Main-loop owned:
// every operation runs on the loop's thread (ActivityItem::create posts
// there). A burst of changes costs one refresh and one
// "ActivityItem.StatusChangedNotification" every quarter second.
class ActivityController {
public:
    static constexpr const char* statusChangedNotification = "ActivityItem.StatusChangedNotification";
    // `loop`, `center` and `clock` must outlive the controller.
    ActivityController(MainLoop& loop, NotificationCenter& center, const Clock& clock = SystemClock::shared());
    ~ActivityController();
    ActivityController(const ActivityController&) = delete;
    ActivityController& operator=(const ActivityController&) = delete;

    // The process-wide controller, on the shared loop and notification center.
    static ActivityController& shared();

    void save(const std::shared_ptr<ActivityItem>& item);
    void remove(ActivityItem& item);
    // The first listed item whose parent is `id`.
    std::shared_ptr<ActivityItem> isActivityForID(const Uuid& id) const;
    const std::vector<std::shared_ptr<ActivityItem>>& activityItems() const { return items; }

    // The window, or none; not owned.
    void setWindow(ActivityWindow* window) { activityWindow = window; }
    // The user closed the window: new activities of the running set don't reopen it.
    void windowClosedByUser() { windowClosedManually = true; }
    bool isWindowClosedManually() const { return windowClosedManually; }

    MainLoop& mainLoop() const { return loop; }
    Clock::TimePoint now() const { return clock.now(); }

    void scheduleUpdate();

private:
    bool isListed(const ActivityItem& item) const;
    void autoShowLater(const std::shared_ptr<ActivityItem>& item);
    void update();

    MainLoop& loop;
    NotificationCenter& center;
    const Clock& clock;
    std::vector<std::shared_ptr<ActivityItem>> items;
    std::optional<MainLoop::TimerId> updateTask;
    std::vector<MainLoop::TimerId> autoShowTasks;
    bool windowClosedManually = false;
    ActivityWindow* activityWindow = nullptr;
};

}  // namespace quester
