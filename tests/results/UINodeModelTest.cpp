#include <gtest/gtest.h>

#include <atomic>
#include <semaphore>
#include <thread>

#include "ManualTimerScheduler.h"
#include "platform/FaultInjectingFileSystem.h"
#include "results/UINodeModel.h"
#include "stores/Preferences.h"
#include "support/PathText.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using namespace std::chrono_literals;

class FakeView : public UINodeModelDelegate {
public:
    void displayChanged() override { ++displayChanges; }
    void reloadNode(const UINodePtr&) override { ++reloads; }
    int displayChanges = 0;
    int reloads = 0;
};

class FakeSelection : public UINodeSelectionDelegate {
public:
    UINode::NodeList relevantItems() override { return {}; }
    void refreshSelection() override {}
    void selectionSizeCalculated(std::int64_t itemCount, std::uint64_t totalBytes) override {
        reported.emplace_back(itemCount, totalBytes);
    }
    const QueryContainer* currentQuery() const override { return nullptr; }
    void setUIUpdateIndicator(bool running) override { indicatorRunning = running; }
    std::vector<std::pair<std::int64_t, std::uint64_t>> reported;
    bool indicatorRunning = false;
};

UINodePtr fileNode(const std::string& path, std::uint64_t size = 0, bool checkExists = false,
                   const Clock& clock = SystemClock::shared()) {
    SearchResult result;
    result.url = Url(path);
    result.size = size;
    result.checkToSeeIfItExists = checkExists;
    return UINode::create(result, {}, clock);
}

UINodePtr folderNode(const std::string& path) {
    SearchResult result;
    result.url = Url(path, true);
    result.isDirectory = true;
    return UINode::create(result);
}

std::vector<std::string> names(const UINode::NodeList& nodes) {
    std::vector<std::string> list;
    for (const auto& node : nodes) list.push_back(lastPathComponent(node->fileURL().path()));
    return list;
}

class ModelTest : public ::testing::Test {
protected:
    ModelTest() {
        model->addDelegate(view);
        model->setSelectionDelegate(selection);
        EXPECT_TRUE(preferences.setValue("sizeIsVisible", false).ok());
    }
    // A task's hold on the model ends on the loop, so the model goes while
    // the loop and the timers it uses are still here.
    ~ModelTest() override {
        const std::weak_ptr<UINodeModel> weak = model;
        model.reset();
        EXPECT_TRUE(eventually([&] { return weak.expired(); }));
    }

    UINodeModel::Environment environment() {
        UINodeModel::Environment made;
        made.mainLoop = &loop;
        made.scheduler = &timers;
        made.preferences = &preferences;
        made.anySearchInProgress = [this] { return searching.load(); };
        made.sizingPause = 5ms;
        return made;
    }

    // Runs the loop until the list has been replaced once more.
    void waitForDisplay() {
        const int before = view->displayChanges;
        ASSERT_TRUE(loop.runUntil([&] { return view->displayChanges > before; }, 10s));
    }
    bool eventually(const std::function<bool()>& condition) { return loop.runUntil(condition, 10s); }

    MainLoop loop;
    testing::ManualTimerScheduler timers;
    Preferences preferences{""};
    std::atomic<bool> searching{false};
    std::shared_ptr<UINodeModel> model = UINodeModel::create(environment());
    std::shared_ptr<FakeView> view = std::make_shared<FakeView>();
    std::shared_ptr<FakeSelection> selection = std::make_shared<FakeSelection>();
    testing::TempDir dir;
};

using Names = std::vector<std::string>;

TEST_F(ModelTest, batchesMergeIntoOneSortedListAndTheFirstRowForAURLStays) {
    const UINodePtr first = fileNode("/d/b.txt", 1);
    model->addMoreNodes({fileNode("/d/c.txt"), first});
    waitForDisplay();
    model->addMoreNodes({fileNode("/d/a.txt"), fileNode("/d/b.txt", 99)});
    waitForDisplay();
    EXPECT_EQ(names(model->displayItems()), (Names{"a.txt", "b.txt", "c.txt"}));
    EXPECT_EQ(model->displayItems()[1], first);

    // A batch of known URLs alone still replaces the list, with the same rows.
    const UINode::NodeList before = model->displayItems();
    model->addMoreNodes({fileNode("/d/b.txt")});
    waitForDisplay();
    EXPECT_EQ(model->displayItems(), before);
}

