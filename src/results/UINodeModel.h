#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "platform/FileSystem.h"
#include "results/Column.h"
#include "results/RepeatingTimer.h"
#include "results/SortedNodeList.h"
#include "results/TimerScheduler.h"
#include "results/UINode.h"
#include "support/Crc64Set.h"
#include "support/Locked.h"
#include "support/MainLoop.h"
#include "support/OperationQueue.h"

namespace quester {

class Preferences;
class QueryContainer;

// A view that shows a model. Called on the main loop.
class UINodeModelDelegate {
public:
    virtual ~UINodeModelDelegate() = default;
    // The whole list changed.
    virtual void displayChanged() = 0;
    // One row changed.
    virtual void reloadNode(const UINodePtr& node) = 0;
};

// Who owns the selection and the query of a model's window. Called on the
// main loop.
class UINodeSelectionDelegate {
public:
    virtual ~UINodeSelectionDelegate() = default;
    virtual UINode::NodeList relevantItems() = 0;
    virtual void refreshSelection() = 0;
    virtual void selectionSizeCalculated(std::int64_t itemCount, std::uint64_t totalBytes) = 0;
    // The query the rows were found for, if any; it steers the name column's score.
    virtual const QueryContainer* currentQuery() const = 0;
    // The progress view's indicator that rows are being updated.
    virtual void setUIUpdateIndicator(bool running) = 0;
};

// What a results model runs on; tests hand in their own loop, timers and settings.
struct UINodeModelEnvironment {
    MainLoop* mainLoop = nullptr;         // MainLoop::shared() when none
    TimerScheduler* scheduler = nullptr;  // MainLoopTimerScheduler::shared() when none
    Preferences* preferences = nullptr;   // Preferences::shared() when none
    // Whether any search runs in the process; folder sizing waits while
    // one does. Reads the live search managers when none.
    std::function<bool()> anySearchInProgress;
    // How long sizing sleeps before testing again.
    Clock::Duration sizingPause = std::chrono::seconds(1);
};

// What one results view shows: every found row once per URL, kept in the
// current sort order, with the lazy work that only rows on screen deserve
// (visible checks, folder sizes).
//
// Threads: every public operation is called on the main loop and returns at
// once. `contentOrder` and `listed` belong to `contentQueue`, where merging and sorting run;
// the sorted list comes back to the main loop as a whole. Visible checks
// run on `visibleCheckQueue` (three at once) and folder sizing on a queue of
// its own; they touch only their node and the locked fields. `clear` is the
// one call that waits for `contentQueue`, so work there never waits for the
// main loop. Made with `create` and shared; tasks hold it weakly.
class UINodeModel : public std::enable_shared_from_this<UINodeModel> {
public:
    using Environment = UINodeModelEnvironment;

    static std::shared_ptr<UINodeModel> create(Environment environment = {});
    ~UINodeModel();
    UINodeModel(const UINodeModel&) = delete;
    UINodeModel& operator=(const UINodeModel&) = delete;

    // Every model alive now.
    static std::vector<std::shared_ptr<UINodeModel>> allInstances();

    void addDelegate(std::weak_ptr<UINodeModelDelegate> delegate);
    void setSelectionDelegate(std::weak_ptr<UINodeSelectionDelegate> delegate) { selectionDelegate = delegate; }

