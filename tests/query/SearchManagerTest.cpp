#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "commands/StandardCommandFactories.h"
#include "query/CommandRecogniser.h"
#include "query/QueryContainer.h"
#include "query/SearchDataSource.h"
#include "query/SearchLocation.h"
#include "query/SearchManager.h"
#include "query/SearchResult.h"
#include "support/Locked.h"
#include "support/MainLoop.h"

namespace quester {
namespace {

using namespace std::chrono_literals;

constexpr const char* kRoot = "/search-root";

QueryContainer makeQuery(const std::string& text) {
    static const CommandRecogniser parser(standardCommandFactories());
    return QueryContainer(text, parser, SearchLocation::fromURLs({Url(kRoot, true)}));
}

SearchResult resultFor(const std::string& path, SearchResultSupplier supplier, bool isDirectory = false) {
    SearchResult result;
    result.url = Url(path, isDirectory);
    result.isDirectory = isDirectory;
    result.searchResultSuppliedBy = supplier;
    return result;
}

// A source that supplies fixed paths, one a call, from the thread the manager
// gives it. It can wait for another source to finish first, and can keep
// supplying until told to stop.
class ListSource : public SearchDataSource {
public:
    ListSource(SearchResultSupplier supplier, std::vector<std::string> paths)
        : supplier(supplier), paths(std::move(paths)) {}

    std::string debugDescription() const override { return "ListSource"; }
    SearchResultSupplier type() const override { return supplier; }

    void search(const QueryContainer&, SearchDataSourceDelegate& handler) override {
        ++searches;
        if (after) {
            while (!after->finished) std::this_thread::yield();
        }
        do {
            for (const auto& path : paths) {
                if (handler.shouldStop()) break;
                handler.supplySearchResults({resultFor(path, supplier)}, *this);
            }
        } while (untilStopped && !handler.shouldStop());
        handler.supplySearchedDirectoriesProgress(1);
        finished = true;
    }
    void searchShouldStop() override { ++stopRequests; }

    const SearchResultSupplier supplier;
    const std::vector<std::string> paths;
    std::shared_ptr<ListSource> after;
    bool untilStopped = false;
    std::atomic<int> searches{0};
    std::atomic<int> stopRequests{0};
    std::atomic<bool> finished{false};
};

class RecordingDelegate : public SearchManagerDelegate {
public:
    explicit RecordingDelegate(MainLoop& loop) : loop(loop) {}

    void searchManagerIsBeginingSearches(const QueryContainer&) override { ++beginnings; }
    void searchManagerFoundItems(const std::vector<SearchResult>& items, const QueryContainer&) override {
        offLoopCalls += !loop.isLoopThread();
        for (const auto& item : items) {
            found.push_back(item.url.path());
            suppliers[item.url.path()] = item.searchResultSuppliedBy;
        }
    }
    void searchManagerHasFinishedAllSearches(const QueryContainer&) override {
        offLoopCalls += !loop.isLoopThread();
        ++finishes;
    }
    void searchManagerProgress(const SearchManagerProgress& progress) override { lastProgress = progress; }
    void searchingInsideFile(const std::string&, bool, float) override {}
    void searchInvalidQuery() override {}

    std::multiset<std::string> foundSet() const { return {found.begin(), found.end()}; }

    MainLoop& loop;
    int beginnings = 0;
    int finishes = 0;
    int offLoopCalls = 0;
    std::vector<std::string> found;
    std::map<std::string, SearchResultSupplier> suppliers;
    std::optional<SearchManagerProgress> lastProgress;
};

class SearchManagerTest : public ::testing::Test {
protected:
    std::shared_ptr<SearchManager> start(const std::string& text, SearchManager::DataSources fileSystemSources,
                                         SearchManager::DataSources commandSources = {}, bool hidden = false) {
        SearchManager::Environment environment;
        environment.fileSystemSearchDataSources = std::move(fileSystemSources);
        environment.commandBasedDataSources = std::move(commandSources);
        environment.mainLoop = &loop;
        auto manager = SearchManager::create(makeQuery(text), hidden, delegate, std::move(environment));
        manager->search();
        return manager;
    }

    bool runUntilFinished(int finishes = 1) {
        return loop.runUntil([&] { return delegate->finishes >= finishes; }, 60s);
    }