TEST_F(ModelTest, withinOneBatchTheLaterRowForAURLWins) {
    const UINodePtr later = fileNode("/d/a.txt", 2);
    model->addMoreNodes({fileNode("/d/a.txt", 1), later});
    waitForDisplay();
    ASSERT_EQ(model->displayItems().size(), 1u);
    EXPECT_EQ(model->displayItems()[0], later);

    // In the order found, the later row stands where the first one came, and
    // a row listed before the batch stays whatever the batch repeats.
    model->setCurrentColumn(Column::image);
    waitForDisplay();
    const UINodePtr laterB = fileNode("/d/b.txt", 2);
    model->addMoreNodes(
        {fileNode("/d/b.txt", 1), fileNode("/d/a.txt", 3), fileNode("/d/c.txt"), laterB, fileNode("/d/a.txt", 4)});
    waitForDisplay();
    EXPECT_EQ(names(model->displayItems()), (Names{"a.txt", "b.txt", "c.txt"}));
    EXPECT_EQ(model->displayItems()[0], later);
    EXPECT_EQ(model->displayItems()[1], laterB);
}

TEST_F(ModelTest, changingColumnOrDirectionResorts) {
    model->addMoreNodes({fileNode("/d/a.txt", 30), fileNode("/d/b.txt", 10), folderNode("/d/c")});
    waitForDisplay();
    model->setCurrentColumn(Column::size);
    waitForDisplay();
    // Size is not shown, so the folder is not sized and sorts by what is known.
    EXPECT_EQ(names(model->displayItems()), (Names{"c", "b.txt", "a.txt"}));
    EXPECT_FALSE(model->isFolderSizing());
    model->setCurrentColumnReversed(true);
    waitForDisplay();
    EXPECT_EQ(names(model->displayItems()), (Names{"a.txt", "b.txt", "c"}));
}

TEST_F(ModelTest, deferredSortingShowsNothingUntilItEndsAndThenTheWholeSortedSet) {
    model->addMoreNodes({fileNode("/d/m.txt")});
    waitForDisplay();
    model->setSortingDeferred(true);
    const UINodePtr first = fileNode("/d/c.txt", 1);
    model->addMoreNodes({first, fileNode("/d/a.txt")});
    model->addMoreNodes({fileNode("/d/c.txt", 2), fileNode("/d/b.txt")});
    bool settled = false;
    model->afterPendingWork([&] { settled = true; });
    ASSERT_TRUE(eventually([&] { return settled; }));
    EXPECT_EQ(names(model->displayItems()), (Names{"m.txt"}));

    const int changes = view->displayChanges;
    model->setSortingDeferred(false);
    waitForDisplay();
    EXPECT_EQ(view->displayChanges, changes + 1);
    EXPECT_EQ(names(model->displayItems()), (Names{"a.txt", "b.txt", "c.txt", "m.txt"}));
    EXPECT_EQ(model->displayItems()[2], first);
}

// A row replaced while sorting is deferred is placed by its new values, as a
// sort of the whole content would place it.
TEST_F(ModelTest, aRowChangedWhileSortingIsDeferredIsPlacedByItsNewValues) {
    model->setCurrentColumn(Column::size);
    waitForDisplay();
    model->setSortingDeferred(true);
    const UINodePtr small = fileNode("/d/b.txt", 1);
    model->addMoreNodes({small, fileNode("/d/a.txt", 5)});
    model->addMoreNodes({fileNode("/d/c.txt", 3)});
    model->substituteItems(small, fileNode("/d/b.txt", 9));
    model->addMoreNodes({fileNode("/d/d.txt", 2)});
    model->setSortingDeferred(false);
    waitForDisplay();
    EXPECT_EQ(names(model->displayItems()), (Names{"d.txt", "c.txt", "a.txt", "b.txt"}));
}