    // Stops the sizing tasks and pending merges, waits for the content queue,
    // and empties the list at once and the content after.
    void clear();
    // Stops the sizing tasks and every pending merge, and waits for the
    // content queue; what is listed stays.
    void cancelPendingWork();
    // Runs `then` on the main loop once the work asked for so far has reached
    // `displayItems`.
    void afterPendingWork(std::function<void()> then);
    // Merges a batch: a URL already listed keeps its first row. The whole set
    // is sorted again and replaces `displayItems`, unless sorting is deferred.
    void addMoreNodes(UINode::NodeList nodes);
    // Replaces every row with `items`; `onCompletion` runs on the main loop after.
    void showResults(UINode::NodeList items, std::function<void()> onCompletion = {});
    // Removes rows, top-level or children, by id.
    void removeNodes(UINode::NodeList items);
    // Puts `replacement` where `old` stands.
    void substituteItems(const UINodePtr& old, const UINodePtr& replacement);
    // The rows on screen now: they join the queue of visible checks, and
    // queued rows that went off screen leave it.
    void nodesBecameVisible(const UINode::NodeList& nodes, VisualState hint);
    void enqueueAllNodesForTags();
    void enqueueAllNodesForContentRanking();
    void resortResults();
    void scheduleFolderSizing();
    // Keeps the newest `maxItems` rows by creation when there are more.
    void removeOldestItemsOver(std::size_t maxItems);
    // Adds up the sizes of the rows, sizing folders that need it, and reports
    // them to the selection delegate.
    void updateSelectionSize(UINode::NodeList nodes);
    // Starts the 0.2 second rhythm of visible checks and late re-sorts.
    void createCheckNodesTimer();

    // The sort column; setting it starts its lazy work and re-sorts.
    Column currentColumn() const { return column; }
    void setCurrentColumn(Column newColumn);
    bool currentColumnReversed() const { return reversed; }
    void setCurrentColumnReversed(bool isReversed);

    // While deferred, `addMoreNodes` only takes its batch into the content:
    // nothing is sorted and `displayItems` stays as it was. Ending the
    // deferral sorts the whole content once and shows it. For an owner that
    // shows nothing until the search has ended, such as the command line,
    // which would otherwise sort the growing list at every flush.
    void setSortingDeferred(bool deferred);
    bool isSortingDeferred() const { return sortingDeferred; }

    const UINode::NodeList& displayItems() const { return display; }
    VisualState visualHint() const { return hint; }
    void setAppIsActive(bool active) { appIsActive.store(active); }
    bool isFolderSizing() const { return folderSizeTask != nullptr; }
    std::size_t numberOfNodesAwaitingCheck() const { return newlyVisibleNode.value().size(); }

    // The bytes of the regular files under `folder`, hidden items left out;
    // 0 when it can't be listed. Ends early with the sum so far when `task`
    // is cancelled. Folders are listed through `fileSystem`; one that can't
    // be read counts as empty.
    static std::uint64_t calculateFolderSize(const std::string& folder, const Operation* task = nullptr,
                                             FileSystem& fileSystem = FileSystem::real());
    // The order folders are sized in: the visible unsized ones, then, when
    // sorting by size, every other unsized top-level folder.
    static UINode::NodeList foldersToSize(const UINode::NodeList& topLevelUnsized, const UINode::NodeList& visible,
                                          bool sizeSorted);

private:
    struct ChildrenChange {
        UINodePtr node;
        UINode::NodeList children;
    };
    struct SortRequest {
        Column column;
        bool reversed;
        std::optional<std::string> queryText;
    };

    explicit UINodeModel(Environment environment);

    void merge(UINode::NodeList batch, bool replaceAll, std::function<void()> completion);
    // Content queue: appends the batch's new rows to the content.
    void takeIntoContent(UINode::NodeList batch, Column sortColumn);
    // Content queue: the path keys of the rows from position `first` of the content on.
    std::unordered_set<std::int64_t> pathKeysFrom(std::size_t first) const;
    // Content queue: the sorted rows and the children whose order changed.
    using ChildrenFilter = std::function<bool(const UINode::NodeList& children)>;
    UINode::NodeList sortedContent(const SortRequest& request, std::vector<ChildrenChange>& changes,
                                   const ChildrenFilter& childrenNeedSorting) const;
    // Content queue: `sorted` with the children that need it sorted too.
    UINode::NodeList withChildrenSorted(UINode::NodeList sorted, const SortRequest& request,
                                        std::vector<ChildrenChange>& changes,
                                        const ChildrenFilter& childrenNeedSorting) const;
    // Content queue, while sorting is deferred: merges the rows taken from
    // position `firstNew` on into `sortedWhileDeferred`, or makes it anew
    // when it doesn't match the content or the request.
    void sortTakenRows(const SortRequest& request, std::size_t firstNew);
    // Main loop: a row's sort values changed, so an order kept while sorting
    // is deferred no longer holds and the end of the deferral sorts anew.
    void rowsChanged();
    SortRequest sortRequest() const;
    void applyOnMainLoop(std::vector<ChildrenChange> changes, UINode::NodeList sorted, std::function<void()> completion,
                         std::uint64_t mergeGeneration);
    void setDisplayItems(UINode::NodeList items);
    void enqueueForCheck(const std::function<bool(const UINode::Changable&)>& wanted);
    void appendToCheckQueue(const UINode::NodeList& nodes);

