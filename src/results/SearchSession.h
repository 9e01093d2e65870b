#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "query/QueryContainer.h"
#include "query/SearchLocation.h"
#include "query/SearchManager.h"
#include "query/SearchManagerDelegate.h"
#include "results/RepeatingTimer.h"
#include "results/TimerScheduler.h"
#include "results/UINodeModel.h"

namespace quester {

class CommandRecogniser;
class Preferences;

// What a query window shows of its session: title, status, progress. Every
// call comes on the main loop; all have empty defaults.
class SearchSessionObserver {
public:
    virtual ~SearchSessionObserver() = default;
    // "Find “<text>”" for a query with text.
    virtual void searchBegan(const std::string& title) { (void)title; }
    // `completed` when the search that ended is the one asked for last.
    virtual void searchEnded(bool completed) { (void)completed; }
    virtual void showStatus(const std::string& text) { (void)text; }
    virtual void showProgress(const SearchManagerProgress& progress) { (void)progress; }
    virtual void invalidQuery(int errorCount) { (void)errorCount; }
    // Results arrive: the view may switch between icons and a list.
    virtual void prepareResultsView(std::size_t numberOfResults) { (void)numberOfResults; }
    // The text named a shortcut that no script matched.
    virtual void shortcutNotFound(const std::string& name) { (void)name; }
};

// What a session runs on. Tests hand in their own loop, timers and settings.
struct SearchSessionEnvironment {
    const CommandRecogniser* parser = nullptr;  // required
    // The location to search by its name (none: the chosen one). None when
    // the disk it needs isn't mounted.
    std::function<std::optional<SearchLocation>(const std::optional<std::string>& name)> location;
    // The sources and loop of each new search manager.
    std::function<SearchManager::Environment()> managerEnvironment;
    // Records a query text in the history once it has rested.
    std::function<void(const std::string& text)> addQueryToHistory;
    MainLoop* mainLoop = nullptr;         // MainLoop::shared() when none
    TimerScheduler* scheduler = nullptr;  // MainLoopTimerScheduler::shared() when none
    Preferences* preferences = nullptr;   // Preferences::shared() when none
};

// One query window's search, without the window: the typed text becomes a
// query 0.66 s after the last key, runs in a search manager, and what it
// finds reaches the results model in batches at most about twice a second.
// Found items become rows as they come, so that a batch waits as rows, which
// the model keeps anyway, rather than as results copied for the wait: a
// million results cost a copy each.
//
// Main loop only, apart from `create`. The session is its manager's delegate
// and owns its results model. Made with `create` and shared; timers and the
// manager hold it weakly.
class SearchSession final : public SearchManagerDelegate, public std::enable_shared_from_this<SearchSession> {
public:
    using Environment = SearchSessionEnvironment;

    static constexpr auto typingDelay = std::chrono::milliseconds(660);
    static constexpr auto flushInterval = std::chrono::milliseconds(250);
    // Rows reach the model no sooner than this after the last batch.
    static constexpr auto batchSpacing = std::chrono::milliseconds(500);
    static constexpr auto historyDelay = std::chrono::seconds(5);
    static constexpr auto waitForDiskDelay = std::chrono::seconds(5);
    static constexpr const char* waitingForDiskText =
        "Waiting for disk to become available. Search will start shortly.";
    static constexpr const char* invalidQueryText = "Invalid Query Text";

    static std::shared_ptr<SearchSession> create(Environment environment);
    ~SearchSession() override;
    SearchSession(const SearchSession&) = delete;
    SearchSession& operator=(const SearchSession&) = delete;

    void setObserver(std::weak_ptr<SearchSessionObserver> newObserver) { observer = std::move(newObserver); }

    // The field's text changed: it is cut at its first line, the running
    // search stops at once, and a new one starts after the typing delay when
    // `alwaysStartSearch` or "startSearchesAutomatically" says so.
    void controlTextDidChange(const std::string& text, bool alwaysStartSearch = false);
    // Starts a search from the field's text now.
    void doSearch();
    // Moves the rows waiting for the model into it.
    void flushResults();
    // Runs the search a "quester:" URL asks for, at once. False for any other text.
    bool openURL(std::string_view url);

    const std::string& fieldText() const { return text; }
    void setSoundex(bool on) { soundex = on; }
    const std::optional<QueryContainer>& currentQuery() const { return query; }
    const std::shared_ptr<SearchManager>& currentSearchManager() const { return manager; }
    const std::shared_ptr<UINodeModel>& uiNodeModel() const { return model; }
    // The rows made since the last flush.
    const UINode::NodeList& finalResults() const { return waitingRows; }
    bool isFlushTimerRunning() const { return flushTimer != nullptr; }
    int invalidQueryCount() const { return errorCount; }

    // SearchManagerDelegate.
    void searchManagerIsBeginingSearches(const QueryContainer& forQuery) override;
    void searchManagerFoundItems(const std::vector<SearchResult>& items, const QueryContainer& forQuery) override;
    void searchManagerHasFinishedAllSearches(const QueryContainer& forQuery) override;
    void searchManagerProgress(const SearchManagerProgress& progress) override;
    void searchingInsideFile(const std::string& name, bool inProgress, float percentageProgress) override;
    void searchInvalidQuery() override;

private:
    explicit SearchSession(Environment environment);

    void cancelOperation();
    void stopFlushTimer();
    void scheduleHistoryEntry();
    // Runs `work` on this session after `delay`, replacing what `slot` held.
    void scheduleOnce(std::optional<TimerScheduler::TimerId>& slot, Clock::Duration delay,
                      std::function<void(SearchSession&)> work);
    void notify(const std::function<void(SearchSessionObserver&)>& call);
    bool isTimeToFlush() const;

    Environment environment;
    MainLoop& mainLoop;
    TimerScheduler& scheduler;
    Preferences& preferences;
    std::weak_ptr<SearchSessionObserver> observer;

    std::string text;
    std::optional<std::string> locationName;
    bool soundex = false;
    std::optional<QueryContainer> query;
    std::shared_ptr<SearchManager> manager;
    UINode::Highlight highlight;  // the words of `query`, shared by its rows
    UINode::NodeList waitingRows;
    Clock::TimePoint lastFlush;
    std::unique_ptr<RepeatingTimer> flushTimer;
    std::shared_ptr<UINodeModel> model;
    int errorCount = 0;

    std::optional<TimerScheduler::TimerId> pendingSearch;
    std::optional<TimerScheduler::TimerId> pendingHistoryEntry;
};

}  // namespace quester
