#include "results/UINode.h"

#include <algorithm>
#include <mutex>
#include <span>
#include <unordered_set>
#include <utility>

#include "platform/FSUtilities.h"
#include "platform/FileSystem.h"
#include "platform/ItemAttributes.h"
#include "platform/KindStrings.h"
#include "results/DisplayText.h"
#include "results/LocalizedCollation.h"
#include "stores/Preferences.h"
#include "support/Crc64.h"
#include "support/LogFunc.h"
#include "support/PathText.h"

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
bool itemExists(const std::string& path) {
    return FileSystem::real().status(path, false).ok();
}

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

// The one copy of a kind text that every row of that kind points to. The
// texts are never freed: there are a few hundred at most.
const std::string* internedKindText(std::string text) {
    static std::mutex lock;
    static std::unordered_set<std::string> texts;
    const std::lock_guard guard(lock);
    return &*texts.insert(std::move(text)).first;
}

// The one copy of a folder part for the rows made one after another in it.
// Rows come folder by folder, so the last one made is the one to share; a
// folder that comes back later gets a second copy, which costs only memory.
std::shared_ptr<const std::string> sharedFolderPart(std::string_view folder) {
    thread_local std::shared_ptr<const std::string> last;
    if (!last || *last != folder) last = std::make_shared<const std::string>(folder);
    return last;
}

// Negative, zero or positive as a1 + a2 sorts before, with or after b1 + b2,
// byte by byte, without joining them.
int compareJoined(std::string_view a1, std::string_view a2, std::string_view b1, std::string_view b2) {
    for (;;) {
        if (a1.empty()) std::swap(a1, a2);
        if (b1.empty()) std::swap(b1, b2);
        if (a1.empty() || b1.empty()) return a1.empty() ? (b1.empty() ? 0 : -1) : 1;
        const std::size_t common = std::min(a1.size(), b1.size());
        if (const int order = a1.substr(0, common).compare(b1.substr(0, common)); order != 0) return order;
        a1.remove_prefix(common);
        b1.remove_prefix(common);
    }
}

}  // namespace

void UINode::setFileURL(const Url& url) {
    const std::string& path = url.path();
    const std::size_t nameStart = path.rfind('/') + 1;  // 0 without a "/"
    folderPart = sharedFolderPart(std::string_view(path).substr(0, nameStart));
    const std::size_t nameLength = path.size() - nameStart;
    namePart = std::make_unique<char[]>(nameLength + 1);
    path.copy(namePart.get(), nameLength, nameStart);
    isDirectory = url.isDirectory();
}

Url UINode::fileURL() const {
    std::string path;
    path.reserve(folderText().size() + nameText().size());
    path.append(folderText()).append(nameText());
    return Url(std::move(path), isDirectory);
}

std::string_view UINode::fileName() const {
    const std::string_view name = nameText();
    return name.empty() ? lastPathComponentView(folderText()) : name;
}

bool UINode::pathComesBefore(const UINode& other) const {
    if (folderPart == other.folderPart) return nameText() < other.nameText();
    return compareJoined(folderText(), nameText(), other.folderText(), other.nameText()) < 0;
}

std::int64_t UINode::pathKey() const {
    return crc64(nameText(), crc64(folderText()));
}

std::shared_ptr<UINode> UINode::made(Clock::TimePoint created, Highlight highlight) {
    auto node = std::make_shared<UINode>(MadeByCreate{});
    node->nodeCreated = created;
    node->highlight = std::move(highlight);
    return node;
}

