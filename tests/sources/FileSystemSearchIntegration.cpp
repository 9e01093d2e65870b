#include <gtest/gtest.h>
#include <sys/stat.h>

#include <atomic>
#include <filesystem>
#include <set>
#include <thread>

#include "commands/StandardCommandFactories.h"
#include "platform/FSUtilities.h"
#include "platform/PlatformProfile.h"
#include "query/CollectingSearchDataSourceDelegate.h"
#include "query/CommandRecogniser.h"
#include "query/QueryContainer.h"
#include "query/SearchLocation.h"
#include "query/SearchManager.h"
#include "sources/FileSystemSearch.h"
#include "support/ActivityController.h"
#include "support/MainLoop.h"
#include "support/NotificationCenter.h"
#include "support/PathText.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

std::string lowercase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

bool has(const std::string& text, const char* word) {
    return lowercase(text).find(word) != std::string::npos;
}

// A tree with the cases a walk must get right: words in file and folder names,
// hidden folders, a package, symbolic links, a pipe, the folders a walk skips.
class FixtureTree {
public:
    FixtureTree() {
        for (const char* file : {"docs/budget-2024.xlsx",
                                 "docs/Budget notes.txt",
                                 "docs/report.pdf",
                                 "docs/old/budget-draft.txt",
                                 "docs/old/invoice-7.pdf",
                                 "docs/old/draft-report.txt",
                                 "budget/summary.txt",
                                 "budget/sub/invoice.txt",
                                 "budget/sub/deeper/budget-final.txt",
                                 ".hidden/budget-secret.txt",
                                 ".hidden/invoice.txt",
                                 ".hidden/inner/report.txt",
                                 "projects/Invoice Budget.ods",
                                 "projects/draft/report-final.doc",
                                 "projects/draft/budget.txt",
                                 "photos/trip.jpg",
                                 "Ledger.app/Contents/budget.plist",
                                 "Ledger.app/budget-readme.txt",
                                 "Volumes/budget-on-volume.txt",
                                 "Backups.backupdb/budget-old.txt",
                                 "Budget Plans/notes.txt"}) {
            dir.write(file, "x");
        }
        dir.mkdir("Reports");
        dir.mkdir("budget/empty budget folder");
        fs::create_directory_symlink(dir.path() / "docs", dir.path() / "budget-docs-link");
        fs::create_symlink(dir.path() / "docs/report.pdf", dir.path() / "budget-link.pdf");
        ::mkfifo((dir.path() / "budget-pipe").c_str(), 0600);
    }

    // What the search must find: every real file and folder below the root
    // (links and special files are no results) whose name passes `test` and,
    // unless the query negates a word, whose full path does too (a walk offers
    // an item on its path; the final test is on the name). Hidden off leaves
    // out dot components, what lies inside a package, and the folders no walk
    // enters.
    std::set<std::string> reference(const std::function<bool(const std::string&)>& test, bool hidden,
                                    int maxRelativeDepth = 0, bool negated = false) const {
        std::set<std::string> expected;
        for (auto it = fs::recursive_directory_iterator(dir.path()); it != fs::recursive_directory_iterator(); ++it) {
            const auto& entry = *it;
            if (entry.is_symlink() || (!entry.is_regular_file() && !entry.is_directory())) continue;
            fs::path relative = fs::relative(entry.path(), dir.path());
            if (maxRelativeDepth > 0 && std::distance(relative.begin(), relative.end()) > maxRelativeDepth) continue;
            if (isBelowSkippedFolder(relative)) continue;
            if (!hidden && isHiddenOrInPackage(relative)) continue;
            std::string full = entry.path().string();
            if (test(entry.path().filename().string()) && (negated || test(full))) expected.insert(full);
        }
        return expected;
    }

    std::string root() const { return dir.str(); }

private:
    // Below a folder the profile keeps walks out of (the tree's root is the walked disk).
    static bool isBelowSkippedFolder(const fs::path& relative) {
        const auto profile = PlatformProfile::current();
        const std::string path = "/" + relative.string();
        for (const auto& folder : profile->walkSkippedFolders) {
            if (isStrictlyBelow(path, folder)) return true;
        }
        for (const auto& part : profile->walkSkippedPathParts) {
            if (path.find(part + "/") != std::string::npos) return true;
        }
        return false;
    }

