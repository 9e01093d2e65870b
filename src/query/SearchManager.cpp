#include "query/SearchManager.h"

#include <algorithm>
#include <chrono>
#include <functional>
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
// How long a drain waits for more results, in yields, before it ends.
constexpr int kLingerRounds = 64;
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
std::string asciiLowercase(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return lower;
}

// The folder paths of `parent` (which ends in "/") whose name holds one of
// `words`: at each match, the text up to the next "/". Repeats are kept.
std::vector<std::string> splitPath(const std::string& parent, const std::vector<std::string>& words) {
    std::vector<std::string> folders;
    const std::string folded = asciiLowercase(parent);
    for (const auto& word : words) {
        if (word.empty()) continue;
        const std::string foldedWord = asciiLowercase(word);
        for (auto match = folded.find(foldedWord); match != std::string::npos;
             match = folded.find(foldedWord, match + 1)) {
            auto slash = parent.find('/', match + foldedWord.size());
            if (slash == std::string::npos) slash = parent.size();
            folders.push_back(parent.substr(0, slash));
        }
    }
    return folders;
}

// The minus words and the wildcard words are judged with the name, not on their own.
bool isPartOfTheNameTest(const Command& command) {
    return dynamic_cast<const WildcardWords*>(&command) != nullptr ||
           dynamic_cast<const NotIncludingWords*>(&command) != nullptr;
}

SearchResult enclosingFolderResult(const std::string& path, const SearchResult& foundItem) {
    SearchResult folder = SearchResult::forFile(foundItem.searchResultSuppliedBy, path, foundItem.checkToSeeIfItExists);
    folder.url = Url(path, true);
    folder.isDirectory = true;
    folder.size = 0;
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
      judgesThroughTree(searchQuery.booleanExpr().hasCommandUnderOr()),
      treeCommandLeaves(searchQuery.booleanExpr().commandLeafIndices()),
      treeDataSourceLeaves(searchQuery.dataSourceLeafIndices()),
      queryCommands(searchQuery.commandsFoundInQuery()),
      fastQueueCommands(copiesOf(queryCommands)),
      filterQueueCommands(copiesOf(queryCommands)),
      clock(environment.clock ? *environment.clock : SystemClock::shared()),
      creationTime(clock.now()),
      commandBasedDataSources(std::move(environment.commandBasedDataSources)),
      fileSystemSearchDataSources(std::move(environment.fileSystemSearchDataSources)),
      mainLoop(environment.mainLoop ? *environment.mainLoop : MainLoop::shared()),
      fsUtilities(environment.fsUtilities ? *environment.fsUtilities : FSUtilities::shared()),
      showsHiddenItems(searchInsideSystemAndApps ||
                       searchQuery.findCommand(CommandRole::showInvisibleItems) != nullptr),
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
    bool scheduleDrain = pending.access([&](PendingResults& waiting) {
        waiting.items.insert(waiting.items.end(), std::make_move_iterator(results.begin()),
                             std::make_move_iterator(results.end()));
        return !std::exchange(waiting.drainScheduled, true);
    });
    if (scheduleDrain) {
        (fast ? fastQueue : filterQueue).addOperation([this, &pending, &commands] {
            drainPendingResults(pending, commands);
        });
    }
}

void SearchManager::drainPendingResults(Locked<PendingResults>& pending, const std::vector<CommandPtr>& commands) {
    Survivors survivors;
    auto lastDelivery = std::chrono::steady_clock::now();
    // A walk supplies an item every few microseconds: a drain that finds the
    // list empty yields a little before it ends, so that the queue's thread
    // isn't put to sleep and woken again for every item.
    int idleRounds = 0;
    // The drained list and the one the sources fill trade places, so both
    // keep their room instead of growing again from nothing at every round.
    std::vector<SearchResult> batch;
    for (;;) {
        bool lingering = idleRounds < kLingerRounds;
        batch.clear();
        pending.access([&](PendingResults& waiting) {
            if (waiting.items.empty() && !lingering) waiting.drainScheduled = false;
            std::swap(waiting.items, batch);
        });
        if (batch.empty()) {
            if (!lingering) break;
            ++idleRounds;
            std::this_thread::yield();
            continue;
        }
        idleRounds = 0;
        filterResults(batch, commands, survivors);
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

void SearchManager::filterResults(const std::vector<SearchResult>& results, const std::vector<CommandPtr>& commands,
                                  Survivors& survivors) {
    for (const auto& result : results) {
        if (shouldStop()) return;
        auto passing = expandAndFilter(result, commands);
        if (!passing.empty()) {
            counters.numberOfResultsReturned += static_cast<std::int64_t>(passing.size());
            resultsAwaitingDelegate += static_cast<std::int64_t>(passing.size());
            survivors.push_back(std::move(passing));
        }
        --counters.numberOfItemsInQueue;
    }
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

std::vector<SearchResult> SearchManager::expandAndFilter(const SearchResult& result,
                                                         const std::vector<CommandPtr>& commands) {
    std::vector<std::string> paths{result.url.path()};
    std::string parent = parentPath(result.url.path());
    if (parent != "/") parent += '/';
    for (auto& folder : splitPath(parent, searchQuery.searchWords())) paths.push_back(std::move(folder));

    std::vector<std::int64_t> keys;
    keys.reserve(paths.size());
    for (const auto& path : paths) keys.push_back(crc64(path));
    auto isNew = claimForFiltering(keys);
    std::vector<SearchResult> passing;
    for (std::size_t i = 0; i < paths.size() && !shouldStop(); ++i) {
        if (!isNew[i]) continue;
        // Most enclosing folders were judged before, so a folder's attributes
        // are read only once it is known to be new.
        SearchResult candidate = i == 0 ? result : enclosingFolderResult(paths[i], result);
        if (judgeClaimed(candidate, commands)) passing.push_back(std::move(candidate));
    }
    return passing;
}

// Enters the paths (by key) into filtering, in order, under one lock; answers
// for each whether it is new. A path that entered before is not judged again:
// the first source to supply it decides.
std::vector<bool> SearchManager::claimForFiltering(const std::vector<std::int64_t>& keys) {
    return alreadyFiltered.access([&](auto& seen) {
        std::vector<bool> isNew;
        isNew.reserve(keys.size());
        for (auto key : keys) isNew.push_back(seen.insert(key));
        return isNew;
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
        nameMatches = searchQuery.fsItemNameStringIncludesWordsFromQuery(
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
    onMainLoop(
        [=](SearchManagerDelegate& receiver) { receiver.searchingInsideFile(name, inProgress, percentageProgress); });
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