void UINode::takeFieldsOf(const SearchResult& searchResult) {
    setFileURL(searchResult.url);
    creationDate = searchResult.creationDate;
    modificationDate = searchResult.modDate;
    lastAccessDate = searchResult.lastAccessDate;
    madeFromResult = true;
    rank = searchResult.contentSearchResultsRank;
    strikeThroughIfMissing = searchResult.strikeThroughDisplayNameIfMissing;
    offline = searchResult.isOffline;
    deleteFromResultsIfMissing = searchResult.checkToSeeIfItExists;
    tryCollectSummaryLines = searchResult.tryCollectSummaryLines;
    size = searchResult.size;
    if (searchResult.foundItems) foundItemCount = static_cast<std::int32_t>(searchResult.foundItems->size());
    if (searchResult.contentSearchResults) {
        extras = std::make_unique<const Extras>(Extras{{}, searchResult.contentSearchResults, {}, {}});
    }
    if (searchResult.isDirectory) {
        kind = kindForDirectory(searchResult.url.path());
    } else {
        kind = foundItemCount > 0 ? Kind::fileWithFoundItems : Kind::file;
    }
    kindText = internedKindText(displayKindFor(kind, searchResult.url.path()));
}

std::shared_ptr<UINode> UINode::create(const SearchResult& searchResult, Highlight highlight, const Clock& clock) {
    auto node = made(clock.now(), std::move(highlight));
    node->takeFieldsOf(searchResult);
    // Most results bring nothing that `Changable` holds, and their rows none.
    if (!searchResult.tags && node->kind != Kind::fileWithFoundItems) return node;
    Changable changes = node->initialChanges();
    if (searchResult.tags) {
        changes.tagNames = *searchResult.tags;
        changes.hasLoadedTagNames = true;
    }
    if (node->kind == Kind::fileWithFoundItems) {
        for (const auto& item : *searchResult.foundItems) changes.children.push_back(node->childForFoundItem(item));
    }
    node->keep(std::move(changes));
    return node;
}

std::shared_ptr<UINode> UINode::create(const Url& url, const std::shared_ptr<UINode>& parent, const UINode* replacing,
                                       Highlight highlight, const Clock& clock) {
    auto node = made(clock.now(), std::move(highlight));
    const FileAttributes attributes = readAttributes(url.path());
    node->setFileURL(Url(url.path(), attributes.isDirectory));
    if (parent || replacing != nullptr) {
        const auto replaced = replacing != nullptr ? std::optional<Uuid>(replacing->id) : std::nullopt;
        node->extras = std::make_unique<const Extras>(Extras{{}, {}, replaced, parent});
    }
    node->creationDate = attributes.created;
    node->modificationDate = attributes.modified;
    node->lastAccessDate = attributes.accessed;
    node->kind = attributes.isDirectory ? kindForDirectory(url.path()) : Kind::file;
    node->kindText = internedKindText(displayKindFor(node->kind, url.path()));
    node->size = attributes.isDirectory ? 0 : attributes.size;
    return node;
}

std::shared_ptr<UINode> UINode::childForFoundItem(const FoundItem& item) const {
    // A hit highlights the words of its item, always ignoring case.
    const auto words =
        highlight ? std::make_shared<const HighlightWords>(HighlightWords{highlight->words, false}) : nullptr;
    auto child = made(nodeCreated, words);
    child->setFileURL(fileURL());
    child->extras = std::make_unique<const Extras>(Extras{item, {}, {}, {}});
    child->modificationDate = item.modified;
    child->kind = Kind::foundItem;
    child->kindText = internedKindText({});
    child->size = item.size;
    return child;
}

Result<UINode::NodeList> UINode::nodesForContentsOfFolder(const Url& folder, bool includeHiddenItems,
                                                          const Highlight& highlight) {
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
    for (const auto& name : names)
        nodes.push_back(create(Url(joinPath(folder.path(), name)), nullptr, nullptr, highlight));
    return nodes;
}

UINode::NodeList UINode::nodesForContentsOfFolderIgnoringError(const Url& folder) {
    auto nodes = nodesForContentsOfFolder(folder);
    if (nodes) return std::move(nodes).value();
    LOG("nodesForContentsOfFolder failed: " + nodes.error().description());
    return {};
}

