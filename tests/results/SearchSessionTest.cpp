#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>

#include "ManualTimerScheduler.h"
#include "query/CommandRecogniser.h"
#include "query/SearchDataSource.h"
#include "query/SearchDataSourceDelegate.h"
#include "results/QuesterURL.h"
#include "results/SearchSession.h"
#include "results/UINodeModel.h"
#include "stores/Preferences.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using namespace std::chrono_literals;

// A source that hands over what the test gives it and runs until stopped or released.
class HeldSource final : public SearchDataSource {
public:
    std::string debugDescription() const override { return "HeldSource"; }
    SearchResultSupplier type() const override { return SearchResultSupplier::fileSystem; }

    void search(const QueryContainer&, SearchDataSourceDelegate& handler) override {
        std::unique_lock lock(mutex);
        while (!stopped) {
            if (!pending.empty()) {
                std::vector<SearchResult> batch = std::move(pending);
                pending.clear();
                lock.unlock();
                handler.supplySearchResults(std::move(batch), *this);
                lock.lock();
                continue;
            }
            if (released) return;
            changed.wait(lock);
        }
    }
    void searchShouldStop() override {
        update([&] { stopped = true; });
    }
    void supply(SearchResult result) {
        update([&] { pending.push_back(std::move(result)); });
    }
    void release() {
        update([&] { released = true; });
    }

private:
    void update(const std::function<void()>& change) {
        std::lock_guard lock(mutex);
        change();
        changed.notify_all();
    }
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<SearchResult> pending;
    bool stopped = false;
    bool released = false;
};

class RecordingObserver : public SearchSessionObserver {
public:
    void searchBegan(const std::string& title) override { titles.push_back(title); }
    void searchEnded(bool completed) override { ended.push_back(completed); }
    void showStatus(const std::string& text) override { status = text; }
    std::vector<std::string> titles;
    std::vector<bool> ended;
    std::string status;
};

class SessionTest : public ::testing::Test {
protected:
    SessionTest() {
        EXPECT_TRUE(preferences.setValue("startSearchesAutomatically", true).ok());
        session->setObserver(observer);
    }
    // Managers, and the results model, outlive the session while their
    // threads wind down, and post to the loop: they must be gone before the
    // loop is.
    ~SessionTest() override {
        for (const auto& source : sources) source->release();
        session.reset();
        EXPECT_TRUE(loop.runUntil(
            [] { return SearchManager::allInstances().empty() && UINodeModel::allInstances().empty(); }, 10s));
        loop.runPending();
    }

    SearchSession::Environment environment() {
        SearchSession::Environment made;
        made.parser = &parser;
        made.location = [this](const std::optional<std::string>& name) -> std::optional<SearchLocation> {
            askedLocations.push_back(name.value_or(""));
            if (diskMissing) return std::nullopt;
            return SearchLocation::fromURLs({Url(dir.str(), true)});
        };
        made.managerEnvironment = [this] {
            sources.push_back(std::make_shared<HeldSource>());
            SearchManager::Environment managerEnvironment;
            managerEnvironment.fileSystemSearchDataSources = {sources.back()};
            managerEnvironment.mainLoop = &loop;
            return managerEnvironment;
        };
        made.addQueryToHistory = [this](const std::string& text) { history.push_back(text); };
        made.mainLoop = &loop;
        made.scheduler = &timers;
        made.preferences = &preferences;
        return made;
    }

    SearchResult resultNamed(const std::string& name) {
        SearchResult result;
        result.url = Url(dir.str() + "/" + name);
        result.searchResultSuppliedBy = SearchResultSupplier::fileSystem;
        return result;
    }
    void search(const std::string& text) {
        session->controlTextDidChange(text);
        session->doSearch();
    }
    // Runs the loop until the model has shown all that was handed to it.
    void settleModel() {
        bool settled = false;
        session->uiNodeModel()->afterPendingWork([&] { settled = true; });
        ASSERT_TRUE(loop.runUntil([&] { return settled; }, 10s));
    }
    std::size_t shownRows() { return session->uiNodeModel()->displayItems().size(); }

    testing::TempDir dir;
    MainLoop loop;
    testing::ManualTimerScheduler timers;
    Preferences preferences{""};
    CommandRecogniser parser{CommandFactories{}};
    bool diskMissing = false;
    std::vector<std::string> askedLocations;
    std::vector<std::string> history;
    std::vector<std::shared_ptr<HeldSource>> sources;
    std::shared_ptr<SearchSession> session = SearchSession::create(environment());
    std::shared_ptr<RecordingObserver> observer = std::make_shared<RecordingObserver>();
};

TEST_F(SessionTest, theSearchStartsTheTypingDelayAfterTheLastKey) {
    session->controlTextDidChange("bud");
    timers.advance(500ms);
    session->controlTextDidChange("budg");
    timers.advance(650ms);
    EXPECT_FALSE(session->currentQuery());
    timers.advance(10ms);
    ASSERT_TRUE(session->currentQuery());
    EXPECT_EQ(session->currentQuery()->baseString(), "budg");
    ASSERT_TRUE(session->currentSearchManager());
    EXPECT_EQ(observer->titles, std::vector<std::string>{"Find “budg”"});

    // A pasted block searches its first line.
    session->controlTextDidChange("first line\nsecond line", true);
    EXPECT_EQ(session->fieldText(), "first line");
}

TEST_F(SessionTest, withoutAutomaticStartsOnlyAnExplicitRequestSearches) {
    ASSERT_TRUE(preferences.setValue("startSearchesAutomatically", false).ok());
    session->controlTextDidChange("bud");
    timers.advance(2s);
    EXPECT_FALSE(session->currentQuery());
    session->controlTextDidChange("bud", true);
    timers.advance(660ms);
    EXPECT_TRUE(session->currentQuery());
}

