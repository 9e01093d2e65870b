#include "results/UINodeModel.h"

#include <algorithm>
#include <thread>
#include <unordered_set>

#include "query/QueryContainer.h"
#include "query/SearchManager.h"
#include "results/DisplayText.h"
#include "stores/Preferences.h"
#include "support/LogFunc.h"
#include "support/PathText.h"

namespace quester {

namespace {

Locked<std::vector<std::weak_ptr<UINodeModel>>>& allInstancesList() {
    static Locked<std::vector<std::weak_ptr<UINodeModel>>> list;
    return list;
}

bool anySearchManagerSearching() {
    const auto managers = SearchManager::allInstances();
    return std::any_of(managers.begin(), managers.end(),
                       [](const auto& manager) { return manager->searchInProgress(); });
}

bool containsId(const UINode::NodeList& nodes, const UINodePtr& node) {
    return std::any_of(nodes.begin(), nodes.end(), [&](const UINodePtr& other) { return other->id == node->id; });
}

UINode::NodeList withoutIds(const UINode::NodeList& nodes, const std::unordered_set<std::string>& ids) {
    UINode::NodeList kept;
    for (const auto& node : nodes) {
        if (!ids.contains(node->id.toString())) kept.push_back(node);
    }
    return kept;
}

void replaceChildren(const UINodePtr& node, UINode::NodeList children) {
    UINode::Changable changes = node->dynamic();
    changes.children = std::move(children);
    node->setDynamic(std::move(changes));
}

void setSizeText(const UINodePtr& node, std::string text) {
    UINode::Changable changes = node->dynamic();
    changes.displayTotalSize = std::move(text);
    node->setDynamic(std::move(changes));
}

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const auto& word : words) text += word;
    return text;
}

}  // namespace

std::shared_ptr<UINodeModel> UINodeModel::create(Environment environment) {
    std::shared_ptr<UINodeModel> model(new UINodeModel(std::move(environment)));
    allInstancesList().access([&](auto& list) {
        std::erase_if(list, [](const auto& weak) { return weak.expired(); });
        list.push_back(model);
    });
    return model;
}

UINodeModel::UINodeModel(Environment environment)
    : mainLoop(environment.mainLoop ? *environment.mainLoop : MainLoop::shared()),
      scheduler(environment.scheduler ? *environment.scheduler : MainLoopTimerScheduler::shared()),
      preferences(environment.preferences ? *environment.preferences : Preferences::shared()),
      anySearchInProgress(environment.anySearchInProgress ? std::move(environment.anySearchInProgress)
                                                          : std::function<bool()>(anySearchManagerSearching)),
      sizingPause(environment.sizingPause) {}

UINodeModel::~UINodeModel() {
    cancelTasks();
}

std::vector<std::shared_ptr<UINodeModel>> UINodeModel::allInstances() {
    std::vector<std::shared_ptr<UINodeModel>> alive;
    allInstancesList().access([&](auto& list) {
        for (const auto& weak : list) {
            if (auto model = weak.lock()) alive.push_back(std::move(model));
        }
    });
    return alive;
}

void UINodeModel::onMainLoop(std::function<void(UINodeModel&)> work) {
    mainLoop.post([weak = weak_from_this(), work = std::move(work)] {
        if (auto self = weak.lock()) work(*self);
    });
}

std::shared_ptr<UINodeModel> UINodeModel::holdFromQueue(const std::weak_ptr<UINodeModel>& weak) {
    auto strong = weak.lock();
    if (!strong) return nullptr;
    UINodeModel* model = strong.get();
    MainLoop& loop = strong->mainLoop;
    return std::shared_ptr<UINodeModel>(
        model, [held = std::move(strong), &loop](UINodeModel*) mutable { loop.post([last = std::move(held)] {}); });
}

void UINodeModel::onContentQueue(std::function<void(UINodeModel&)> work) {
    contentQueue.addOperation([weak = weak_from_this(), work = std::move(work)] {
        if (auto self = holdFromQueue(weak)) work(*self);
    });
}

