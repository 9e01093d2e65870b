#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Url.h"
#include "query/FoundItem.h"
#include "query/SearchResult.h"
#include "results/Column.h"
#include "support/Clock.h"
#include "support/Locked.h"
#include "support/Result.h"
#include "support/Uuid.h"

namespace quester {

class Preferences;

// The words a row highlights in its name.
struct HighlightWords {
    std::vector<std::string> words;
    bool isCaseSensitive = false;
};

// What a results view shows now: the rows as a list or as icons.
enum class VisualState { list, icons };

// One row of the results: a found item, an entry of an expanded folder, or a
// hit inside an item. Rows are shared (std::shared_ptr) between the model,
// its sorted list and their parents, and are equal by `id`.
//
// Threads: the fields below `dynamic` are written while the node is made and
// only read afterwards, from any thread. `dynamic` is assigned on the main
// loop only (`setDynamic`); a visible check works on a copy and hands the copy
// back. `suppliedSearchResult` sits behind its lock since checks and the main
// loop both read it.
class UINode {
public:
    enum class Kind { file, folder, fileWithFoundItems, foundItem, package };
    enum class VisibleCheckResultAction { none, changed, reload, remove };

    // What a row learns after it was made, mostly once it is on screen.
    struct Changable {
        std::string displayKind;
        bool displayStrikeThroughText = false;  // the item has gone
        bool hasLoadedAdditionalDetails = false;
        Kind kind = Kind::file;
        std::vector<std::string> tagNames;
        bool hasLoadedTagNames = false;
        std::vector<std::shared_ptr<UINode>> children;
        int currentColorIndex = 0;
        bool tryCollectSummaryLines = false;
        bool deleteFromResultsIfMissing = false;
        bool hasTriedToLoadPreview = false;
        std::vector<VisualState> visualStatesChecked;
        std::uint64_t totalSize = 0;
        std::string displayTotalSize;
        std::int64_t contentSearchResultsRank = 0;
        bool hasCalculatedFolderSize = false;

        bool operator==(const Changable&) const = default;
    };

    struct VisibleCheckResult {
        VisibleCheckResultAction action = VisibleCheckResultAction::none;
        Changable changes;
        std::optional<std::vector<FoundItem>> foundItems;
    };

    using NodeList = std::vector<std::shared_ptr<UINode>>;

    // A row for a result, with no file-system call for a file: kind text and
    // size text come from tables. A result with found items gets one child
    // row per item.
    static std::shared_ptr<UINode> create(const SearchResult& searchResult, HighlightWords highlight = {},
                                          const Clock& clock = SystemClock::shared());
    // A row for a URL with no result; its kind, size and dates are read now
    // (0 where they can't be). With `replacing`, `replacedID` takes its id.
    static std::shared_ptr<UINode> create(const Url& url, const std::shared_ptr<UINode>& parent,
                                          const UINode* replacing = nullptr, HighlightWords highlight = {},
                                          const Clock& clock = SystemClock::shared());
    // One row per direct entry of a folder; entries whose name begins with
    // "." only with `includeHiddenItems`. Fails when the folder can't be listed.
    static Result<NodeList> nodesForContentsOfFolder(const Url& folder, bool includeHiddenItems = false,
                                                     HighlightWords highlight = {});
    // The same, logging a failure and answering no rows.
    static NodeList nodesForContentsOfFolderIgnoringError(const Url& folder);

    // A new sorted list: by the column (ties by ascending name, then path), stable. A
    // query text (its name words joined) lets the name column lift items that
    // start with it, by the preferences "moveFoldersToTop" and
    // "moveItemsStartingWithQueryToTop"; without one the preferences aren't read.
    static NodeList sortNodes(const NodeList& nodes, Column byColumn, bool currentColumnReversed,
                              const std::optional<std::string>& queryText, const Preferences& preferences);

    // The highest content rank among the rows' results; 0 for none.
    static std::int64_t calculateHighestRank(const NodeList& nodes);

    UINode(const UINode&) = delete;
    UINode& operator=(const UINode&) = delete;

    // The summary line of a hit, else the file name with " (<found items>)"
    // when the result carries a found-items list.
    std::string displayName() const;
    // The collation key of `displayName()`. Every sort of a growing list reads
    // it again, so it is made once and remade only when the name changes.
    std::string nameSortKey() const;

    Changable dynamic() const { return dynamicState.value(); }
    // The children of `dynamic`, without copying the rest of it: a sort asks
    // every row.
    NodeList children() const {
        return dynamicState.access([](const Changable& changes) { return changes.children; });
    }
    // Main loop only. `isInChanged` is true while the value changes.
    void setDynamic(Changable changes);
    bool isInChanged() const { return inChange.load(); }

    std::optional<SearchResult> searchResult() const { return suppliedSearchResult.value(); }
    // Main loop only: the rank that a late content search gave.
    void setSearchResultRank(std::int64_t rank);

    // Main loop only: records the size of a folder and its text ("--" for 0).
    void setCalculatedFolderSize(std::uint64_t size);

    // Main loop only. Fills `children` of a folder row that has none, from
    // the disk, sorted like the list.
    void loadChildren(Column currentColumn, bool currentColumnReversed, const std::optional<std::string>& queryText,
                      const Preferences& preferences);
    void purgeChildren();

    // The work that waits until a row is on screen: existence, strike-through,
    // tags, the alias kind. Runs off the main loop on a copy of `dynamic`.
    VisibleCheckResult visibleOnScreenChecksModern(VisualState hint, const Preferences& preferences) const;

    // A child row for a hit inside this row's item.
    std::shared_ptr<UINode> childForFoundItem(const FoundItem& item) const;

    bool operator==(const UINode& other) const { return id == other.id; }

    const Uuid id = Uuid::random();
    std::optional<Uuid> replacedID;
    Url fileURL;
    Clock::TimePoint nodeCreated;
    std::string displayPath;  // the parent folder, without a leading volumes folder
    std::int64_t modificationDate = 0;  // whole seconds since 1970; 0 unknown
    std::int64_t creationDate = 0;
    std::int64_t lastAccessDate = 0;
    std::string displayInside;  // the parent folder's name
    std::vector<std::string> displayWordsToHighlight;
    bool displayWordsToHighlightIsCaseSensitive = false;
    std::weak_ptr<UINode> parent;
    std::optional<std::string> summaryLine;
    std::optional<FoundItem> foundItem;
    bool isSelected = false;

private:
    UINode() = default;
    void setDisplayLocation(const std::string& path);

    Locked<std::optional<SearchResult>> suppliedSearchResult;
    Locked<Changable> dynamicState;
    mutable Locked<std::pair<std::string, std::string>> nameAndSortKey;  // display name, its collation key
    std::atomic<bool> inChange{false};
};

using UINodePtr = std::shared_ptr<UINode>;

}  // namespace quester