TEST_F(ModelTest, clearEmptiesAtOnceAndDropsSortsAndDeferredRowsOfTheClearedSearch) {
    model->addMoreNodes({fileNode("/d/a.txt")});
    waitForDisplay();
    model->addMoreNodes({fileNode("/d/b.txt")});
    model->clear();
    EXPECT_TRUE(model->displayItems().empty());
    model->addMoreNodes({fileNode("/d/z.txt")});
    waitForDisplay();
    loop.runPending();
    EXPECT_EQ(names(model->displayItems()), (Names{"z.txt"}));

    model->setSortingDeferred(true);
    model->addMoreNodes({fileNode("/d/old.txt")});
    model->clear();
    model->addMoreNodes({fileNode("/d/new.txt")});
    model->setSortingDeferred(false);
    waitForDisplay();
    EXPECT_EQ(names(model->displayItems()), (Names{"new.txt"}));
}

TEST_F(ModelTest, removeAndSubstituteWorkByIdOnRowsAndChildren) {
    SearchResult withHits;
    withHits.url = Url("/d/notes.txt");
    withHits.foundItems = std::vector<FoundItem>{{FoundItem::Category::summary, "one", "", "", 0, 0, {}},
                                                 {FoundItem::Category::summary, "two", "", "", 0, 0, {}}};
    const UINodePtr parent = UINode::create(withHits);
    const UINodePtr other = fileNode("/d/other.txt");
    model->addMoreNodes({parent, other});
    waitForDisplay();
    model->removeNodes({parent->dynamic().children[0], other});
    waitForDisplay();
    EXPECT_EQ(names(model->displayItems()), (Names{"notes.txt"}));
    ASSERT_EQ(parent->dynamic().children.size(), 1u);
    EXPECT_EQ(parent->dynamic().children[0]->displayName(), "two");

    const UINodePtr replacement = fileNode("/d/notes.txt", 5);
    model->substituteItems(parent, replacement);
    EXPECT_EQ(model->displayItems()[0], replacement);
    // A URL still listed keeps its row; a removed one is listed again.
    const UINodePtr again = fileNode("/d/other.txt", 2);
    model->addMoreNodes({fileNode("/d/notes.txt", 7), again});
    waitForDisplay();
    EXPECT_EQ(model->displayItems(), (UINode::NodeList{replacement, again}));
}

TEST_F(ModelTest, removeOldestItemsOverKeepsTheNewestRows) {
    ManualClock clock;
    UINode::NodeList rows;
    for (const char* name : {"old.txt", "mid.txt", "new.txt"}) {
        rows.push_back(fileNode(std::string("/d/") + name, 0, false, clock));
        clock.advance(1s);
    }
    model->addMoreNodes(rows);
    waitForDisplay();
    const int changes = view->displayChanges;
    model->removeOldestItemsOver(3);
    model->resortResults();
    waitForDisplay();
    EXPECT_EQ(view->displayChanges, changes + 1);
    model->removeOldestItemsOver(2);
    waitForDisplay();
    EXPECT_EQ(names(model->displayItems()), (Names{"mid.txt", "new.txt"}));
}

TEST_F(ModelTest, rowsThatScrollAwayLeaveTheCheckQueue) {
    const UINode::NodeList rows{fileNode("/d/a"), fileNode("/d/b"), fileNode("/d/c"), fileNode("/d/d")};
    model->nodesBecameVisible({rows[0], rows[1], rows[2]}, VisualState::list);
    EXPECT_EQ(model->numberOfNodesAwaitingCheck(), 3u);
    model->nodesBecameVisible({rows[2], rows[3]}, VisualState::list);
    EXPECT_EQ(model->numberOfNodesAwaitingCheck(), 2u);
}