void UINodeModel::forEachDelegate(const std::function<void(UINodeModelDelegate&)>& call) {
    std::erase_if(delegates, [](const auto& weak) { return weak.expired(); });
    const auto listeners = delegates;
    for (const auto& weak : listeners) {
        if (auto delegate = weak.lock()) call(*delegate);
    }
}

void UINodeModel::addDelegate(std::weak_ptr<UINodeModelDelegate> delegate) {
    delegates.push_back(std::move(delegate));
}

void UINodeModel::setDisplayItems(UINode::NodeList items) {
    display = std::move(items);
    forEachDelegate([](UINodeModelDelegate& delegate) { delegate.displayChanged(); });
}

// --- Merging and sorting ---

UINodeModel::SortRequest UINodeModel::sortRequest() const {
    std::optional<std::string> queryText;
    if (const auto delegate = selectionDelegate.lock()) {
        if (const QueryContainer* query = delegate->currentQuery()) queryText = joined(query->searchWords());
    }
    return {column, reversed, queryText};
}

void UINodeModel::cancelPendingWork() {
    cancelTasks();
    contentQueue.cancelAllOperations();
    contentQueue.waitUntilAllOperationsAreFinished();
}

void UINodeModel::afterPendingWork(std::function<void()> then) {
    onContentQueue(
        [then = std::move(then)](UINodeModel& model) { model.onMainLoop([then](UINodeModel&) { then(); }); });
}

void UINodeModel::clear() {
    cancelPendingWork();
    ++generation;
    setDisplayItems({});
    onContentQueue([](UINodeModel& model) {
        model.listed = {};
        model.contentOrder.clear();
        model.sortedWhileDeferred.reset();
    });
}

void UINodeModel::addMoreNodes(UINode::NodeList nodes) {
    merge(std::move(nodes), false, [weak = weak_from_this()] {
        if (auto self = weak.lock()) self->scheduleFolderSizing();
    });
}

void UINodeModel::showResults(UINode::NodeList items, std::function<void()> onCompletion) {
    merge(std::move(items), true, std::move(onCompletion));
}

void UINodeModel::merge(UINode::NodeList batch, bool replaceAll, std::function<void()> completion) {
    const SortRequest request = sortRequest();
    const std::uint64_t mergeGeneration = generation;
    const bool deferred = sortingDeferred && !replaceAll;
    onContentQueue([batch = std::move(batch), replaceAll, deferred, request, completion = std::move(completion),
                    mergeGeneration](UINodeModel& model) mutable {
        if (replaceAll) {
            model.listed = {};
            model.contentOrder.clear();
            model.sortedWhileDeferred.reset();
        }
        const std::size_t firstNew = model.contentOrder.size();
        model.takeIntoContent(std::move(batch), request.column);
        if (deferred) {
            model.sortTakenRows(request, firstNew);
            model.onMainLoop([completion = std::move(completion), mergeGeneration](UINodeModel& self) {
                if (mergeGeneration == self.generation && completion) completion();
            });
            return;
        }
        // Listed only once a row with children asks: most lists have none.
        std::optional<std::unordered_set<std::int64_t>> newPaths;
        std::vector<ChildrenChange> changes;
        UINode::NodeList sorted = model.sortedContent(request, changes, [&](const UINode::NodeList& children) {
            if (!newPaths) newPaths = model.pathKeysFrom(firstNew);
            return std::any_of(children.begin(), children.end(),
                               [&](const UINodePtr& child) { return newPaths->contains(child->pathKey()); });
        });
        model.applyOnMainLoop(std::move(changes), std::move(sorted), std::move(completion), mergeGeneration);
    });
}

