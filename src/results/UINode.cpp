#include "results/UINode.h"

#include <algorithm>
#include <span>

#include "platform/FSUtilities.h"
#include "platform/FileSystem.h"
#include "platform/ItemAttributes.h"
#include "platform/KindStrings.h"
#include "support/PathText.h"
#include "results/DisplayText.h"
#include "results/LocalizedCollation.h"
#include "stores/Preferences.h"
#include "support/LogFunc.h"

namespace quester {

namespace {

struct FileAttributes {
    bool exists = false;
    bool isDirectory = false;
    std::uint64_t size = 0;
    std::int64_t modified = 0;
    std::int64_t created = 0;
    std::int64_t accessed = 0;
};

FileAttributes readAttributes(const std::string& path) {
    FileAttributes attributes;
    const auto status = FileSystem::real().status(path);
    if (!status) return attributes;
    attributes.exists = true;
    attributes.isDirectory = status->isDirectory();
    attributes.size = status->size;
    attributes.modified = status->modifyTime.seconds;
    attributes.created = status->createTime.seconds;
    attributes.accessed = status->accessTime.seconds;
    return attributes;
}

// Whether anything stands at the path, a dangling link included.
bool itemExists(const std::string& path) { return FileSystem::real().status(path, false).ok(); }

bool isSymbolicLink(const std::string& path) {
    const auto status = FileSystem::real().status(path, false);
    return status && status->kind == FileKind::symbolicLink;
}

UINode::Kind kindForDirectory(const std::string& path) {
    return FSUtilities::shared().hasPackageExtension(path) ? UINode::Kind::package : UINode::Kind::folder;
}

std::string displayKindFor(UINode::Kind kind, const std::string& path) {
    auto& kinds = KindStrings::shared();
    if (kind == UINode::Kind::folder) return kinds.kindStringForFolder(path);
    return kinds.kindStringForFile(Url(path, kind == UINode::Kind::package),
                                   Preferences::shared().boolValue("useFinderKindField"));
}

void addOnce(std::vector<VisualState>& states, VisualState state) {
    if (std::find(states.begin(), states.end(), state) == states.end()) states.push_back(state);
}

}  // namespace

void UINode::setDisplayLocation(const std::string& path) {
    const std::string folder = parentPath(path);
    displayPath = Url(folder, true).displayPath();
    displayInside = lastPathComponent(folder);
}

std::shared_ptr<UINode> UINode::create(const SearchResult& searchResult, HighlightWords highlight,
                                       const Clock& clock) {
    std::shared_ptr<UINode> node(new UINode());
    node->nodeCreated = clock.now();
    node->suppliedSearchResult.setValue(searchResult);
    node->fileURL = searchResult.url;
    node->creationDate = searchResult.creationDate;
    node->modificationDate = searchResult.modDate;
    node->lastAccessDate = searchResult.lastAccessDate;
    node->setDisplayLocation(searchResult.url.path());
    node->displayWordsToHighlight = std::move(highlight.words);
    node->displayWordsToHighlightIsCaseSensitive = highlight.isCaseSensitive;

    Changable changes;
    const std::string& path = searchResult.url.path();
    if (searchResult.isDirectory) {
        changes.kind = kindForDirectory(path);
    } else {
        const bool hasFoundItems = searchResult.foundItems && !searchResult.foundItems->empty();
        changes.kind = hasFoundItems ? Kind::fileWithFoundItems : Kind::file;
    }
    changes.displayKind = displayKindFor(changes.kind, path);
    changes.totalSize = searchResult.size;
    changes.displayTotalSize = displaySizeText(searchResult.size);
    if (searchResult.tags) {
        changes.tagNames = *searchResult.tags;
        changes.hasLoadedTagNames = true;
    }
    changes.deleteFromResultsIfMissing = searchResult.checkToSeeIfItExists;
    changes.tryCollectSummaryLines = searchResult.tryCollectSummaryLines;
    changes.contentSearchResultsRank = searchResult.contentSearchResultsRank;
    if (changes.kind == Kind::fileWithFoundItems) {
        for (const auto& item : *searchResult.foundItems) changes.children.push_back(node->childForFoundItem(item));
    }
    node->dynamicState.setValue(std::move(changes));
    return node;
}

std::shared_ptr<UINode> UINode::create(const Url& url, const std::shared_ptr<UINode>& parent,
                                       const UINode* replacing, HighlightWords highlight, const Clock& clock) {
    std::shared_ptr<UINode> node(new UINode());
    const FileAttributes attributes = readAttributes(url.path());
    node->nodeCreated = clock.now();
    node->fileURL = Url(url.path(), attributes.isDirectory);
    node->parent = parent;
    if (replacing != nullptr) node->replacedID = replacing->id;
    node->creationDate = attributes.created;
    node->modificationDate = attributes.modified;
    node->lastAccessDate = attributes.accessed;
    node->setDisplayLocation(url.path());
    node->displayWordsToHighlight = std::move(highlight.words);
    node->displayWordsToHighlightIsCaseSensitive = highlight.isCaseSensitive;

    Changable changes;
    changes.kind = attributes.isDirectory ? kindForDirectory(url.path()) : Kind::file;
    changes.displayKind = displayKindFor(changes.kind, url.path());
    changes.totalSize = attributes.isDirectory ? 0 : attributes.size;
    changes.displayTotalSize = displaySizeText(changes.totalSize);
    node->dynamicState.setValue(std::move(changes));
    return node;
}

std::shared_ptr<UINode> UINode::childForFoundItem(const FoundItem& item) const {
    std::shared_ptr<UINode> child(new UINode());
    child->nodeCreated = nodeCreated;
    child->fileURL = fileURL;
    child->summaryLine = item.title;
    child->foundItem = item;
    child->modificationDate = item.modified;
    child->displayWordsToHighlight = displayWordsToHighlight;
    Changable changes;
    changes.kind = Kind::foundItem;
    changes.totalSize = item.size;
    changes.displayTotalSize = displaySizeText(item.size);
    // A hit has nothing more to learn on screen.
    changes.hasLoadedAdditionalDetails = true;
    child->dynamicState.setValue(std::move(changes));
    return child;
}

Result<UINode::NodeList> UINode::nodesForContentsOfFolder(const Url& folder, bool includeHiddenItems,
                                                          HighlightWords highlight) {
    FileSystem& fileSystem = FileSystem::real();
    auto opened = fileSystem.openDirectory(folder.path());
    if (!opened) return opened.error();
    std::vector<std::string> names;
    std::vector<std::byte> buffer(65536);
    std::vector<DirectoryEntry> batch;
    for (;;) {
        if (Status read = fileSystem.readEntries(**opened, buffer, batch); !read) return read.error();
        if (batch.empty()) break;
        for (const DirectoryEntry& entry : batch) {
            if (includeHiddenItems || entry.name[0] != '.') names.emplace_back(entry.name);
        }
    }
    NodeList nodes;
    for (const auto& name : names) nodes.push_back(create(Url(joinPath(folder.path(), name)), nullptr, nullptr, highlight));
    return nodes;
}

UINode::NodeList UINode::nodesForContentsOfFolderIgnoringError(const Url& folder) {
    auto nodes = nodesForContentsOfFolder(folder);
    if (nodes) return std::move(nodes).value();
    LOG("nodesForContentsOfFolder failed: " + nodes.error().description());
    return {};
}

std::string UINode::displayName() const {
    if (summaryLine) return *summaryLine;
    std::string name = lastPathComponent(fileURL.path());
    const auto foundCount = suppliedSearchResult.access([](const std::optional<SearchResult>& result) {
        return result && result->foundItems ? std::optional<std::size_t>(result->foundItems->size()) : std::nullopt;
    });
    if (foundCount) name += " (" + std::to_string(*foundCount) + ")";
    return name;
}

std::string UINode::nameSortKey() const {
    std::string name = displayName();
    std::optional<std::string> cached = nameAndSortKey.access([&](const std::pair<std::string, std::string>& entry) {
        return !entry.second.empty() && entry.first == name ? std::optional<std::string>(entry.second) : std::nullopt;
    });
    if (cached) return std::move(*cached);
    std::string key = LocalizedCollation::standardKey(name);
    nameAndSortKey.setValue({std::move(name), key});
    return key;
}

void UINode::setDynamic(Changable changes) {
    inChange.store(true);
    dynamicState.setValue(std::move(changes));
    inChange.store(false);
}

void UINode::setSearchResultRank(std::int64_t rank) {
    suppliedSearchResult.access([&](std::optional<SearchResult>& result) {
        if (result) result->contentSearchResultsRank = rank;
    });
}

void UINode::setCalculatedFolderSize(std::uint64_t size) {
    Changable changes = dynamic();
    changes.totalSize = size;
    changes.displayTotalSize = displaySizeText(size);
    changes.hasCalculatedFolderSize = true;
    setDynamic(std::move(changes));
}

void UINode::loadChildren(Column currentColumn, bool currentColumnReversed,
                          const std::optional<std::string>& queryText, const Preferences& preferences) {
    Changable changes = dynamic();
    if (changes.kind != Kind::folder || !changes.children.empty()) return;
    if (!itemExists(fileURL.path())) return;
    NodeList children = nodesForContentsOfFolderIgnoringError(fileURL);
    changes.children = sortNodes(children, currentColumn, currentColumnReversed, queryText, preferences);
    setDynamic(std::move(changes));
}

void UINode::purgeChildren() {
    Changable changes = dynamic();
    changes.children.clear();
    setDynamic(std::move(changes));
}

UINode::VisibleCheckResult UINode::visibleOnScreenChecksModern(VisualState hint,
                                                               const Preferences& preferences) const {
    const Changable original = dynamic();
    VisibleCheckResult result{VisibleCheckResultAction::none, original, std::nullopt};
    Changable& changes = result.changes;
    const std::string& path = fileURL.path();
    if (changes.deleteFromResultsIfMissing && !itemExists(path)) {
        result.action = VisibleCheckResultAction::remove;
        return result;
    }
    addOnce(changes.visualStatesChecked, hint);
    // Icons and previews belong to a window layer; a headless row only notes the attempt.
    if (hint == VisualState::icons) changes.hasTriedToLoadPreview = true;
    if (!changes.hasLoadedAdditionalDetails) {
        const auto searchResult = suppliedSearchResult.value();
        if (searchResult && searchResult->strikeThroughDisplayNameIfMissing) {
            // An item on a disk that is off line is not struck through.
            const Url disk(FSUtilities::shared().diskPathFromFullPath(path), true);
            if (disk.isReachable() && !itemExists(path)) changes.displayStrikeThroughText = true;
        }
        if (!changes.hasLoadedTagNames && preferences.boolValue("tagsIsVisible")) {
            changes.tagNames = ItemAttributes::tagNames(path);
            changes.hasLoadedTagNames = true;
        }
        if (isSymbolicLink(path)) {
            changes.displayKind = "Alias";
            result.action = VisibleCheckResultAction::reload;
        }
        changes.hasLoadedAdditionalDetails = true;
    }
    if (result.action == VisibleCheckResultAction::none && !(changes == original)) {
        result.action = VisibleCheckResultAction::changed;
    }
    return result;
}

}  // namespace quester