    static bool isHiddenOrInPackage(const fs::path& relative) {
        std::vector<std::string> parts;
        for (const auto& part : relative) parts.push_back(part.string());
        for (std::size_t i = 0; i < parts.size(); ++i) {
            if (parts[i].front() == '.') return true;
            if (i + 1 < parts.size() && parts[i].ends_with(".app")) return true;
        }
        return false;
    }

    testing::TempDir dir;
};

class CollectingManagerDelegate : public SearchManagerDelegate {
public:
    void searchManagerIsBeginingSearches(const QueryContainer&) override {}
    void searchManagerFoundItems(const std::vector<SearchResult>& items, const QueryContainer&) override {
        for (const auto& item : items) found.push_back(item.url.path());
    }
    void searchManagerHasFinishedAllSearches(const QueryContainer&) override { finished = true; }
    void searchManagerProgress(const SearchManagerProgress&) override {}
    void searchingInsideFile(const std::string&, bool, float) override {}
    void searchInvalidQuery() override {}

    std::vector<std::string> found;
    bool finished = false;
};

class FileSystemSearchTest : public ::testing::Test {
protected:
    QueryContainer queryFor(const std::string& text, const std::string& folder) const {
        static const CommandRecogniser parser(standardCommandFactories());
        return QueryContainer(text, parser, SearchLocation::fromURLs({Url(folder, true)}));
    }

    std::shared_ptr<FileSystemSearch> makeSearch() { return std::make_shared<FileSystemSearch>(&activities); }

    // Runs the query through a manager whose file system sources are `walks`
    // searches; answers every path delivered, repeats included.
    std::vector<std::string> search(const std::string& text, bool hidden, int walks = 1, std::string folder = {}) {
        if (folder.empty()) folder = tree.root();
        SearchManager::Environment environment;
        for (int i = 0; i < walks; ++i) environment.fileSystemSearchDataSources.push_back(makeSearch());
        environment.mainLoop = &loop;
        auto delegate = std::make_shared<CollectingManagerDelegate>();
        auto manager = SearchManager::create(queryFor(text, folder), hidden, delegate, std::move(environment));
        manager->search();
        EXPECT_TRUE(loop.runUntil([&] { return delegate->finished; }, 60s)) << text;
        return delegate->found;
    }

    void expectSearchFinds(const std::string& text, bool hidden, const std::function<bool(const std::string&)>& test,
                           int maxRelativeDepth = 0, int walks = 1) {
        auto found = search(text, hidden, walks);
        std::multiset<std::string> delivered(found.begin(), found.end());
        const bool negated = text.find("NOT") != std::string::npos || text.find(" -") != std::string::npos;
        auto expected = tree.reference(test, hidden, maxRelativeDepth, negated);
        EXPECT_EQ(delivered, std::multiset<std::string>(expected.begin(), expected.end()))
            << "query: " << text << (hidden ? " (hidden on)" : "");
        EXPECT_FALSE(expected.empty()) << "a fixture that finds nothing tests nothing: " << text;
    }

    MainLoop loop;
    NotificationCenter center{loop};
    ActivityController activities{loop, center};
    FixtureTree tree;
};

TEST_F(FileSystemSearchTest, WordsOrNotMinusAndParenthesesMatchNamesWithHiddenItemsOffAndOn) {
    using Test = std::function<bool(const std::string&)>;
    const std::vector<std::pair<const char*, Test>> cases{
        {"budget", [](const std::string& t) { return has(t, "budget"); }},
        {"report", [](const std::string& t) { return has(t, "report"); }},
        {"budget draft", [](const std::string& t) { return has(t, "budget") && has(t, "draft"); }},
        {"budget or invoice", [](const std::string& t) { return has(t, "budget") || has(t, "invoice"); }},
        {"budget NOT draft", [](const std::string& t) { return has(t, "budget") && !has(t, "draft"); }},
        {"budget -draft", [](const std::string& t) { return has(t, "budget") && !has(t, "draft"); }},
        {"(budget or invoice) NOT old",
         [](const std::string& t) { return (has(t, "budget") || has(t, "invoice")) && !has(t, "old"); }},
    };
    for (bool hidden : {false, true}) {
        for (const auto& [text, test] : cases) expectSearchFinds(text, hidden, test);
    }
}