void UINodeModel::takeIntoContent(UINode::NodeList batch, Column sortColumn) {
    const std::size_t firstNew = contentOrder.size();
    // Where this batch's rows stand in `contentOrder`, by their paths' keys;
    // listed only once a URL comes again, which is rare.
    std::optional<std::unordered_map<std::int64_t, std::size_t>> takenAt;
    for (auto& node : batch) {
        const std::int64_t key = node->pathKey();
        if (listed.insert(key)) {
            if (takenAt) takenAt->emplace(key, contentOrder.size());
            contentOrder.push_back(std::move(node));
            continue;
        }
        if (!takenAt) {
            takenAt.emplace();
            for (std::size_t index = firstNew; index < contentOrder.size(); ++index) {
                takenAt->emplace(contentOrder[index]->pathKey(), index);
            }
        }
        // Of two rows for one URL in the batch the later wins, in the place of
        // the first; a row listed before the batch stays.
        const auto taken = takenAt->find(key);
        if (taken != takenAt->end()) contentOrder[taken->second] = std::move(node);
    }
    if (sortColumn != Column::rank) return;
    UINode::NodeList toRank;
    for (std::size_t index = firstNew; index < contentOrder.size(); ++index) {
        if (contentOrder[index]->dynamic().tryCollectSummaryLines) toRank.push_back(contentOrder[index]);
    }
    if (!toRank.empty()) onMainLoop([toRank](UINodeModel& self) { self.appendToCheckQueue(toRank); });
}

std::unordered_set<std::int64_t> UINodeModel::pathKeysFrom(std::size_t first) const {
    std::unordered_set<std::int64_t> keys;
    for (std::size_t index = first; index < contentOrder.size(); ++index) keys.insert(contentOrder[index]->pathKey());
    return keys;
}

void UINodeModel::sortTakenRows(const SortRequest& request, std::size_t firstNew) {
    if (sortedWhileDeferred && sortedWhileDeferred->size() == firstNew &&
        sortedWhileDeferred->sortsBy(request.column, request.reversed, request.queryText)) {
        const auto newRows = contentOrder.begin() + static_cast<std::ptrdiff_t>(firstNew);
        sortedWhileDeferred->merge(UINode::NodeList(newRows, contentOrder.end()));
        return;
    }
    sortedWhileDeferred.emplace(request.column, request.reversed, request.queryText, preferences);
    sortedWhileDeferred->merge(contentOrder);
}

void UINodeModel::rowsChanged() {
    if (sortingDeferred) onContentQueue([](UINodeModel& model) { model.sortedWhileDeferred.reset(); });
}

UINode::NodeList UINodeModel::sortedContent(const SortRequest& request, std::vector<ChildrenChange>& changes,
                                            const ChildrenFilter& childrenNeedSorting) const {
    return withChildrenSorted(
        UINode::sortNodes(contentOrder, request.column, request.reversed, request.queryText, preferences), request,
        changes, childrenNeedSorting);
}

UINode::NodeList UINodeModel::withChildrenSorted(UINode::NodeList sorted, const SortRequest& request,
                                                 std::vector<ChildrenChange>& changes,
                                                 const ChildrenFilter& childrenNeedSorting) const {
    for (const auto& node : sorted) {
        const UINode::NodeList children = node->children();
        if (children.empty() || !childrenNeedSorting(children)) continue;
        UINode::NodeList resorted =
            UINode::sortNodes(children, request.column, request.reversed, request.queryText, preferences);
        if (resorted != children) changes.push_back({node, std::move(resorted)});
    }
    return sorted;
}

void UINodeModel::applyOnMainLoop(std::vector<ChildrenChange> changes, UINode::NodeList sorted,
                                  std::function<void()> completion, std::uint64_t mergeGeneration) {
    onMainLoop([changes = std::move(changes), sorted = std::move(sorted), completion = std::move(completion),
                mergeGeneration](UINodeModel& model) mutable {
        // A list sorted before a `clear` belongs to the search that was cleared.
        if (mergeGeneration != model.generation) return;
        for (auto& change : changes) replaceChildren(change.node, std::move(change.children));
        model.setDisplayItems(std::move(sorted));
        if (completion) completion();
    });
}

void UINodeModel::resortResults() {
    const SortRequest request = sortRequest();
    const std::uint64_t sortGeneration = generation;
    onContentQueue([request, sortGeneration](UINodeModel& model) {
        std::vector<ChildrenChange> changes;
        UINode::NodeList sorted = model.sortedContent(request, changes, [](const UINode::NodeList&) { return true; });
        model.applyOnMainLoop(std::move(changes), std::move(sorted), {}, sortGeneration);
    });
}