TEST_F(ModelTest, theCheckTimerRunsVisibleChecksAndRemovesRowsThatAreGone) {
    const std::string present = dir.write("present.txt", "x").string();
    model->addMoreNodes({fileNode(present, 1, true), fileNode(dir.str() + "/gone.txt", 1, true)});
    waitForDisplay();
    model->createCheckNodesTimer();
    model->nodesBecameVisible(model->displayItems(), VisualState::list);
    loop.runPending();
    EXPECT_EQ(model->numberOfNodesAwaitingCheck(), 2u);
    timers.advance(199ms);
    EXPECT_EQ(model->numberOfNodesAwaitingCheck(), 2u);
    timers.advance(1ms);
    ASSERT_TRUE(eventually([&] { return model->displayItems().size() == 1; }));
    EXPECT_EQ(model->displayItems()[0]->fileURL().path(), present);
    ASSERT_TRUE(eventually([&] { return model->displayItems()[0]->dynamic().hasLoadedAdditionalDetails; }));
    EXPECT_EQ(model->numberOfNodesAwaitingCheck(), 0u);
    timers.advance(200ms);
    EXPECT_FALSE(selection->indicatorRunning);
}

TEST_F(ModelTest, folderSizesWaitForSearchesAndThenFillIn) {
    ASSERT_TRUE(preferences.setValue("sizeIsVisible", true).ok());
    dir.write("f/a.bin", std::string(100, 'x'));
    dir.write("f/sub/b.bin", std::string(20, 'x'));
    const UINodePtr folder = folderNode(dir.str() + "/f");
    searching = true;
    model->addMoreNodes({folder});
    waitForDisplay();
    model->nodesBecameVisible({folder}, VisualState::list);
    ASSERT_TRUE(eventually([&] { return folder->dynamic().displayTotalSize == "Calculating…"; }));
    EXPECT_TRUE(model->isFolderSizing());
    loop.runUntil([] { return false; }, 50ms);
    EXPECT_FALSE(folder->dynamic().hasCalculatedFolderSize);
    searching = false;
    ASSERT_TRUE(eventually([&] { return folder->dynamic().hasCalculatedFolderSize; }));
    EXPECT_EQ(folder->dynamic().totalSize, 120u);
    EXPECT_EQ(folder->dynamic().displayTotalSize, "120 bytes");
    ASSERT_TRUE(eventually([&] { return !model->isFolderSizing(); }));
}

TEST_F(ModelTest, cancelledSizingPutsTheSizeTextBack) {
    ASSERT_TRUE(preferences.setValue("sizeIsVisible", true).ok());
    dir.write("f/a.bin", "xy");
    const UINodePtr folder = folderNode(dir.str() + "/f");
    searching = true;
    model->addMoreNodes({folder});
    waitForDisplay();
    model->nodesBecameVisible({folder}, VisualState::list);
    ASSERT_TRUE(eventually([&] { return model->isFolderSizing(); }));
    model->setCurrentColumn(Column::kind);
    ASSERT_TRUE(eventually([&] { return folder->dynamic().displayTotalSize == "--"; }));
    EXPECT_FALSE(folder->dynamic().hasCalculatedFolderSize);
    // The cancelled sizing must be over before the model goes: its operation
    // may hold the model's last reference and destroy it on its own queue.
    ASSERT_TRUE(eventually([&] { return !model->isFolderSizing(); }));
    searching = false;
}