TEST_F(SessionTest, foundRowsReachTheModelAtMostEveryHalfSecond) {
    search("report");
    ASSERT_TRUE(session->isFlushTimerRunning());
    session->searchManagerFoundItems({resultNamed("report1.txt")}, *session->currentQuery());
    timers.advance(500ms);
    EXPECT_EQ(session->finalResults().size(), 1u);
    timers.advance(250ms);
    EXPECT_TRUE(session->finalResults().empty());
    settleModel();
    EXPECT_EQ(shownRows(), 1u);

    // Half a second after that flush, not sooner, found items flush themselves.
    timers.advance(500ms);
    session->searchManagerFoundItems({resultNamed("report2.txt")}, *session->currentQuery());
    EXPECT_EQ(session->finalResults().size(), 1u);
    timers.advance(1ms);
    session->searchManagerFoundItems({resultNamed("report3.txt")}, *session->currentQuery());
    EXPECT_TRUE(session->finalResults().empty());
    settleModel();
    EXPECT_EQ(shownRows(), 3u);
}

TEST_F(SessionTest, resultsOfAStoppedSearchAreDropped) {
    search("report");
    session->searchManagerFoundItems({resultNamed("report1.txt")}, *session->currentQuery());
    session->controlTextDidChange("reports");
    EXPECT_FALSE(session->isFlushTimerRunning());
    session->flushResults();
    EXPECT_TRUE(session->finalResults().empty());
    settleModel();
    EXPECT_EQ(shownRows(), 0u);
}

TEST_F(SessionTest, theEndOfASearchFlushesAndReportsCompletion) {
    search("report");
    sources.back()->supply(resultNamed("report.txt"));
    sources.back()->supply(resultNamed("other.txt"));
    sources.back()->release();
    ASSERT_TRUE(loop.runUntil([&] { return !observer->ended.empty(); }, 10s));
    EXPECT_EQ(observer->ended, std::vector<bool>{true});
    EXPECT_FALSE(session->isFlushTimerRunning());
    settleModel();
    ASSERT_EQ(shownRows(), 1u);
    EXPECT_EQ(session->uiNodeModel()->displayItems()[0]->displayName(), "report.txt");
}

TEST_F(SessionTest, theLateEndOfAnEarlierSearchIsNoCompletion) {
    search("report");
    const QueryContainer earlier = *session->currentQuery();
    search("budget");
    session->searchManagerHasFinishedAllSearches(earlier);
    EXPECT_EQ(observer->ended, std::vector<bool>{false});
}

TEST_F(SessionTest, aPathOrBlanksAloneStopTheOldSearchAndStartNothing) {
    for (const char* text : {"  /tmp", "   "}) {
        search("report");
        const auto running = session->currentSearchManager();
        search(text);
        EXPECT_TRUE(running->shouldStop()) << text;
        EXPECT_FALSE(session->currentSearchManager()) << text;
    }
}

TEST_F(SessionTest, aMissingDiskIsWaitedForEveryFiveSeconds) {
    diskMissing = true;
    search("report");
    EXPECT_EQ(observer->status, SearchSession::waitingForDiskText);
    EXPECT_FALSE(session->currentQuery());
    timers.advance(5s);
    EXPECT_EQ(askedLocations.size(), 2u);
    diskMissing = false;
    timers.advance(4999ms);
    EXPECT_FALSE(session->currentQuery());
    timers.advance(1ms);
    EXPECT_TRUE(session->currentSearchManager());
}

TEST_F(SessionTest, onlyTheTextThatRestedFiveSecondsEntersTheHistory) {
    search("alpha");
    timers.advance(3s);
    search("beta");
    timers.advance(4999ms);
    EXPECT_TRUE(history.empty());
    timers.advance(1ms);
    EXPECT_EQ(history, std::vector<std::string>{"beta"});
}

TEST_F(SessionTest, anInvalidQueryIsCountedAndTheSearchGoesOn) {
    search("report");
    session->searchInvalidQuery();
    EXPECT_EQ(session->invalidQueryCount(), 1);
    EXPECT_EQ(observer->status, SearchSession::invalidQueryText);
    EXPECT_FALSE(session->currentSearchManager()->shouldStop());
}

TEST_F(SessionTest, aQuesterURLRunsItsSearchAtOnceInItsLocation) {
    EXPECT_FALSE(session->openURL("https://example.com/?q=x"));
    ASSERT_TRUE(session->openURL("quester:?q=tax%20report&location=Home"));
    ASSERT_TRUE(session->currentQuery());
    EXPECT_EQ(session->currentQuery()->baseString(), "tax report");
    EXPECT_EQ(askedLocations.back(), "Home");
    EXPECT_TRUE(session->currentSearchManager());
}

TEST(QuesterURLTest, readsTheQueryItemsAndRefusesABadPercentEscape) {
    const auto url = QuesterURL::parse("QUESTER://search?location=My%20Disk&q=a%2Bb+c&x=1#frag");
    ASSERT_TRUE(url);
    EXPECT_EQ(url->q, "a+b c");
    EXPECT_EQ(url->location, "My Disk");
    EXPECT_FALSE(QuesterURL::parse("quester:")->q);
    EXPECT_TRUE(QuesterURL::parse("file:///x?q=1").isNotFound());
    for (const char* bad : {"quester:?q=100%", "quester:?q=%zz", "quester:?q=a%4"}) {
        const auto refused = QuesterURL::parse(bad);
        ASSERT_FALSE(refused) << bad;
        EXPECT_EQ(refused.error().code, ErrorCode::invalidArgument) << bad;
    }
}

}  // namespace
}  // namespace quester