void UINodeModel::setCurrentColumn(Column newColumn) {
    column = newColumn;
    if (newColumn == Column::rank) enqueueAllNodesForContentRanking();
    if (newColumn == Column::tags) enqueueAllNodesForTags();
    if (newColumn == Column::size) {
        scheduleFolderSizing();
    } else if (folderSizeTask) {
        folderSizeTask->cancel();
    }
    resortResults();
}

void UINodeModel::setCurrentColumnReversed(bool isReversed) {
    reversed = isReversed;
    resortResults();
}

void UINodeModel::setSortingDeferred(bool deferred) {
    const bool ending = sortingDeferred && !deferred;
    sortingDeferred = deferred;
    if (!ending) return;
    const SortRequest request = sortRequest();
    const std::uint64_t sortGeneration = generation;
    onContentQueue([request, sortGeneration](UINodeModel& model) {
        std::optional<SortedNodeList> kept = std::exchange(model.sortedWhileDeferred, std::nullopt);
        const bool keptOrderHolds = kept && kept->size() == model.contentOrder.size() &&
                                    kept->sortsBy(request.column, request.reversed, request.queryText);
        std::vector<ChildrenChange> changes;
        const auto everyRow = [](const UINode::NodeList&) { return true; };
        UINode::NodeList sorted = keptOrderHolds ? model.withChildrenSorted(kept->nodes(), request, changes, everyRow)
                                                 : model.sortedContent(request, changes, everyRow);
        model.applyOnMainLoop(std::move(changes), std::move(sorted), {}, sortGeneration);
    });
}

void UINodeModel::removeNodes(UINode::NodeList items) {
    std::unordered_set<std::string> ids;
    for (const auto& item : items) ids.insert(item->id.toString());
    onContentQueue([ids](UINodeModel& model) {
        LOG("removeNodes(items:) " + std::to_string(ids.size()));
        for (const auto& node : model.contentOrder) {
            const UINode::NodeList children = node->dynamic().children;
            if (children.empty()) continue;
            UINode::NodeList kept = withoutIds(children, ids);
            if (kept.size() != children.size()) {
                model.onMainLoop([node, kept](UINodeModel&) { replaceChildren(node, kept); });
            }
        }
        model.contentOrder = withoutIds(model.contentOrder, ids);
        model.sortedWhileDeferred.reset();
        model.listed = {};
        for (const auto& node : model.contentOrder) model.listed.insert(node->pathKey());
        model.onMainLoop([ids](UINodeModel& self) {
            UINode::NodeList kept = withoutIds(self.display, ids);
            if (kept.size() != self.display.size()) self.setDisplayItems(std::move(kept));
        });
    });
}

void UINodeModel::substituteItems(const UINodePtr& old, const UINodePtr& replacement) {
    onContentQueue([old, replacement](UINodeModel& model) {
        model.listed.insert(old->pathKey());
        model.sortedWhileDeferred.reset();
        const auto at = std::find_if(model.contentOrder.begin(), model.contentOrder.end(),
                                     [&](const UINodePtr& node) { return node->fileURL() == old->fileURL(); });
        if (at != model.contentOrder.end()) {
            *at = replacement;
        } else {
            model.contentOrder.push_back(replacement);
        }
    });
    const auto shown =
        std::find_if(display.begin(), display.end(), [&](const UINodePtr& node) { return node->id == old->id; });
    if (shown == display.end()) return;
    *shown = replacement;
    forEachDelegate([](UINodeModelDelegate& delegate) { delegate.displayChanged(); });
}

void UINodeModel::removeOldestItemsOver(std::size_t maxItems) {
    onContentQueue([maxItems](UINodeModel& model) {
        if (model.contentOrder.size() <= maxItems) return;
        UINode::NodeList newest = model.contentOrder;
        std::stable_sort(newest.begin(), newest.end(),
                         [](const UINodePtr& a, const UINodePtr& b) { return a->nodeCreated > b->nodeCreated; });
        newest.resize(maxItems);
        model.onMainLoop([newest](UINodeModel& self) { self.showResults(newest); });
    });
}

