#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <semaphore>
#include <set>
#include <span>
#include <unordered_set>
#include <vector>

#include "query/Command.h"
#include "query/QueryContainer.h"
#include "query/SearchDataSource.h"
#include "query/SearchDataSourceDelegate.h"
#include "query/SearchManagerDelegate.h"
#include "query/SearchResult.h"
#include "support/Clock.h"
#include "support/Crc64Set.h"
#include "support/DelayTimer.h"
#include "support/Locked.h"
#include "support/MainLoop.h"
#include "support/OperationQueue.h"

namespace quester {

class FSUtilities;

// Runs one query once: starts the sources the query calls for, passes every
// result they supply through the query's commands, drops what another source
// already delivered, and hands the survivors to its delegate on the main loop.
//
// Threads: `search`, `stop` and `userCancel` may be called from any thread.
// Each source runs on a thread of its own; results are judged on two serial
// queues, each with its own copies of the commands (`filterQueue` for most
// sources, `fastQueue` for the index sources whose results must not wait
// behind slow criteria). Delegate calls but the first come on the main loop.
// A manager is shared (std::shared_ptr): a running search keeps it alive.
class SearchManager final : public SearchDataSourceDelegate, public std::enable_shared_from_this<SearchManager> {
public:
    using Progress = SearchManagerProgress;
    using DataSources = std::vector<std::shared_ptr<SearchDataSource>>;

    // What the manager runs beside the query's own sources, and where it reports.
    struct Environment {
        // Searched for word-based queries that no source with its own locations handles.
        DataSources fileSystemSearchDataSources;
        // Started for every query, before the query's own sources.
        DataSources commandBasedDataSources;
        MainLoop* mainLoop = nullptr;        // MainLoop::shared() when none
        FSUtilities* fsUtilities = nullptr;  // FSUtilities::shared() when none
        const Clock* clock = nullptr;        // the system clock when none
        // The ignore list: whether a result is left out, whichever source
        // found it. None lets everything through. Called on the filter queues.
        std::function<bool(const std::string& path)> isIgnored;
        // Told as each source ends, with how long it ran; on the source's thread.
        std::function<void(SearchResultSupplier supplier, Clock::Duration took)> sourceDidFinish;
        // Whether the results' sizes and dates are shown or written out. When
        // not, and no criterion of the query reads them, sources may leave
        // them unread.
        bool showsItemAttributes = true;
        // Whether the lines that a content criterion finds are shown or written out.
        bool showsFoundLines = true;
    };

    // `searchInsideSystemAndApps` (or a query that asks for invisible items)
    // lets system, invisible and in-package items through.
    static std::shared_ptr<SearchManager> create(QueryContainer query, bool searchInsideSystemAndApps,
                                                 std::weak_ptr<SearchManagerDelegate> delegate,
                                                 Environment environment);
    ~SearchManager() override;
    SearchManager(const SearchManager&) = delete;
    SearchManager& operator=(const SearchManager&) = delete;

    // Tells the delegate the search begins, starts it in the background and returns.
    void search();
    // Ends the search early. Safe to call repeatedly; the delegate still hears
    // that the search finished.
    void stop();
    // `stop`, then tells the delegate at once that the search finished.
    void userCancel();

    // Every manager alive now.
    static std::vector<std::shared_ptr<SearchManager>> allInstances();

    const QueryContainer& query() const { return searchQuery; }
    Clock::TimePoint created() const { return creationTime; }
    bool searchInProgress() const { return inProgress.load(); }
    Progress progress() const { return counters.snapshot(); }

    // SearchDataSourceDelegate, called by the sources on their threads.
    bool shouldStop() const override { return stopRequested.load(); }
    bool showHiddenItems() const override { return showsHiddenItems; }
    bool needsItemAttributes() const override { return needsAttributes; }
    bool needsFoundLines() const override { return showsFoundLines; }
    void supplySearchResults(std::vector<SearchResult> results, SearchDataSource& fromDataSource) override;
    void supplyIncreaseNumberOfFilesContentSearched(std::int64_t increaseNumberOfFiles) override;
    void supplySearchedDirectoriesProgress(std::int64_t numberOfDirecories) override;
    void supplySkippedDirectories(std::int64_t numberOfDirectories) override;
    void searchingInsideFile(const std::string& name, bool inProgress, float percentageProgress) override;
    void searchInvalidQuery() override;

    // Whether a result passes the ignore list and the commands, in the flat
    // form or, when a command stands under an OR, as the boolean expression.
    // Commands may add to the result.
    bool searchResultPassesFiltering(SearchResult& result, SearchDataSourceDelegate& feedback,
                                     const std::vector<CommandPtr>& commands);

private:
    // Results waiting for one of the two filter queues. One queued drain takes
    // whatever has arrived meanwhile, so a walk that supplies one item a call
    // doesn't cost one queue operation an item.
    struct PendingResults {
        std::vector<SearchResult> items;
        bool drainScheduled = false;
        // The drain found the list empty and waits on `wake` for more.
        bool drainWaiting = false;
    };
    // Results on their way to one filter queue, and the signal that wakes its
    // waiting drain. The count may run ahead of the waits: a stale signal only
    // costs the drain one more look at an empty list.
    struct PendingQueue {
        Locked<PendingResults> results;
        std::counting_semaphore<> wake{0};
    };

    // The counters, each updated on its own from any thread.
    struct Counters {
        std::atomic<std::int64_t> numberOfResultsReturned{0};
        std::atomic<std::int64_t> numberOfDirectoriesSearched{0};
        std::atomic<std::int64_t> numberOfFilesContentSearched{0};
        std::atomic<std::int64_t> numberOfItemsInQueue{0};
        std::atomic<std::int64_t> numberOfDirectoriesSkipped{0};
        Progress snapshot() const;
    };