TEST_F(FileSystemSearchTest, CommandsNarrowTheWalk) {
    expectSearchFinds("budget : is folder", false, [&](const std::string& t) {
        return has(t, "budget") && (t.find('/') == std::string::npos || fs::is_directory(t));
    });
    // The depth counts from the root of the disk, so the limit is set relative to the fixture.
    const std::string root = tree.root();
    int rootDepth = static_cast<int>(std::count(root.begin(), root.end(), '/'));
    expectSearchFinds(
        "budget : max depth " + std::to_string(rootDepth + 1), false,
        [](const std::string& t) { return has(t, "budget"); }, 2);
}

TEST_F(FileSystemSearchTest, TwoWalksOfTheSameTreeDeliverEachPathOnce) {
    expectSearchFinds(
        "budget or invoice", false, [](const std::string& t) { return has(t, "budget") || has(t, "invoice"); }, 0, 2);
}

TEST_F(FileSystemSearchTest, ASearchedFolderNamedAfterAWordIsItselfAResult) {
    // Nothing inside matches: the folder comes only as the enclosing folder of what lies in it.
    const std::string folder = tree.root() + "/Budget Plans";
    auto found = search("plans", false, 1, folder);
    EXPECT_EQ(found, std::vector<std::string>{folder});
}

TEST_F(FileSystemSearchTest, AQueryWithoutWordsOrCommandsWalksButSuppliesNothing) {
    auto walk = makeSearch();
    CollectingSearchDataSourceDelegate collector(false);
    walk->search(queryFor("", tree.root()), collector);
    EXPECT_TRUE(collector.results().empty());
    EXPECT_GT(walk->directoriesSearched(), 5);
}

TEST_F(FileSystemSearchTest, SourceResultsCarryTheItemsAttributes) {
    auto walk = makeSearch();
    CollectingSearchDataSourceDelegate collector(false);
    walk->search(queryFor("trip", tree.root()), collector);
    auto results = collector.results();
    ASSERT_EQ(results.size(), 1u);
    const auto& trip = results.front();
    struct stat status;
    ASSERT_EQ(::stat(trip.url.path().c_str(), &status), 0);
    EXPECT_EQ(trip.size, 1u);
    EXPECT_EQ(trip.modDate, status.st_mtim.tv_sec);
    EXPECT_EQ(trip.diskKey, FSUtilities::shared().keyForDisk(Url(tree.root(), true)));
}

TEST_F(FileSystemSearchTest, TheActivityItemNamesTheSearchCancelsTheWalkAndLeavesWithIt) {
    testing::TempDir big;
    for (int d = 0; d < 300; ++d) big.write("level" + std::to_string(d % 5) + "/dir" + std::to_string(d) + "/entry");
    auto walk = makeSearch();
    CollectingSearchDataSourceDelegate collector(false);
    std::atomic<bool> returned{false};
    std::thread searching([&] {
        walk->search(queryFor("entry", big.str()), collector);
        returned = true;
    });
    ASSERT_TRUE(loop.runUntil([&] { return !activities.activityItems().empty() || returned; }, 60s));
    if (!returned) {
        auto item = activities.activityItems().front();
        EXPECT_EQ(item->displayTitle(), "Searching File System for \u201Centry\u201D");
        loop.runPending();
        item->cancel();
    }
    ASSERT_TRUE(loop.runUntil([&] { return returned.load(); }, 60s));
    searching.join();
    EXPECT_TRUE(loop.runUntil([&] { return activities.activityItems().empty(); }, 60s));
}

TEST_F(FileSystemSearchTest, StoppingMidWalkReturnsPromptly) {
    testing::TempDir big;
    for (int d = 0; d < 400; ++d) {
        for (int f = 0; f < 5; ++f)
            big.write("level" + std::to_string(d % 7) + "/dir" + std::to_string(d) + "/file" + std::to_string(f));
    }
    SearchManager::Environment environment;
    environment.fileSystemSearchDataSources.push_back(makeSearch());
    environment.mainLoop = &loop;
    auto delegate = std::make_shared<CollectingManagerDelegate>();
    auto manager = SearchManager::create(queryFor("file", big.str()), false, delegate, std::move(environment));
    manager->search();
    ASSERT_TRUE(loop.runUntil([&] { return !delegate->found.empty(); }, 60s));
    manager->stop();
    ASSERT_TRUE(loop.runUntil([&] { return delegate->finished; }, 60s));
    EXPECT_LE(delegate->found.size(), 2000u);
}

}  // namespace
}  // namespace quester