// --- Visible checks ---

void UINodeModel::appendToCheckQueue(const UINode::NodeList& nodes) {
    newlyVisibleNode.access([&](auto& queue) { queue.insert(queue.end(), nodes.begin(), nodes.end()); });
}

void UINodeModel::enqueueForCheck(const std::function<bool(const UINode::Changable&)>& wanted) {
    onContentQueue([wanted](UINodeModel& model) {
        UINode::NodeList nodes;
        for (const auto& node : model.contentOrder) {
            if (wanted(node->dynamic())) nodes.push_back(node);
        }
        if (!nodes.empty()) model.onMainLoop([nodes](UINodeModel& self) { self.appendToCheckQueue(nodes); });
    });
}

void UINodeModel::enqueueAllNodesForTags() {
    enqueueForCheck([](const UINode::Changable& changes) { return !changes.hasLoadedTagNames; });
}

void UINodeModel::enqueueAllNodesForContentRanking() {
    enqueueForCheck([](const UINode::Changable& changes) { return changes.tryCollectSummaryLines; });
}

void UINodeModel::nodesBecameVisible(const UINode::NodeList& nodes, VisualState visualHint) {
    hint = visualHint;
    if (nodes == lastVisibleNodes) return;
    newlyVisibleNode.access([&](auto& queue) {
        std::erase_if(queue, [&](const UINodePtr& queued) {
            return containsId(lastVisibleNodes, queued) && !containsId(nodes, queued);
        });
        for (const auto& node : nodes) {
            const bool queued =
                std::any_of(queue.begin(), queue.end(), [&](const UINodePtr& other) { return other->id == node->id; });
            if (!queued) queue.push_back(node);
        }
    });
    lastVisibleNodes = nodes;
    scheduleFolderSizing();
}

void UINodeModel::createCheckNodesTimer() {
    visibleItemsCheck =
        std::make_unique<RepeatingTimer>(scheduler, std::chrono::milliseconds(200), [weak = weak_from_this()] {
            if (auto self = weak.lock()) self->checkTimerTick();
        });
}

void UINodeModel::checkTimerTick() {
    addCheckOperations(hint);
    const auto resortIfDirty = [&](bool& dirty, Column dirtyColumn) {
        if (!dirty || column != dirtyColumn) return;
        dirty = false;
        resortResults();
    };
    resortIfDirty(ranksDirty, Column::rank);
    resortIfDirty(tagsDirty, Column::tags);
    resortIfDirty(sizeDirty, Column::size);
}

void UINodeModel::addCheckOperations(VisualState visualHint) {
    if (newlyVisibleNode.value().empty()) {
        if (auto delegate = selectionDelegate.lock()) delegate->setUIUpdateIndicator(false);
        return;
    }
    const auto reserveSlot = [](int& queued) {
        if (queued >= 3) return false;
        ++queued;
        return true;
    };
    while (numberOfVisibleItemsQueued.access(reserveSlot)) {
        visibleCheckQueue.addOperation([weak = weak_from_this(), visualHint] {
            if (auto self = holdFromQueue(weak)) self->runVisibleCheck(visualHint);
        });
    }
}

void UINodeModel::runVisibleCheck(VisualState visualHint) {
    numberOfVisibleItemsQueued.access([](int& queued) { --queued; });
    const UINodePtr node = newlyVisibleNode.access([](auto& queue) -> UINodePtr {
        if (queue.empty()) return nullptr;
        UINodePtr first = queue.front();
        queue.pop_front();
        return first;
    });
    if (!node) return;
    onMainLoop([](UINodeModel& model) {
        if (auto delegate = model.selectionDelegate.lock()) delegate->setUIUpdateIndicator(true);
    });
    UINode::VisibleCheckResult result = node->visibleOnScreenChecksModern(visualHint, preferences);
    onMainLoop([node, result = std::move(result), visualHint](UINodeModel& model) mutable {
        model.applyCheckResult(node, std::move(result));
        model.addCheckOperations(visualHint);
    });
}