    MainLoop loop;
    std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>(loop);
};

std::string under(const std::string& relative) {
    return std::string(kRoot) + "/" + relative;
}

TEST_F(SearchManagerTest, NameTestAloneWhenThereAreNoCommands) {
    auto source = std::make_shared<ListSource>(
        SearchResultSupplier::fileSystem,
        std::vector<std::string>{under("Budget.txt"), under("report.txt"), "/elsewhere/budget.txt"});
    auto manager = start("budget", {source});
    ASSERT_TRUE(runUntilFinished());
    EXPECT_EQ(delegate->beginnings, 1);
    EXPECT_EQ(delegate->foundSet(), std::multiset<std::string>{under("Budget.txt")});
    EXPECT_FALSE(manager->searchInProgress());
}

TEST_F(SearchManagerTest, APathDeliveredTwiceOrByTwoSourcesYieldsOneResultFromTheFirst) {
    auto first = std::make_shared<ListSource>(SearchResultSupplier::fileSystem,
                                              std::vector<std::string>{under("budget.txt"), under("budget.txt")});
    auto second = std::make_shared<ListSource>(SearchResultSupplier::spotlight,
                                               std::vector<std::string>{under("budget.txt"), under("budget-2.txt")});
    second->after = first;
    auto manager = start("budget", {first, second});
    ASSERT_TRUE(runUntilFinished());
    EXPECT_EQ(delegate->foundSet(), (std::multiset<std::string>{under("budget.txt"), under("budget-2.txt")}));
    EXPECT_EQ(delegate->suppliers[under("budget.txt")], SearchResultSupplier::fileSystem);
}

TEST_F(SearchManagerTest, AFolderNamedAfterAWordAppearsOnceOnlyIfItPassesItself) {
    std::vector<std::string> paths{under("Budget/a.txt"), under("Budget/b.txt"), under("Budget/sub/budget-c.txt")};
    auto source = std::make_shared<ListSource>(SearchResultSupplier::fileSystem, paths);
    auto manager = start("budget", {source});
    ASSERT_TRUE(runUntilFinished());
    EXPECT_EQ(delegate->foundSet(), (std::multiset<std::string>{under("Budget"), under("Budget/sub/budget-c.txt")}));

    delegate = std::make_shared<RecordingDelegate>(loop);
    auto filesOnly = start("budget : is file", {std::make_shared<ListSource>(SearchResultSupplier::fileSystem, paths)});
    ASSERT_TRUE(runUntilFinished());
    EXPECT_EQ(delegate->foundSet(), std::multiset<std::string>{under("Budget/sub/budget-c.txt")});
}

// The ignore list judges what every source supplies, the cache sources on the
// fast queue among them; each source's end is told with its supplier.
TEST_F(SearchManagerTest, TheIgnoreTestDropsResultsOfEverySourceAndEachSourcesEndIsTimed) {
    auto walk = std::make_shared<ListSource>(SearchResultSupplier::fileSystem,
                                             std::vector<std::string>{under("budget.txt"), under("skip/budget-1.txt")});
    auto cache = std::make_shared<ListSource>(
        SearchResultSupplier::CompactContentIndex,
        std::vector<std::string>{under("skip/budget-2.txt"), under("kept/budget-3.txt"), under("budget.bak")});
    SearchManager::Environment environment;
    environment.fileSystemSearchDataSources = {walk};
    environment.commandBasedDataSources = {cache};
    environment.mainLoop = &loop;
    environment.isIgnored = [](const std::string& path) {
        return path.find("/skip/") != std::string::npos || path.ends_with(".bak");
    };
    Locked<std::vector<SearchResultSupplier>> ended;
    environment.sourceDidFinish = [&](SearchResultSupplier supplier, Clock::Duration took) {
        EXPECT_GE(took.count(), 0);
        ended.access([&](auto& suppliers) { suppliers.push_back(supplier); });
    };
    auto manager = SearchManager::create(makeQuery("budget"), false, delegate, std::move(environment));
    manager->search();
    ASSERT_TRUE(runUntilFinished());
    EXPECT_EQ(delegate->foundSet(), (std::multiset<std::string>{under("budget.txt"), under("kept/budget-3.txt")}));
    auto suppliers = ended.value();
    std::sort(suppliers.begin(), suppliers.end());
    EXPECT_EQ(suppliers, (std::vector<SearchResultSupplier>{SearchResultSupplier::fileSystem,
                                                            SearchResultSupplier::CompactContentIndex}));
}

TEST_F(SearchManagerTest, HiddenAndSystemItemsPassOnlyWhenAskedFor) {
    std::vector<std::string> paths{under(".cache/budget.txt"), under("budget.txt"), "/usr/share/budget.txt"};
    auto hiddenOff = start("budget", {std::make_shared<ListSource>(SearchResultSupplier::fileSystem, paths)});
    ASSERT_TRUE(runUntilFinished());
    EXPECT_EQ(delegate->foundSet(), std::multiset<std::string>{under("budget.txt")});

    delegate = std::make_shared<RecordingDelegate>(loop);
    auto byCommand =
        start("budget : show hidden items", {std::make_shared<ListSource>(SearchResultSupplier::fileSystem, paths)});
    ASSERT_TRUE(runUntilFinished());
    // "/usr/share" lies outside the location, hidden or not.
    EXPECT_EQ(delegate->foundSet(), (std::multiset<std::string>{under(".cache/budget.txt"), under("budget.txt")}));
    EXPECT_TRUE(byCommand->showHiddenItems());
}

TEST_F(SearchManagerTest, AQueryWithOnlyFilterCommandsStartsNoFileSystemSource) {
    auto walk =
        std::make_shared<ListSource>(SearchResultSupplier::fileSystem, std::vector<std::string>{under("x.txt")});
    auto commandSource = std::make_shared<ListSource>(SearchResultSupplier::showAppsCmd, std::vector<std::string>{});
    auto manager = start(": case sensitive", {walk}, {commandSource});
    ASSERT_TRUE(runUntilFinished());
    EXPECT_EQ(walk->searches, 0);
    EXPECT_EQ(commandSource->searches, 1);
    EXPECT_TRUE(delegate->found.empty());
}

TEST_F(SearchManagerTest, ConcurrentSourcesOnRealThreadsDeliverEveryPathExactlyOnce) {
    constexpr int kPaths = 4000;
    SearchManager::DataSources sources;
    for (int s = 0; s < 4; ++s) {
        std::vector<std::string> paths;
        // Every source overlaps with the others: each covers three quarters of the paths.
        for (int i = 0; i < kPaths; ++i) {
            if (i % 4 != s)
                paths.push_back(under("dir" + std::to_string(i % 50) + "/item-" + std::to_string(i) + ".txt"));
        }
        auto supplier = s % 2 == 0 ? SearchResultSupplier::fileSystem : SearchResultSupplier::CompactContentIndex;
        sources.push_back(std::make_shared<ListSource>(supplier, std::move(paths)));
    }
    auto manager = start("item", sources);
    ASSERT_TRUE(runUntilFinished());

    auto found = delegate->foundSet();
    EXPECT_EQ(found.size(), static_cast<std::size_t>(kPaths));
    EXPECT_EQ(std::set<std::string>(found.begin(), found.end()).size(), static_cast<std::size_t>(kPaths));
    EXPECT_EQ(manager->progress().numberOfItemsInQueue, 0);
    EXPECT_EQ(manager->progress().numberOfDirectoriesSearched, 4);
    EXPECT_EQ(delegate->offLoopCalls, 0);
    EXPECT_EQ(delegate->finishes, 1);
}

TEST_F(SearchManagerTest, StopEndsAnEndlessSourceAndTheDelegateStillHearsTheEnd) {
    auto endless = std::make_shared<ListSource>(SearchResultSupplier::fileSystem,
                                                std::vector<std::string>{under("budget-1.txt"), under("budget-2.txt")});
    endless->untilStopped = true;
    auto manager = start("budget", {endless});
    ASSERT_TRUE(loop.runUntil([&] { return delegate->found.size() == 2; }, 60s));
    EXPECT_TRUE(manager->searchInProgress());
    manager->stop();
    manager->stop();
    EXPECT_FALSE(manager->searchInProgress());
    ASSERT_TRUE(runUntilFinished());
    EXPECT_TRUE(manager->shouldStop());
    EXPECT_EQ(endless->stopRequests, 1);
    EXPECT_EQ(delegate->finishes, 1);
}

std::vector<std::string> manyItems(int count) {
    std::vector<std::string> paths;
    for (int i = 0; i < count; ++i) paths.push_back(under("many/item-" + std::to_string(i) + ".txt"));
    return paths;
}

void waitForResults(const SearchManager& manager, int count) {
    const auto deadline = std::chrono::steady_clock::now() + 60s;
    while (manager.progress().numberOfResultsReturned < count && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(1ms);
    }
}

// More results than may be on their way at once: the source waits while the
// loop takes none of them, and supplies the rest once it does.
TEST_F(SearchManagerTest, ASourceWaitsWhileTooManyResultsAreOnTheirWay) {
    constexpr int kPaths = 70000;
    auto source = std::make_shared<ListSource>(SearchResultSupplier::fileSystem, manyItems(kPaths));
    auto manager = start("item", {source});
    waitForResults(*manager, 60000);
    std::this_thread::sleep_for(100ms);
    EXPECT_FALSE(source->finished);
    EXPECT_LT(manager->progress().numberOfResultsReturned, kPaths);
    ASSERT_TRUE(runUntilFinished());
    EXPECT_EQ(delegate->found.size(), static_cast<std::size_t>(kPaths));
}

TEST_F(SearchManagerTest, StopReleasesASourceThatWaitsForRoom) {
    auto source = std::make_shared<ListSource>(SearchResultSupplier::fileSystem, manyItems(70000));
    auto manager = start("item", {source});
    waitForResults(*manager, 60000);
    manager->stop();
    ASSERT_TRUE(loop.runUntil([&] { return source->finished.load(); }, 60s));
}

TEST_F(SearchManagerTest, UserCancelGivesTwoFinishCalls) {
    auto endless =
        std::make_shared<ListSource>(SearchResultSupplier::fileSystem, std::vector<std::string>{under("budget.txt")});
    endless->untilStopped = true;
    auto manager = start("budget", {endless});
    manager->userCancel();
    ASSERT_TRUE(runUntilFinished(2));
    EXPECT_EQ(delegate->finishes, 2);
}

TEST_F(SearchManagerTest, AGoneDelegateHearsNothingAndTheSearchRunsOut) {
    auto source =
        std::make_shared<ListSource>(SearchResultSupplier::fileSystem, std::vector<std::string>{under("budget.txt")});
    auto manager = start("budget", {source});
    delegate.reset();
    ASSERT_TRUE(loop.runUntil([&] { return source->finished && !manager->searchInProgress(); }, 60s));
}

}  // namespace
}  // namespace quester
