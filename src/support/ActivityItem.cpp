#include "support/ActivityItem.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>

#include "support/ActivityController.h"
#include "support/PathText.h"

namespace quester {
namespace {

constexpr auto kCommitInterval = std::chrono::milliseconds(200);

// A count with thousands separators, as people read it: 1,234,567.
std::string decimalStyle(std::int64_t count) {
    std::string digits = std::to_string(count < 0 ? -count : count);
    std::string grouped;
    for (std::size_t i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0) grouped += ',';
        grouped += digits[i];
    }
    return count < 0 ? "-" + grouped : grouped;
}

}  // namespace

ActivityItem::ActivityItem(Options options, ActivityController& controller)
    : controller(controller),
      identifier(Uuid::random()),
      parentId(std::move(options.parent)),
      created(controller.now()),
      rowImage(options.image),
      showsWindow(options.autoShowWindow),
      finishedVerb(std::move(options.verb)),
      runningVerb(std::move(options.activeVerb)),
      title(std::move(options.title)),
      cancelFunc(std::move(options.cancel)) {
    workingProgress.currentItemTarget = std::move(options.targetURL);
}

std::shared_ptr<ActivityItem> ActivityItem::create(Options options, ActivityController& controller) {
    std::shared_ptr<ActivityItem> item(new ActivityItem(std::move(options), controller));
    controller.mainLoop().post([item] {
        item->commitProgress();
        item->controller.save(item);
    });
    return item;
}

void ActivityItem::setDisplayTitle(std::string newTitle) {
    title = std::move(newTitle);
    controller.scheduleUpdate();
}

void ActivityItem::setStatusNote(std::optional<std::string> newNote) {
    note = std::move(newNote);
    controller.scheduleUpdate();
}

void ActivityItem::setTotalUnitCount(std::optional<std::int64_t> count) {
    workingProgress.totalUnitCount = count;
    commitProgress();
}

void ActivityItem::setCompletedUnitCount(std::optional<std::int64_t> count) {
    workingProgress.completedUnitCount = count;
    commitProgress();
}

void ActivityItem::setCurrentItemPercentage(std::optional<float> percentage) {
    workingProgress.currentItemPercentage = percentage;
    commitProgress();
}

void ActivityItem::setCurrentItemTarget(std::optional<std::string> path) {
    workingProgress.currentItemTarget = std::move(path);
    commitProgress();
}

void ActivityItem::commitProgress() {
    if (workingProgress == displayedProgress) return;
    auto now = controller.now();
    auto sinceLast = lastProgressCommit ? now - *lastProgressCommit : Clock::Duration::max();
    if (sinceLast >= kCommitInterval) {
        moveWorkingToDisplayed();
        return;
    }
    if (pendingProgressFlush) return;
    std::weak_ptr<ActivityItem> weakSelf = weak_from_this();
    auto wait = std::chrono::duration_cast<MainLoop::Clock::duration>(kCommitInterval - sinceLast);
    pendingProgressFlush = controller.mainLoop().postAfter(wait, [weakSelf] {
        auto self = weakSelf.lock();
        if (!self) return;
        self->pendingProgressFlush.reset();
        if (self->workingProgress != self->displayedProgress) self->moveWorkingToDisplayed();
    });
}

void ActivityItem::moveWorkingToDisplayed() {
    if (pendingProgressFlush) {
        controller.mainLoop().cancel(*pendingProgressFlush);
        pendingProgressFlush.reset();
    }
    displayedProgress = workingProgress;
    lastProgressCommit = controller.now();
    controller.scheduleUpdate();
}

void ActivityItem::cancel() {
    canceled = true;
    if (auto target = cancelTarget.lock()) {
        target->cancel(*this);
    } else if (cancelFunc) {
        cancelFunc(*this);
    }
    auto& owner = controller;
    owner.mainLoop().post([&owner] { owner.scheduleUpdate(); });
}

std::string ActivityItem::currentItemSubtitle() const {
    if (!displayedProgress.currentItemTarget) return {};
    std::string name = lastPathComponent(*displayedProgress.currentItemTarget);
    return runningVerb.empty() ? name : runningVerb + ": " + name;
}

std::string ActivityItem::shortStatus() const {
    if (note) return *note;
    if (!displayedProgress.completedUnitCount) return {};
    std::string status = decimalStyle(*displayedProgress.completedUnitCount);
    if (displayedProgress.currentItemPercentage.value_or(0) > 0) {
        status += fmt::format("/{:.1f}%", *displayedProgress.currentItemPercentage);
    }
    return status;
}

std::string ActivityItem::rightText() const {
    if (!displayedProgress.completedUnitCount) return {};
    std::int64_t completed = *displayedProgress.completedUnitCount;
    std::string text = decimalStyle(completed);
    if (displayedProgress.totalUnitCount.value_or(0) >= 1) {
        std::int64_t total = *displayedProgress.totalUnitCount;
        double share = std::min(100.0, static_cast<double>(completed) / static_cast<double>(total) * 100.0);
        text += fmt::format(" of {}. {:.1f}%", decimalStyle(total), share);
    }
    return text;
}

}  // namespace quester
