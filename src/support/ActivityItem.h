#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "support/Clock.h"
#include "support/MainLoop.h"
#include "support/Uuid.h"

namespace quester {

class ActivityController;
class ActivityItem;

// Who is told when the user cancels an activity. Implemented by the searches,
// the cache build and the deletion worker.
class ActivityItemCancelProtocol {
public:
    virtual ~ActivityItemCancelProtocol() = default;
    virtual void cancel(ActivityItem& item) = 0;
};

// One long operation as the user sees it in the activity list: a title, how
// far it has come, and a way to cancel it.
//
// Owned by the main loop: every operation but `cancel`, `hasCanceled` and the
// plain accessors runs on the loop's thread; workers post their progress
// there. `working` is what the worker last set; `displayed` follows it at most
// five times a second, and the last value always arrives.
class ActivityItem : public std::enable_shared_from_this<ActivityItem> {
public:
    enum class Image { cache, search, document, trash, clipboard };

    struct Progress {
        std::optional<float> currentItemPercentage;
        std::optional<std::int64_t> totalUnitCount;
        std::optional<std::int64_t> completedUnitCount;
        std::optional<std::string> currentItemTarget;  // a path

        bool operator==(const Progress&) const = default;
    };

    using CancelFunc = std::function<void(ActivityItem&)>;

    struct Options {
        std::optional<Uuid> parent;  // id of the object this work belongs to
        std::string title;
        std::string verb;        // past form, for the finished state
        std::string activeVerb;  // present form, while running
        Image image = Image::search;
        bool autoShowWindow = false;
        std::optional<std::string> targetURL;
        CancelFunc cancel;  // used when there is no cancel target
    };

    // Makes the item and has `controller` list it (posted to the loop, so this
    // may be called from any thread).
    static std::shared_ptr<ActivityItem> create(Options options, ActivityController& controller);

    ActivityItem(const ActivityItem&) = delete;
    ActivityItem& operator=(const ActivityItem&) = delete;

    const Uuid& id() const { return identifier; }
    const std::optional<Uuid>& parent() const { return parentId; }
    Clock::TimePoint createdAt() const { return created; }
    Image image() const { return rowImage; }
    bool autoShowWindow() const { return showsWindow; }
    const std::string& verb() const { return finishedVerb; }
    const std::string& activeVerb() const { return runningVerb; }

    const std::string& displayTitle() const { return title; }
    void setDisplayTitle(std::string newTitle);
    const std::optional<std::string>& statusNote() const { return note; }
    void setStatusNote(std::optional<std::string> newNote);

    const Progress& working() const { return workingProgress; }
    const Progress& displayed() const { return displayedProgress; }
    void setTotalUnitCount(std::optional<std::int64_t> count);
    void setCompletedUnitCount(std::optional<std::int64_t> count);
    void setCurrentItemPercentage(std::optional<float> percentage);
    void setCurrentItemTarget(std::optional<std::string> path);
    // Moves `working` to `displayed` now, or schedules that for when 0.2 s
    // have passed since the last move.
    void commitProgress();

    void setCancelTarget(std::weak_ptr<ActivityItemCancelProtocol> target) { cancelTarget = std::move(target); }
    // The user's cancel: sets `hasCanceled` and tells the cancel target, else
    // calls the cancel function. Any thread.
    void cancel();
    bool hasCanceled() const { return canceled.load(); }

    bool isRemoved() const { return removed; }
    bool didAutoShowController() const { return autoShowed; }

    // The row's texts.
    std::string currentItemSubtitle() const;
    std::string shortStatus() const;
    std::string rightText() const;

private:
    friend class ActivityController;
    ActivityItem(Options options, ActivityController& controller);

    void moveWorkingToDisplayed();

    ActivityController& controller;
    const Uuid identifier;
    const std::optional<Uuid> parentId;
    const Clock::TimePoint created;
    const Image rowImage;
    const bool showsWindow;
    const std::string finishedVerb;
    const std::string runningVerb;
    std::atomic<bool> canceled{false};
    std::optional<std::string> note;
    bool removed = false;
    std::string title;
    Progress workingProgress;
    Progress displayedProgress;
    std::optional<Clock::TimePoint> lastProgressCommit;
    std::optional<MainLoop::TimerId> pendingProgressFlush;
    std::weak_ptr<ActivityItemCancelProtocol> cancelTarget;
    CancelFunc cancelFunc;
    bool autoShowed = false;
};

}  // namespace quester