void UINodeModel::applyCheckResult(const UINodePtr& node, UINode::VisibleCheckResult result) {
    switch (result.action) {
        case UINode::VisibleCheckResultAction::none:
            return;
        case UINode::VisibleCheckResultAction::changed:
            node->setDynamic(std::move(result.changes));
            rowsChanged();
            return;
        case UINode::VisibleCheckResultAction::remove:
            removeNodes({node});
            return;
        case UINode::VisibleCheckResultAction::reload:
            break;
    }
    if (result.foundItems) {
        result.changes.children.clear();
        for (const auto& item : *result.foundItems) result.changes.children.push_back(node->childForFoundItem(item));
        result.changes.tryCollectSummaryLines = false;
    }
    const std::int64_t oldRank = node->dynamic().contentSearchResultsRank;
    const std::int64_t newRank = result.changes.contentSearchResultsRank;
    node->setSearchResultRank(newRank);
    node->setDynamic(std::move(result.changes));
    rowsChanged();
    if (newRank != oldRank) ranksDirty = true;
    if (column == Column::tags) tagsDirty = true;
    forEachDelegate([&](UINodeModelDelegate& delegate) { delegate.reloadNode(node); });
}

// --- Folder sizes ---

std::uint64_t UINodeModel::calculateFolderSize(const std::string& folder, const Operation* task,
                                               FileSystem& fileSystem) {
    std::uint64_t total = 0;
    std::vector<std::string> waiting{folder};
    std::vector<std::byte> buffer(65536);
    std::vector<DirectoryEntry> batch;
    while (!waiting.empty() && (task == nullptr || !task->isCancelled())) {
        const std::string path = std::move(waiting.back());
        waiting.pop_back();
        auto opened = fileSystem.openDirectory(path);
        if (!opened) continue;
        while (fileSystem.readEntries(**opened, buffer, batch) && !batch.empty()) {
            for (const DirectoryEntry& entry : batch) {
                if (entry.name[0] == '.') continue;
                const auto status = fileSystem.statusAt(**opened, entry.name);
                if (!status) continue;
                if (status->isRegular()) total += status->size;
                if (status->isDirectory()) waiting.push_back(joinPath(path, entry.name));
            }
        }
    }
    return total;
}

UINode::NodeList UINodeModel::foldersToSize(const UINode::NodeList& topLevelUnsized, const UINode::NodeList& visible,
                                            bool sizeSorted) {
    UINode::NodeList order;
    for (const auto& node : visible) {
        if (containsId(topLevelUnsized, node) && !containsId(order, node)) order.push_back(node);
    }
    if (!sizeSorted) return order;
    for (const auto& node : topLevelUnsized) {
        if (!containsId(order, node)) order.push_back(node);
    }
    return order;
}

void UINodeModel::scheduleFolderSizing() {
    if (folderSizeTask || !preferences.boolValue("sizeIsVisible")) return;
    onContentQueue([](UINodeModel& model) {
        UINode::NodeList unsized;
        for (const auto& node : model.contentOrder) {
            const UINode::Changable changes = node->dynamic();
            if (changes.kind == UINode::Kind::folder && !changes.hasCalculatedFolderSize) unsized.push_back(node);
        }
        model.onMainLoop([unsized](UINodeModel& self) { self.startFolderSizing(unsized); });
    });
}

void UINodeModel::startFolderSizing(UINode::NodeList unsized) {
    if (folderSizeTask) return;
    const bool sizeSorted = column == Column::size;
    const UINode::NodeList folders = foldersToSize(unsized, lastVisibleNodes, sizeSorted);
    if (folders.empty()) return;
    for (const auto& folder : folders) {
        if (!folder->dynamic().hasCalculatedFolderSize) setSizeText(folder, "Calculating…");
    }
    auto self = std::make_shared<std::weak_ptr<Operation>>();
    auto task = std::make_shared<Operation>([weak = weak_from_this(), self, folders, sizeSorted] {
        if (auto operation = self->lock()) sizeFolders(weak, folders, sizeSorted, *operation);
    });
    *self = task;
    task->addFinishingStep([weak = weak_from_this(), folders, ended = std::weak_ptr<Operation>(task)] {
        auto model = holdFromQueue(weak);
        if (!model) return;
        model->onMainLoop([folders, ended](UINodeModel& current) { current.folderSizingEnded(folders, ended); });
    });
    folderSizeTask = task;
    folderSizeQueue.addOperation(task);
}