    SearchManager(QueryContainer query, bool searchInsideSystemAndApps, std::weak_ptr<SearchManagerDelegate> delegate,
                  Environment environment);

    void runSearches();
    void runDataSourceOrSearch(OperationQueue& on);
    void startDataSources(const DataSources& sources, OperationQueue& on);
    // Runs one source to its end, timed, then `searchDataSourceFinishedSearch`.
    void runDataSource(SearchDataSource& source, SearchDataSourceDelegate& feedback);
    void searchDataSourceFinishedSearch(SearchDataSource& source);
    void cancelSpotlight();
    void allSearchesHaveCompleted();

    void enqueueFiltering(std::vector<SearchResult> results, SearchResultSupplier supplier);
    void drainPendingResults(PendingQueue& pending, const std::vector<CommandPtr>& commands);
    using Survivors = std::vector<std::vector<SearchResult>>;
    // Room a drain reuses from item to item, so that judging an item that
    // brings no enclosing folders allocates nothing of its own.
    struct FilterScratch {
        std::string parent;
        std::string folded;
        std::vector<std::string> folders;
        std::vector<std::int64_t> keys;
        std::vector<char> isNew;
    };
    void filterResults(std::vector<SearchResult>& results, const std::vector<CommandPtr>& commands,
                       FilterScratch& scratch, Survivors& survivors);
    void filterRange(std::span<SearchResult> results, const std::vector<CommandPtr>& commands, FilterScratch& scratch,
                     Survivors& survivors);
    void filterInTwo(std::vector<SearchResult>& results, FilterScratch& scratch, Survivors& survivors);
    // The item's survivors, counted.
    std::vector<SearchResult> filterOne(SearchResult& result, const std::vector<CommandPtr>& commands,
                                        FilterScratch& scratch);
    void deliver(Survivors survivors);
    void deliverInsideFile();
    std::vector<SearchResult> expandAndFilter(SearchResult result, const std::vector<CommandPtr>& commands,
                                              FilterScratch& scratch);
    void claimForFiltering(const std::vector<std::int64_t>& keys, std::vector<char>& isNew);
    bool judgeClaimed(SearchResult& candidate, const std::vector<CommandPtr>& commands);
    bool passesFlatFiltering(SearchResult& result, SearchDataSourceDelegate& feedback,
                             const std::vector<CommandPtr>& commands);
    bool passesTreeFiltering(SearchResult& result, SearchDataSourceDelegate& feedback,
                             const std::vector<CommandPtr>& commands);

    void waitWhileTooManyInFlight();
    void reportProgressIfDue();
    void onMainLoop(std::function<void(SearchManagerDelegate&)> call);

    const std::weak_ptr<SearchManagerDelegate> delegate;
    const QueryContainer searchQuery;
    // The search words in ASCII lower case, for the enclosing-folder test.
    const std::vector<std::string> foldedSearchWords;
    // What every candidate's judgement asks of the query's expression, worked
    // out once for the search rather than by walking the tree per item.
    const bool judgesThroughTree;
    const std::set<int> treeCommandLeaves;
    const std::set<int> treeDataSourceLeaves;
    const std::vector<CommandPtr> queryCommands;
    const std::vector<CommandPtr> fastQueueCommands;
    const std::vector<CommandPtr> filterQueueCommands;
    // A search that reads inside files judges each batch of the filter queue
    // on two threads at once, the second with these copies of the commands on
    // `filterHelperQueue`: reading and searching a file's text is what such a
    // search waits for, and one thread leaves a core idle. None otherwise.
    const std::vector<CommandPtr> filterHelperCommands;
    const Clock& clock;
    const Clock::TimePoint creationTime;
    const DataSources commandBasedDataSources;
    const DataSources fileSystemSearchDataSources;
    MainLoop& mainLoop;
    FSUtilities& fsUtilities;
    const bool showsHiddenItems;
    const bool needsAttributes;
    const bool showsFoundLines;
    const std::function<bool(const std::string& path)> isIgnored;
    const std::function<void(SearchResultSupplier, Clock::Duration)> sourceDidFinish;
    // The folders of the query's location, below which the hidden rules judge.
    const std::vector<std::string> searchedFolders;

    Locked<DataSources> allDataSources;
    Locked<DataSources> finishedDataSources;
    Counters counters;
    std::atomic<std::int64_t> resultsAwaitingDelegate{0};  // judged, not yet handed over
    DelayTimer progressUpdateTimer;
    Locked<Crc64Set> alreadyFiltered;
    Locked<std::map<int, std::unordered_set<std::int64_t>>> materializedDataSourceSets;
    Locked<std::vector<std::function<void(SearchManagerDelegate&)>>> pendingDelegateCalls;
    // The file a content search reads now, passed on at most every
    // `kInsideFileInterval`: a search of small files reads thousands a second.
    struct InsideFile {
        std::string name;
        bool inProgress = false;
        float percentageProgress = 0;
    };
    Locked<std::optional<InsideFile>> latestInsideFile;
    // Every source reads the stop flag at every item, and the lists below are
    // written as often: each sits on a cache line of its own, so that reading
    // the flag doesn't wait for the line that the writers pass around.
    alignas(64) std::atomic<bool> stopRequested{false};
    std::atomic<bool> inProgress{false};

    alignas(64) PendingQueue pendingFilterResults;
    PendingQueue pendingFastResults;
    SerialQueue filterQueue;
    SerialQueue filterHelperQueue;
    FilterScratch filterHelperScratch;
    SerialQueue fastQueue;
    // Runs the search block, which waits for the sources and the two queues.
    SerialQueue searchQueue;
};

}  // namespace quester
