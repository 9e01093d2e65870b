#include "results/SearchSession.h"

#include <utility>

#include "results/QuesterURL.h"
#include "stores/Preferences.h"
#include "support/LogFunc.h"
#include "support/PathText.h"

namespace quester {

namespace {

std::string firstLine(const std::string& text) {
    return text.substr(0, text.find('\n'));
}

UINodeModel::Environment modelEnvironment(MainLoop& loop, TimerScheduler& scheduler, Preferences& preferences) {
    UINodeModel::Environment made;
    made.mainLoop = &loop;
    made.scheduler = &scheduler;
    made.preferences = &preferences;
    return made;
}

}  // namespace

std::shared_ptr<SearchSession> SearchSession::create(Environment environment) {
    return std::shared_ptr<SearchSession>(new SearchSession(std::move(environment)));
}

SearchSession::SearchSession(Environment givenEnvironment)
    : environment(std::move(givenEnvironment)),
      mainLoop(environment.mainLoop ? *environment.mainLoop : MainLoop::shared()),
      scheduler(environment.scheduler ? *environment.scheduler : MainLoopTimerScheduler::shared()),
      preferences(environment.preferences ? *environment.preferences : Preferences::shared()),
      lastFlush(scheduler.clock().now()),
      model(UINodeModel::create(modelEnvironment(mainLoop, scheduler, preferences))) {}

SearchSession::~SearchSession() {
    for (const auto& slot : {pendingSearch, pendingHistoryEntry}) {
        if (slot) scheduler.cancel(*slot);
    }
    if (manager) manager->stop();
}

void SearchSession::notify(const std::function<void(SearchSessionObserver&)>& call) {
    if (auto watching = observer.lock()) call(*watching);
}

void SearchSession::scheduleOnce(std::optional<TimerScheduler::TimerId>& slot, Clock::Duration delay,
                                 std::function<void(SearchSession&)> work) {
    if (slot) scheduler.cancel(*slot);
    slot = scheduler.schedule(delay, [weak = weak_from_this(), work = std::move(work)] {
        if (auto self = weak.lock()) work(*self);
    });
}

void SearchSession::controlTextDidChange(const std::string& newText, bool alwaysStartSearch) {
    text = firstLine(newText);
    stopFlushTimer();
    cancelOperation();
    if (alwaysStartSearch || preferences.boolValue("startSearchesAutomatically")) {
        scheduleOnce(pendingSearch, typingDelay, [](SearchSession& session) {
            session.pendingSearch.reset();
            session.doSearch();
        });
    }
}

void SearchSession::cancelOperation() {
    if (manager) manager->userCancel();
    model->cancelPendingWork();
}

void SearchSession::stopFlushTimer() {
    flushTimer.reset();
}

void SearchSession::doSearch() {
    LOG("doSearch(_:)");
    if (pendingSearch) scheduler.cancel(*pendingSearch);
    pendingSearch.reset();
    const auto location = environment.location ? environment.location(locationName) : std::nullopt;
    if (!location) {
        notify([](SearchSessionObserver& watching) { watching.showStatus(waitingForDiskText); });
        scheduleOnce(pendingSearch, waitForDiskDelay, [](SearchSession& session) {
            session.pendingSearch.reset();
            session.doSearch();
        });
        return;
    }
    if (manager) manager->stop();
    manager.reset();
    query.emplace(text, *environment.parser, location, soundex,
                  QueryPreferences{preferences.boolValue("diacriticInsensitiveSearch"),
                                   preferences.boolValue("showAppsFoundAnywhere")});
    // Text that starts with "/" browses a path instead.
    if (trimmedWhitespace(query->baseString()).starts_with("/")) return;
    scheduleHistoryEntry();
    if (query->shortcutKeywordName()) {
        const std::string name = *query->shortcutKeywordName();
        notify([&](SearchSessionObserver& watching) { watching.shortcutNotFound(name); });
        return;
    }
    (void)preferences.setValue("rankInVisible", query->findCommand(CommandRole::contentSearch) != nullptr);
    highlight = std::make_shared<const HighlightWords>(
        HighlightWords{query->searchWordsHighlightStrings(), query->matchIsCaseSensitive()});
    waitingRows.clear();
    lastFlush = scheduler.clock().now();
    model->clear();
    errorCount = 0;
    notify([](SearchSessionObserver& watching) {
        watching.showStatus("");
        watching.showProgress({});
    });
    if (query->searchWords().empty() && query->commandsFoundInQuery().empty()) return;
    SearchManager::Environment managerEnvironment =
        environment.managerEnvironment ? environment.managerEnvironment() : SearchManager::Environment{};
    if (managerEnvironment.mainLoop == nullptr) managerEnvironment.mainLoop = &mainLoop;
    manager = SearchManager::create(*query, preferences.boolValue("searchInsideSystemAndApps"), weak_from_this(),
                                    std::move(managerEnvironment));
    manager->search();
}

void SearchSession::scheduleHistoryEntry() {
    scheduleOnce(pendingHistoryEntry, historyDelay, [](SearchSession& session) {
        session.pendingHistoryEntry.reset();
        if (session.environment.addQueryToHistory) session.environment.addQueryToHistory(session.text);
    });
}

bool SearchSession::openURL(std::string_view url) {
    const auto parsed = QuesterURL::parse(url);
    if (!parsed || !parsed->q) return false;
    text = firstLine(*parsed->q);
    locationName = parsed->location;
    cancelOperation();
    doSearch();
    return true;
}

void SearchSession::searchManagerIsBeginingSearches(const QueryContainer& forQuery) {
    LOG("searchManagerIsBeginingSearches");
    notify([&](SearchSessionObserver& watching) {
        watching.showProgress({});
        if (!forQuery.baseStringLowercase().empty()) watching.searchBegan("Find “" + forQuery.baseString() + "”");
    });
    flushTimer = std::make_unique<RepeatingTimer>(scheduler, flushInterval, [weak = weak_from_this()] {
        auto self = weak.lock();
        if (self && self->isTimeToFlush()) self->flushResults();
    });
}

bool SearchSession::isTimeToFlush() const {
    return scheduler.clock().now() - lastFlush > batchSpacing;
}

void SearchSession::searchManagerFoundItems(const std::vector<SearchResult>& items, const QueryContainer&) {
    for (const auto& item : items) waitingRows.push_back(UINode::create(item, highlight, scheduler.clock()));
    if (isTimeToFlush()) flushResults();
}

void SearchSession::flushResults() {
    if (!query) return;
    UINode::NodeList nodes = std::exchange(waitingRows, {});
    lastFlush = scheduler.clock().now();
    if (nodes.empty()) return;
    LOG("New item count: " + std::to_string(nodes.size()));
    // The rows a stopped search left waiting are dropped.
    if (!manager || manager->shouldStop()) return;
    const auto progress = manager->progress();
    notify([&](SearchSessionObserver& watching) {
        watching.prepareResultsView(static_cast<std::size_t>(progress.numberOfResultsReturned));
    });
    model->addMoreNodes(std::move(nodes));
    notify([&](SearchSessionObserver& watching) { watching.showProgress(progress); });
}

void SearchSession::searchManagerHasFinishedAllSearches(const QueryContainer& forQuery) {
    stopFlushTimer();
    LOG("searchManagerHasFinishedAllSearches(query:)");
    flushResults();
    const bool completed = query && query->baseString() == forQuery.baseString();
    notify([&](SearchSessionObserver& watching) { watching.searchEnded(completed); });
}

void SearchSession::searchManagerProgress(const SearchManagerProgress& progress) {
    notify([&](SearchSessionObserver& watching) { watching.showProgress(progress); });
}

void SearchSession::searchingInsideFile(const std::string& name, bool inProgress, float percentageProgress) {
    (void)percentageProgress;
    if (inProgress) notify([&](SearchSessionObserver& watching) { watching.showStatus(name); });
}

void SearchSession::searchInvalidQuery() {
    ++errorCount;
    notify([&](SearchSessionObserver& watching) {
        watching.invalidQuery(errorCount);
        watching.showStatus(invalidQueryText);
    });
}

}  // namespace quester