void UINodeModel::sizeFolders(const std::weak_ptr<UINodeModel>& weak, const UINode::NodeList& folders, bool sizeSorted,
                              const Operation& task) {
    for (const auto& folder : folders) {
        if (task.isCancelled()) return;
        if (folder->dynamic().hasCalculatedFolderSize) continue;
        if (!waitWhileBusy(weak, task)) return;
        const std::uint64_t size = calculateFolderSize(folder->fileURL().path(), &task);
        if (task.isCancelled()) return;
        auto model = holdFromQueue(weak);
        if (!model) return;
        model->onMainLoop([folder, size, sizeSorted](UINodeModel& current) {
            folder->setCalculatedFolderSize(size);
            current.rowsChanged();
            if (sizeSorted) {
                current.sizeDirty = true;
            } else {
                current.forEachDelegate([&](UINodeModelDelegate& delegate) { delegate.reloadNode(folder); });
            }
        });
    }
}

bool UINodeModel::waitWhileBusy(const std::weak_ptr<UINodeModel>& weak, const Operation& task) {
    while (!task.isCancelled()) {
        auto model = holdFromQueue(weak);
        if (!model) return false;
        if (model->appIsActive.load() && !model->anySearchInProgress()) return true;
        const Clock::Duration pause = model->sizingPause;
        model.reset();
        std::this_thread::sleep_for(pause);
    }
    return false;
}

void UINodeModel::folderSizingEnded(const UINode::NodeList& folders, const std::weak_ptr<Operation>& ended) {
    for (const auto& folder : folders) {
        const UINode::Changable changes = folder->dynamic();
        if (!changes.hasCalculatedFolderSize) setSizeText(folder, displaySizeText(changes.totalSize));
    }
    if (folderSizeTask && folderSizeTask == ended.lock()) folderSizeTask.reset();
    scheduleFolderSizing();
}

void UINodeModel::cancelTasks() {
    if (folderSizeTask) folderSizeTask->cancel();
    if (selectionSizeTask) selectionSizeTask->cancel();
}

// --- Selection size ---

void UINodeModel::updateSelectionSize(UINode::NodeList nodes) {
    if (selectionSizeTask) selectionSizeTask->cancel();
    selectionSizeTask.reset();
    if (nodes.empty()) {
        if (auto delegate = selectionDelegate.lock()) delegate->selectionSizeCalculated(0, 0);
        return;
    }
    auto self = std::make_shared<std::weak_ptr<Operation>>();
    auto task = std::make_shared<Operation>([weak = weak_from_this(), self, nodes] {
        const auto operation = self->lock();
        if (!operation) return;
        std::int64_t count = 0;
        std::uint64_t total = 0;
        for (const auto& node : nodes) {
            if (operation->isCancelled()) return;
            const UINode::Changable changes = node->dynamic();
            if (changes.kind == UINode::Kind::foundItem) continue;
            ++count;
            if (changes.kind != UINode::Kind::folder || changes.hasCalculatedFolderSize) {
                total += changes.totalSize;
                continue;
            }
            const std::uint64_t size = calculateFolderSize(node->fileURL().path(), operation.get());
            if (operation->isCancelled()) return;
            total += size;
            if (auto model = holdFromQueue(weak)) {
                model->onMainLoop([node, size](UINodeModel& current) {
                    node->setCalculatedFolderSize(size);
                    current.rowsChanged();
                });
            }
        }
        auto model = holdFromQueue(weak);
        if (!model) return;
        model->onMainLoop([count, total, operation](UINodeModel& current) {
            if (operation->isCancelled()) return;
            if (auto delegate = current.selectionDelegate.lock()) delegate->selectionSizeCalculated(count, total);
        });
    });
    *self = task;
    selectionSizeTask = task;
    selectionSizeQueue.addOperation(task);
}

}  // namespace quester