std::string UINode::displayName() const {
    if (const FoundItem* hit = foundItem()) return hit->title;
    std::string name(fileName());
    if (foundItemCount >= 0) name += " (" + std::to_string(foundItemCount) + ")";
    return name;
}

std::string UINode::nameSortKey() const {
    return LocalizedCollation::standardKey(displayName());
}

std::string UINode::displayPath() const {
    if (foundItem()) return {};
    return Url(parentPath(fileURL().path()), true).displayPath();
}

std::string UINode::displayInside() const {
    if (foundItem()) return {};
    return lastPathComponent(parentPath(fileURL().path()));
}

const std::vector<std::string>& UINode::displayWordsToHighlight() const {
    static const std::vector<std::string> none;
    return highlight ? highlight->words : none;
}

std::optional<std::string> UINode::summaryLine() const {
    if (const FoundItem* hit = foundItem()) return hit->title;
    return std::nullopt;
}

UINode::Changable UINode::initialChanges() const {
    Changable changes;
    changes.kind = kind;
    changes.displayKind = *kindText;
    changes.totalSize = size;
    changes.displayTotalSize = displaySizeText(size);
    // A hit has nothing more to learn on screen.
    changes.hasLoadedAdditionalDetails = kind == Kind::foundItem;
    changes.deleteFromResultsIfMissing = deleteFromResultsIfMissing;
    changes.tryCollectSummaryLines = tryCollectSummaryLines;
    changes.contentSearchResultsRank = rank.load();
    return changes;
}

void UINode::keep(Changable changes) {
    const bool differs = !(changes == initialChanges());
    changed.setValue(differs ? std::make_unique<Changable>(std::move(changes)) : nullptr);
}

UINode::Changable UINode::dynamic() const {
    auto held = changed.access([](const std::unique_ptr<Changable>& state) {
        return state ? std::optional<Changable>(*state) : std::nullopt;
    });
    return held ? std::move(*held) : initialChanges();
}

UINode::NodeList UINode::children() const {
    return changed.access([](const std::unique_ptr<Changable>& state) { return state ? state->children : NodeList{}; });
}

void UINode::setDynamic(Changable changes) {
    inChange.store(true);
    changed.setValue(std::make_unique<Changable>(std::move(changes)));
    inChange.store(false);
}

void UINode::setCalculatedFolderSize(std::uint64_t size) {
    Changable changes = dynamic();
    changes.totalSize = size;
    changes.displayTotalSize = displaySizeText(size);
    changes.hasCalculatedFolderSize = true;
    setDynamic(std::move(changes));
}

void UINode::loadChildren(Column currentColumn, bool currentColumnReversed, const std::optional<std::string>& queryText,
                          const Preferences& preferences) {
    Changable changes = dynamic();
    if (changes.kind != Kind::folder || !changes.children.empty()) return;
    const Url url = fileURL();
    if (!itemExists(url.path())) return;
    NodeList children = nodesForContentsOfFolderIgnoringError(url);
    changes.children = sortNodes(children, currentColumn, currentColumnReversed, queryText, preferences);
    setDynamic(std::move(changes));
}

void UINode::purgeChildren() {
    Changable changes = dynamic();
    changes.children.clear();
    setDynamic(std::move(changes));
}

UINode::VisibleCheckResult UINode::visibleOnScreenChecksModern(VisualState hint, const Preferences& preferences) const {
    const Changable original = dynamic();
    VisibleCheckResult result{VisibleCheckResultAction::none, original, std::nullopt};
    Changable& changes = result.changes;
    const std::string path = fileURL().path();
    if (changes.deleteFromResultsIfMissing && !itemExists(path)) {
        result.action = VisibleCheckResultAction::remove;
        return result;
    }
    addOnce(changes.visualStatesChecked, hint);
    // Icons and previews belong to a window layer; a headless row only notes the attempt.
    if (hint == VisualState::icons) changes.hasTriedToLoadPreview = true;
    if (!changes.hasLoadedAdditionalDetails) {
        if (strikeThroughIfMissing) {
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