    void checkTimerTick();
    void addCheckOperations(VisualState visualHint);
    void runVisibleCheck(VisualState visualHint);
    void applyCheckResult(const UINodePtr& node, UINode::VisibleCheckResult result);

    void startFolderSizing(UINode::NodeList unsized);
    // On the sizing queue, holding the model only between folders.
    static void sizeFolders(const std::weak_ptr<UINodeModel>& weak, const UINode::NodeList& folders, bool sizeSorted,
                            const Operation& task);
    // False when the task was cancelled or the model went while waiting.
    static bool waitWhileBusy(const std::weak_ptr<UINodeModel>& weak, const Operation& task);
    void folderSizingEnded(const UINode::NodeList& folders, const std::weak_ptr<Operation>& ended);
    void cancelTasks();

    // The model for a task on one of its queues, or null when it is gone. The
    // hold ends on the main loop: were it the last one, the model would
    // otherwise be destroyed on a queue that its destructor cancels.
    static std::shared_ptr<UINodeModel> holdFromQueue(const std::weak_ptr<UINodeModel>& weak);

    void onMainLoop(std::function<void(UINodeModel&)> work);
    void onContentQueue(std::function<void(UINodeModel&)> work);
    void forEachDelegate(const std::function<void(UINodeModelDelegate&)>& call);

    MainLoop& mainLoop;
    TimerScheduler& scheduler;
    Preferences& preferences;
    std::function<bool()> anySearchInProgress;
    const Clock::Duration sizingPause;

    // Content queue only.
    std::vector<UINodePtr> contentOrder;  // the rows in the order they came, one per URL
    // The crc64 of the paths of `contentOrder`: a million paths cost no second copy.
    Crc64Set listed;
    // While sorting is deferred: `contentOrder` sorted as the rows came.
    std::optional<SortedNodeList> sortedWhileDeferred;

    // Main loop only.
    std::vector<std::weak_ptr<UINodeModelDelegate>> delegates;
    std::weak_ptr<UINodeSelectionDelegate> selectionDelegate;
    UINode::NodeList display;
    Column column = Column::name;
    bool reversed = false;
    bool sortingDeferred = false;
    VisualState hint = VisualState::icons;
    UINode::NodeList lastVisibleNodes;
    bool ranksDirty = false;
    bool tagsDirty = false;
    bool sizeDirty = false;
    // Counts `clear` calls, so that a sort made before one is dropped.
    std::uint64_t generation = 0;
    std::unique_ptr<RepeatingTimer> visibleItemsCheck;
    std::shared_ptr<Operation> folderSizeTask;
    std::shared_ptr<Operation> selectionSizeTask;

    Locked<std::deque<UINodePtr>> newlyVisibleNode;
    Locked<int> numberOfVisibleItemsQueued{0};
    std::atomic<bool> appIsActive{true};

    SerialQueue contentQueue;
    OperationQueue visibleCheckQueue{3};
    SerialQueue folderSizeQueue;
    SerialQueue selectionSizeQueue;
};

}  // namespace quester
