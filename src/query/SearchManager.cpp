#include "query/SearchManager.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <future>
#include <thread>
#include <utility>

#include "platform/FSUtilities.h"
#include "query/CollectingSearchDataSourceDelegate.h"
#include "query/NotIncludingWords.h"
#include "query/WildcardWords.h"
#include "support/Crc64.h"
#include "support/LogFunc.h"
#include "support/PathText.h"

namespace quester {
namespace {

// Enough threads that no source waits for another: sources are few.
constexpr int kLocalQueueWidth = 64;
// How often the file a content search reads is passed on to the delegate.
constexpr auto kInsideFileInterval = std::chrono::milliseconds(100);
// How long a drain waits for more results before it ends. A walk supplies a
// batch every few microseconds while it finds things, so a drain that waited
// for nothing at all would be ended and started again for every batch.
constexpr auto kDrainLinger = std::chrono::milliseconds(2);
// Found items reach the main loop in lists of at most this many input items,
// and at least this often while results come.
constexpr std::size_t kDeliveryBatch = 256;
// Results found but not yet handed to the delegate, above which sources wait.
constexpr std::int64_t kMaxResultsInFlight = 1 << 16;
constexpr auto kDeliveryInterval = std::chrono::milliseconds(20);

// Never destroyed: the last manager may go away on one of its own threads
// while the process exits.
Locked<std::vector<std::weak_ptr<SearchManager>>>& allInstancesList() {
    static auto* list = new Locked<std::vector<std::weak_ptr<SearchManager>>>();
    return *list;
}

// Results of these sources skip the queue of the slow criteria.
bool isInFastSet(SearchResultSupplier supplier) {
    return supplier == SearchResultSupplier::CompactContentIndex || supplier == SearchResultSupplier::spotlightContent;
}

bool isInSpotlightSet(SearchResultSupplier supplier) {
    return supplier == SearchResultSupplier::showAppsCmd || supplier == SearchResultSupplier::spotlight;
}

bool containsSource(const SearchManager::DataSources& list, const SearchDataSource* source) {
    return std::any_of(list.begin(), list.end(), [&](const auto& listed) { return listed.get() == source; });
}

std::vector<CommandPtr> copiesOf(const std::vector<CommandPtr>& commands) {
    std::vector<CommandPtr> copies;
    copies.reserve(commands.size());
    for (const auto& command : commands) copies.push_back(command->copy());
    return copies;
}

// ASCII case folding keeps byte offsets, so matches found in the folded text
// stand at the same places in the original.
void asciiLowercaseInPlace(std::string& text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
}

std::vector<std::string> foldedWords(std::vector<std::string> words) {
    for (auto& word : words) asciiLowercaseInPlace(word);
    return words;
}

// Appends the folder paths of `parent` (which ends in "/") whose name holds
// one of `foldedWords`: at each match, the text up to the next "/". Repeats
// are kept. `folded` is scratch room for the lowercased parent.
void appendFoldersNamedAfterWords(const std::string& parent, const std::vector<std::string>& foldedWords,
                                  std::string& folded, std::vector<std::string>& folders) {
    folded.assign(parent);
    asciiLowercaseInPlace(folded);
    for (const auto& foldedWord : foldedWords) {
        if (foldedWord.empty()) continue;
        for (auto match = folded.find(foldedWord); match != std::string::npos;
             match = folded.find(foldedWord, match + 1)) {
            auto slash = parent.find('/', match + foldedWord.size());
            if (slash == std::string::npos) slash = parent.size();
            folders.push_back(parent.substr(0, slash));
        }
    }
}

// The minus words and the wildcard words are judged with the name, not on their own.
bool isPartOfTheNameTest(const Command& command) {
    return dynamic_cast<const WildcardWords*>(&command) != nullptr ||
           dynamic_cast<const NotIncludingWords*>(&command) != nullptr;
}

// A folder of an item found in the cache of a disk that is off line is off line too.
SearchResult enclosingFolderResult(const std::string& path, SearchResultSupplier supplier, bool checkToSeeIfItExists,
                                   bool isOffline) {
    SearchResult folder = SearchResult::forFile(supplier, path, checkToSeeIfItExists);
    folder.url = Url(path, true);
    folder.isDirectory = true;
    folder.size = 0;
    folder.isOffline = isOffline;
    return folder;
}

}  // namespace

std::shared_ptr<SearchManager> SearchManager::create(QueryContainer query, bool searchInsideSystemAndApps,
                                                     std::weak_ptr<SearchManagerDelegate> delegate,
                                                     Environment environment) {
    std::shared_ptr<SearchManager> manager(
        new SearchManager(std::move(query), searchInsideSystemAndApps, std::move(delegate), std::move(environment)));
    allInstancesList().access([&](auto& list) {
        std::erase_if(list, [](const auto& weak) { return weak.expired(); });
        list.push_back(manager);
    });
    return manager;
}

SearchManager::SearchManager(QueryContainer query, bool searchInsideSystemAndApps,
                             std::weak_ptr<SearchManagerDelegate> delegate, Environment environment)
    : delegate(std::move(delegate)),
      searchQuery(std::move(query)),
      foldedSearchWords(foldedWords(searchQuery.searchWords())),
      judgesThroughTree(searchQuery.booleanExpr().hasCommandUnderOr()),
      treeCommandLeaves(searchQuery.booleanExpr().commandLeafIndices()),
      treeDataSourceLeaves(searchQuery.dataSourceLeafIndices()),
      queryCommands(searchQuery.commandsFoundInQuery()),
      fastQueueCommands(copiesOf(queryCommands)),
      filterQueueCommands(copiesOf(queryCommands)),
      filterHelperCommands(searchQuery.findCommand(CommandRole::contentSearch) ? copiesOf(queryCommands)
                                                                               : std::vector<CommandPtr>{}),
      clock(environment.clock ? *environment.clock : SystemClock::shared()),
      creationTime(clock.now()),
      commandBasedDataSources(std::move(environment.commandBasedDataSources)),
      fileSystemSearchDataSources(std::move(environment.fileSystemSearchDataSources)),
      mainLoop(environment.mainLoop ? *environment.mainLoop : MainLoop::shared()),
      fsUtilities(environment.fsUtilities ? *environment.fsUtilities : FSUtilities::shared()),
      showsHiddenItems(searchInsideSystemAndApps ||
                       searchQuery.findCommand(CommandRole::showInvisibleItems) != nullptr),
      needsAttributes(environment.showsItemAttributes ||
                      std::any_of(queryCommands.begin(), queryCommands.end(),
                                  [](const CommandPtr& command) { return command->readsItemAttributes(); })),
      showsFoundLines(environment.showsFoundLines),
      isIgnored(std::move(environment.isIgnored)),
      sourceDidFinish(std::move(environment.sourceDidFinish)),
      searchedFolders(searchQuery.whereLocation() ? searchQuery.whereLocation()->locationPaths()
                                                  : std::vector<std::string>{}),
      progressUpdateTimer(std::chrono::milliseconds(250), true, clock) {}

SearchManager::~SearchManager() {
    allInstancesList().access(
        [&](auto& list) { std::erase_if(list, [&](const auto& weak) { return weak.expired(); }); });
}

std::vector<std::shared_ptr<SearchManager>> SearchManager::allInstances() {
    return allInstancesList().access([](const auto& list) {
        std::vector<std::shared_ptr<SearchManager>> alive;
        for (const auto& weak : list) {
            if (auto manager = weak.lock()) alive.push_back(std::move(manager));
        }
        return alive;
    });
}

void SearchManager::search() {
    if (auto receiver = delegate.lock()) receiver->searchManagerIsBeginingSearches(searchQuery);
    searchQueue.addOperation([self = shared_from_this()] { self->runSearches(); });
}

void SearchManager::runSearches() {
    OperationQueue localQueue(kLocalQueueWidth);
    for (const auto& command : queryCommands) command->commandsStarting();
    if (!shouldStop()) inProgress = true;

    if (searchQuery.booleanExprUsesDataSourceOr()) {
        runDataSourceOrSearch(localQueue);
    } else {
        DataSources sources = commandBasedDataSources;
        for (auto& source : searchQuery.suppliedDataSources()) {
            if (!containsSource(sources, source.get())) sources.push_back(std::move(source));
        }
        startDataSources(sources, localQueue);
        bool anySourceHasLocations = allDataSources.access([&](const DataSources& all) {
            return std::any_of(all.begin(), all.end(),
                               [&](const auto& source) { return !source->dataSourceLocations(searchQuery).empty(); });
        });
        if (searchQuery.isWordBasedSearch() && !anySourceHasLocations) {
            startDataSources(fileSystemSearchDataSources, localQueue);
        }
    }

    localQueue.waitUntilAllOperationsAreFinished();
    filterQueue.waitUntilAllOperationsAreFinished();
    fastQueue.waitUntilAllOperationsAreFinished();
    // No path comes to be judged any more: the keys of a million paths go
    // before the results are sorted, when memory is at its peak.
    alreadyFiltered.setValue({});
    mainLoop.post([self = shared_from_this()] { self->allSearchesHaveCompleted(); });
}

void SearchManager::startDataSources(const DataSources& sources, OperationQueue& on) {
    allDataSources.access([&](DataSources& all) { all.insert(all.end(), sources.begin(), sources.end()); });
    for (const auto& source : sources) {
        on.addOperation([this, source] { runDataSource(*source, *this); });
    }
}

void SearchManager::runDataSourceOrSearch(OperationQueue& on) {
    const auto leaves = searchQuery.dataSourceLeafIndices();
    std::map<SearchResultSupplier, std::vector<SearchResult>> bySupplier;
    std::weak_ptr<SearchManager> weakSelf = weak_from_this();
    for (int leaf : leaves) {
        std::unordered_set<std::int64_t> found;
        for (const auto& source : searchQuery.commandsFoundInQuery()[leaf]->suppliedDataSources()) {
            if (shouldStop()) break;
            CollectingSearchDataSourceDelegate collector(showsHiddenItems, [weakSelf] {
                auto self = weakSelf.lock();
                return !self || self->shouldStop();
            });
            allDataSources.access([&](DataSources& all) { all.push_back(source); });
            runDataSource(*source, collector);
            for (auto& result : collector.results()) {
                found.insert(crc64(result.url.path()));
                bySupplier[source->type()].push_back(std::move(result));
            }
        }
        materializedDataSourceSets.access([&](auto& sets) { sets[leaf] = std::move(found); });
    }
    for (auto& [supplier, results] : bySupplier) {
        if (!results.empty()) enqueueFiltering(std::move(results), supplier);
    }
    if (searchQuery.booleanExpr().needsOpenUniverse(leaves)) startDataSources(fileSystemSearchDataSources, on);
}

void SearchManager::runDataSource(SearchDataSource& source, SearchDataSourceDelegate& feedback) {
    const auto started = clock.now();
    source.search(searchQuery, feedback);
    if (sourceDidFinish) sourceDidFinish(source.type(), clock.now() - started);
    searchDataSourceFinishedSearch(source);
}

void SearchManager::searchDataSourceFinishedSearch(SearchDataSource& source) {
    LOG("finished: " + source.debugDescription());
    finishedDataSources.access([&](DataSources& finished) {
        finished.push_back(allDataSources.access([&](const DataSources& all) {
            auto found =
                std::find_if(all.begin(), all.end(), [&](const auto& listed) { return listed.get() == &source; });
            return found == all.end() ? nullptr : *found;
        }));
    });
    if (shouldStop()) return;
    source.searchShouldStop();
    if (!searchQuery.isWordBasedSearch()) return;
    bool directSourcesRunning = allDataSources.access([&](const DataSources& all) {
        return finishedDataSources.access([&](const DataSources& finished) {
            return std::any_of(all.begin(), all.end(), [&](const auto& running) {
                return !containsSource(finished, running.get()) && !isInSpotlightSet(running->type());
            });
        });
    });
    if (!directSourcesRunning) cancelSpotlight();
}

void SearchManager::cancelSpotlight() {
    for (const auto& source : allDataSources.value()) {
        if (isInSpotlightSet(source->type())) source->searchShouldStop();
    }
}

void SearchManager::allSearchesHaveCompleted() {
    LOG("allSearchesHaveCompleted()");
    inProgress = false;
    if (auto receiver = delegate.lock()) receiver->searchManagerHasFinishedAllSearches(searchQuery);
}

void SearchManager::stop() {
    inProgress = false;
    if (stopRequested.exchange(true)) return;
    LOG("stop()");
    for (const auto& source : fileSystemSearchDataSources) source->searchShouldStop();
    for (const auto& source : commandBasedDataSources) source->searchShouldStop();
    filterQueue.cancelAllOperations();
}

void SearchManager::userCancel() {
    stop();
    mainLoop.post([self = shared_from_this()] {
        if (auto receiver = self->delegate.lock()) receiver->searchManagerHasFinishedAllSearches(self->searchQuery);
    });
}

void SearchManager::supplySearchResults(std::vector<SearchResult> results, SearchDataSource& fromDataSource) {
    if (results.empty()) return;
    waitWhileTooManyInFlight();
    enqueueFiltering(std::move(results), fromDataSource.type());
}

// A walk finds items faster than they are judged and shown: its threads wait
// while many are on their way, so that a search of a million items doesn't
// hold most of them as results twice over, beside their rows.
void SearchManager::waitWhileTooManyInFlight() {
    if (mainLoop.isLoopThread()) return;
    while (!shouldStop() && !delegate.expired() &&
           counters.numberOfItemsInQueue + resultsAwaitingDelegate > kMaxResultsInFlight) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

void SearchManager::enqueueFiltering(std::vector<SearchResult> results, SearchResultSupplier supplier) {
    counters.numberOfItemsInQueue += static_cast<std::int64_t>(results.size());
    bool fast = isInFastSet(supplier);
    auto& pending = fast ? pendingFastResults : pendingFilterResults;
    auto& commands = fast ? fastQueueCommands : filterQueueCommands;
    bool wakeDrain = false;
    bool scheduleDrain = pending.results.access([&](PendingResults& waiting) {
        waiting.items.insert(waiting.items.end(), std::make_move_iterator(results.begin()),
                             std::make_move_iterator(results.end()));
        wakeDrain = std::exchange(waiting.drainWaiting, false);
        return !std::exchange(waiting.drainScheduled, true);
    });
    if (wakeDrain) pending.wake.release();
    if (scheduleDrain) {
        (fast ? fastQueue : filterQueue).addOperation([this, &pending, &commands] {
            drainPendingResults(pending, commands);
        });
    }
}

void SearchManager::drainPendingResults(PendingQueue& pending, const std::vector<CommandPtr>& commands) {
    Survivors survivors;
    auto lastDelivery = std::chrono::steady_clock::now();
    // The drained list and the one the sources fill trade places, so both
    // keep their room instead of growing again from nothing at every round.
    std::vector<SearchResult> batch;
    FilterScratch scratch;
    bool waitedInVain = false;
    for (;;) {
        batch.clear();
        const bool ended = pending.results.access([&](PendingResults& waiting) {
            std::swap(waiting.items, batch);
            if (!batch.empty()) return false;
            waiting.drainWaiting = !waitedInVain;
            waiting.drainScheduled = !waitedInVain;
            return waitedInVain;
        });
        if (ended) break;
        if (batch.empty()) {
            waitedInVain = !pending.wake.try_acquire_for(kDrainLinger);
            continue;
        }
        waitedInVain = false;
        filterResults(batch, commands, scratch, survivors);
        auto now = std::chrono::steady_clock::now();
        if (survivors.size() >= kDeliveryBatch || now - lastDelivery >= kDeliveryInterval) {
            deliver(std::move(survivors));
            survivors = {};
            lastDelivery = now;
        }
    }
    deliver(std::move(survivors));
    reportProgressIfDue();
}

void SearchManager::filterResults(std::vector<SearchResult>& results, const std::vector<CommandPtr>& commands,
                                  FilterScratch& scratch, Survivors& survivors) {
    if (&commands == &filterQueueCommands && !filterHelperCommands.empty() && results.size() > 1)
        return filterInTwo(results, scratch, survivors);
    filterRange(results, commands, scratch, survivors);
}

// This thread and the helper queue take the batch's items one at a time,
// so that one long file doesn't leave the other idle; the survivors keep
// the batch's order.
void SearchManager::filterInTwo(std::vector<SearchResult>& results, FilterScratch& scratch, Survivors& survivors) {
    Survivors byItem(results.size());
    std::atomic<std::size_t> next{0};
    const auto takeItems = [&](const std::vector<CommandPtr>& commands, FilterScratch& own) {
        for (std::size_t index; !shouldStop() && (index = next++) < results.size();)
            byItem[index] = filterOne(results[index], commands, own);
    };
    std::promise<void> helperDone;
    filterHelperQueue.addOperation([&] {
        takeItems(filterHelperCommands, filterHelperScratch);
        helperDone.set_value();
    });
    takeItems(filterQueueCommands, scratch);
    helperDone.get_future().wait();
    for (auto& passing : byItem)
        if (!passing.empty()) survivors.push_back(std::move(passing));
}

void SearchManager::filterRange(std::span<SearchResult> results, const std::vector<CommandPtr>& commands,
                                FilterScratch& scratch, Survivors& survivors) {
    for (auto& result : results) {
        if (shouldStop()) return;
        auto passing = filterOne(result, commands, scratch);
        if (!passing.empty()) survivors.push_back(std::move(passing));
    }
}

std::vector<SearchResult> SearchManager::filterOne(SearchResult& result, const std::vector<CommandPtr>& commands,
                                                   FilterScratch& scratch) {
    auto passing = expandAndFilter(std::move(result), commands, scratch);
    counters.numberOfResultsReturned += static_cast<std::int64_t>(passing.size());
    resultsAwaitingDelegate += static_cast<std::int64_t>(passing.size());
    --counters.numberOfItemsInQueue;
    return passing;
}

// The survivors of each input item go to the delegate as one call, in order;
// the calls travel to the main loop together.
void SearchManager::deliver(Survivors survivors) {
    if (survivors.empty()) return;
    std::int64_t count = 0;
    for (const auto& passing : survivors) count += static_cast<std::int64_t>(passing.size());
    onMainLoop([this, survivors = std::move(survivors), count](SearchManagerDelegate& receiver) {
        for (const auto& passing : survivors) receiver.searchManagerFoundItems(passing, searchQuery);
        resultsAwaitingDelegate -= count;
    });
}

// The item itself, then each enclosing folder named after a search word.
std::vector<SearchResult> SearchManager::expandAndFilter(SearchResult result, const std::vector<CommandPtr>& commands,
                                                         FilterScratch& scratch) {
    scratch.folders.clear();
    std::string& parent = scratch.parent;
    parent.assign(parentPath(result.url.path()));
    if (parent != "/") parent += '/';
    appendFoldersNamedAfterWords(parent, foldedSearchWords, scratch.folded, scratch.folders);

    scratch.keys.clear();
    scratch.keys.push_back(crc64(result.url.path()));
    for (const auto& folder : scratch.folders) scratch.keys.push_back(crc64(folder));
    claimForFiltering(scratch.keys, scratch.isNew);
    const SearchResultSupplier supplier = result.searchResultSuppliedBy;
    const bool checkToSeeIfItExists = result.checkToSeeIfItExists;
    const bool isOffline = result.isOffline;
    std::vector<SearchResult> passing;
    for (std::size_t i = 0; i < scratch.keys.size() && !shouldStop(); ++i) {
        if (!scratch.isNew[i]) continue;
        // Most enclosing folders were judged before, so a folder's attributes
        // are read only once it is known to be new.
        SearchResult candidate =
            i == 0 ? std::move(result)
                   : enclosingFolderResult(scratch.folders[i - 1], supplier, checkToSeeIfItExists, isOffline);
        if (judgeClaimed(candidate, commands)) passing.push_back(std::move(candidate));
    }
    return passing;
}

// Enters the paths (by key) into filtering, in order, under one lock; answers
// for each whether it is new. A path that entered before is not judged again:
// the first source to supply it decides.
void SearchManager::claimForFiltering(const std::vector<std::int64_t>& keys, std::vector<char>& isNew) {
    isNew.clear();
    alreadyFiltered.access([&](auto& seen) {
        for (auto key : keys) isNew.push_back(seen.insert(key) ? 1 : 0);
    });
}

// Only the claim makes a path new, so a path that passes here is shown once
// without a set of its own of the paths shown.
bool SearchManager::judgeClaimed(SearchResult& candidate, const std::vector<CommandPtr>& commands) {
    const std::string& path = candidate.url.path();
    if (!candidate.ignoreSearchLocation) {
        if (!showsHiddenItems && fsUtilities.isHiddenFromSearch(path, searchedFolders)) return false;
        if (!searchQuery.pathIsInQueryLocation(path)) return false;
    }
    if (!searchResultPassesFiltering(candidate, *this, commands)) return false;
    if (judgesThroughTree && searchQuery.findCommand(CommandRole::contentSearch) != nullptr) {
        candidate.tryCollectSummaryLines = true;
    }
    return true;
}

bool SearchManager::searchResultPassesFiltering(SearchResult& result, SearchDataSourceDelegate& feedback,
                                                const std::vector<CommandPtr>& commands) {
    if (isIgnored && isIgnored(result.url.path())) return false;
    if (judgesThroughTree) return passesTreeFiltering(result, feedback, commands);
    return passesFlatFiltering(result, feedback, commands);
}

bool SearchManager::passesFlatFiltering(SearchResult& result, SearchDataSourceDelegate& feedback,
                                        const std::vector<CommandPtr>& commands) {
    const bool emptyExpression = searchQuery.booleanExpr().isEmpty();
    if (emptyExpression && commands.empty()) return false;
    bool nameMatches = false;
    if (!emptyExpression) {
        nameMatches =
            result.nameIsKnownToMatch ||
            searchQuery.fsItemNameStringIncludesWordsFromQuery(
                lastPathComponent(result.url.path()), result.searchResultSuppliedBy == SearchResultSupplier::spotlight);
        if (commands.empty()) return nameMatches;
        // Unless words and commands are joined by OR, a name that fails
        // decides alone: the commands, which may read the whole file, needn't run.
        if (!nameMatches && !searchQuery.isORCommandSearch()) return false;
    }
    bool noExcludes = true;
    for (const auto& command : commands) {
        if (isPartOfTheNameTest(*command)) continue;
        if (feedback.shouldStop() ||
            command->commandImpApply(result, &feedback, searchQuery) == CommandApplyResult::exclude) {
            noExcludes = false;
            break;
        }
    }
    if (searchQuery.isORCommandSearch()) return nameMatches || noExcludes;
    return emptyExpression ? noExcludes : nameMatches && noExcludes;
}

bool SearchManager::passesTreeFiltering(SearchResult& result, SearchDataSourceDelegate& feedback,
                                        const std::vector<CommandPtr>& commands) {
    for (int index = 0; index < static_cast<int>(commands.size()); ++index) {
        if (isPartOfTheNameTest(*commands[index]) || treeCommandLeaves.count(index)) continue;
        if (feedback.shouldStop()) return false;
        if (commands[index]->commandImpApply(result, &feedback, searchQuery) == CommandApplyResult::exclude) {
            return false;
        }
    }
    const std::int64_t key = crc64(result.url.path());
    bool diacriticInsensitive = result.searchResultSuppliedBy == SearchResultSupplier::spotlight ||
                                searchQuery.wantsDiacriticInsensitiveSearch();
    auto context = searchQuery.makeEvalContext(diacriticInsensitive, [&](int index) {
        if (treeDataSourceLeaves.count(index)) {
            return materializedDataSourceSets.access([&](const auto& sets) {
                auto set = sets.find(index);
                return set != sets.end() && set->second.count(key) > 0;
            });
        }
        return commands[index]->commandImpApply(result, &feedback, searchQuery) != CommandApplyResult::exclude;
    });
    return searchQuery.matchExpr().matches(lastPathComponent(result.url.path()), context);
}

void SearchManager::supplyIncreaseNumberOfFilesContentSearched(std::int64_t increaseNumberOfFiles) {
    counters.numberOfFilesContentSearched += increaseNumberOfFiles;
    reportProgressIfDue();
}

void SearchManager::supplySearchedDirectoriesProgress(std::int64_t numberOfDirecories) {
    counters.numberOfDirectoriesSearched += numberOfDirecories;
    reportProgressIfDue();
}

void SearchManager::supplySkippedDirectories(std::int64_t numberOfDirectories) {
    counters.numberOfDirectoriesSkipped += numberOfDirectories;
}

void SearchManager::reportProgressIfDue() {
    if (!progressUpdateTimer.hasElapsed()) return;
    onMainLoop([snapshot = counters.snapshot()](SearchManagerDelegate& receiver) {
        receiver.searchManagerProgress(snapshot);
    });
}

SearchManager::Progress SearchManager::Counters::snapshot() const {
    return Progress{numberOfResultsReturned.load(), numberOfDirectoriesSearched.load(),
                    numberOfFilesContentSearched.load(), numberOfItemsInQueue.load(),
                    numberOfDirectoriesSkipped.load()};
}

void SearchManager::searchingInsideFile(const std::string& name, bool inProgress, float percentageProgress) {
    const bool firstSinceDelivery = latestInsideFile.access([&](std::optional<InsideFile>& latest) {
        const bool first = !latest.has_value();
        latest = InsideFile{name, inProgress, percentageProgress};
        return first;
    });
    if (firstSinceDelivery)
        mainLoop.postAfter(kInsideFileInterval, [self = shared_from_this()] { self->deliverInsideFile(); });
}

void SearchManager::deliverInsideFile() {
    auto latest =
        latestInsideFile.access([](std::optional<InsideFile>& slot) { return std::exchange(slot, std::nullopt); });
    // A file still being read when the search ended is no longer read.
    if (!latest || (latest->inProgress && !inProgress)) return;
    if (auto receiver = delegate.lock()) {
        receiver->searchingInsideFile(latest->name, latest->inProgress, latest->percentageProgress);
    }
}

void SearchManager::searchInvalidQuery() {
    onMainLoop([](SearchManagerDelegate& receiver) { receiver.searchInvalidQuery(); });
}

void SearchManager::onMainLoop(std::function<void(SearchManagerDelegate&)> call) {
    // One loop task drains every call queued meanwhile, in order: a walk that
    // finds thousands of items a second must not flood the loop with tasks.
    bool firstWaiting = pendingDelegateCalls.access([&](auto& pending) {
        pending.push_back(std::move(call));
        return pending.size() == 1;
    });
    if (!firstWaiting) return;
    mainLoop.post([self = shared_from_this()] {
        auto calls = self->pendingDelegateCalls.access([](auto& pending) { return std::exchange(pending, {}); });
        auto receiver = self->delegate.lock();
        if (!receiver) return;
        for (auto& delegateCall : calls) delegateCall(*receiver);
    });
}

}  // namespace quester