// A sizing task that holds a model's last reference lets it go on the main
// loop: destroyed on the sizing queue, the model would cancel and wait for
// the very queue it runs on.
TEST_F(ModelTest, aModelWhoseLastHoldIsItsSizingTaskEndsOnTheMainLoop) {
    ASSERT_TRUE(preferences.setValue("sizeIsVisible", true).ok());
    dir.write("f/a.bin", "xy");
    const auto mainThread = std::this_thread::get_id();
    std::binary_semaphore sizingHoldsTheModel{0};
    std::binary_semaphore modelDropped{0};
    std::atomic<bool> firstAskFromTheQueue{true};
    UINodeModel::Environment held = environment();
    held.anySearchInProgress = [&] {
        if (std::this_thread::get_id() != mainThread && firstAskFromTheQueue.exchange(false)) {
            sizingHoldsTheModel.release();
            modelDropped.acquire();
        }
        return false;
    };
    auto sized = UINodeModel::create(held);
    sized->addDelegate(view);
    const UINodePtr folder = folderNode(dir.str() + "/f");
    sized->addMoreNodes({folder});
    waitForDisplay();
    sized->nodesBecameVisible({folder}, VisualState::list);
    ASSERT_TRUE(eventually([&] { return sizingHoldsTheModel.try_acquire(); }));

    const std::weak_ptr<UINodeModel> weak = sized;
    sized.reset();
    EXPECT_FALSE(weak.expired());
    modelDropped.release();
    EXPECT_TRUE(eventually([&] { return weak.expired(); }));
}

TEST_F(ModelTest, selectionSizeCountsFilesAndFoldersButNotHits) {
    model->updateSelectionSize({});
    ASSERT_EQ(selection->reported.size(), 1u);
    EXPECT_EQ(selection->reported[0], std::make_pair(std::int64_t{0}, std::uint64_t{0}));

    dir.write("f/a.bin", std::string(40, 'x'));
    SearchResult withHits;
    withHits.url = Url("/d/notes.txt");
    withHits.size = 2;
    withHits.foundItems = std::vector<FoundItem>{{FoundItem::Category::summary, "hit", "", "", 500, 0, {}}};
    const UINodePtr parent = UINode::create(withHits);
    const UINodePtr folder = folderNode(dir.str() + "/f");
    model->updateSelectionSize({fileNode("/d/x", 7), folder, parent, parent->dynamic().children[0]});
    ASSERT_TRUE(eventually([&] { return selection->reported.size() == 2; }));
    EXPECT_EQ(selection->reported[1], std::make_pair(std::int64_t{3}, std::uint64_t{49}));
    ASSERT_TRUE(eventually([&] { return folder->dynamic().hasCalculatedFolderSize; }));
}

TEST(FolderSizing, orderPutsVisibleFoldersFirst) {
    const UINode::NodeList folders{folderNode("/a"), folderNode("/b"), folderNode("/c")};
    EXPECT_EQ(UINodeModel::foldersToSize(folders, {folders[2]}, false), (UINode::NodeList{folders[2]}));
    EXPECT_EQ(UINodeModel::foldersToSize(folders, {folders[2], fileNode("/x")}, true),
              (UINode::NodeList{folders[2], folders[0], folders[1]}));
}

TEST(FolderSizing, aSubfolderThatCantBeReadCountsAsEmptyAndTheRestIsSummed) {
    testing::TempDir dir;
    dir.write("top/a.bin", std::string(100, 'a'));
    dir.write("top/locked/b.bin", std::string(40, 'b'));
    dir.write("top/open/c.bin", std::string(7, 'c'));
    dir.write("top/.hidden/d.bin", std::string(1000, 'd'));
    EXPECT_EQ(UINodeModel::calculateFolderSize(dir.str() + "/top"), 147u);
    EXPECT_EQ(UINodeModel::calculateFolderSize(dir.str() + "/nonexistent"), 0u);
    FaultInjectingFileSystem faulty;
    faulty.makeUnreadable(dir.str() + "/top/locked");
    EXPECT_EQ(UINodeModel::calculateFolderSize(dir.str() + "/top", nullptr, faulty), 107u);
}

TEST(UINodeModelInstances, listsTheLiveModels) {
    MainLoop loop;
    UINodeModel::Environment environment;
    environment.mainLoop = &loop;
    auto model = UINodeModel::create(environment);
    {
        const auto all = UINodeModel::allInstances();
        EXPECT_NE(std::find(all.begin(), all.end(), model), all.end());
    }
    std::weak_ptr<UINodeModel> weak = model;
    model.reset();
    EXPECT_TRUE(weak.expired());
    EXPECT_TRUE(UINodeModel::allInstances().empty());
}

}  // namespace
}  // namespace quester
