#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
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
// A search may hold a million rows, so a row keeps its path in two pieces:
// the folder part, which the rows of one folder share, and its own name. It
// derives every text it shows from them when asked, the path included. What it learns later
// (`Changable`) is derived from its fixed fields until the first change;
// only a row whose state differs from that holds a `Changable` of its own.
//
// Threads: the public fields are written while the node is made and only
// read afterwards, from any thread. `dynamic` is assigned on the main loop
// only (`setDynamic`); a visible check works on a copy and hands the copy
// back.
class UINode {
    struct MadeByCreate {};

public:
    enum class Kind : std::uint8_t { file, folder, fileWithFoundItems, foundItem, package };
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
    using Highlight = std::shared_ptr<const HighlightWords>;
    using FoundLines = std::map<std::string, std::vector<CharacterRange>>;

    // A row for a result, with no file-system call for a file: kind text and
    // size text come from tables. A result with found items gets one child
    // row per item. The rows of one search share one `highlight`.
    static std::shared_ptr<UINode> create(const SearchResult& searchResult, Highlight highlight = {},
                                          const Clock& clock = SystemClock::shared());
    // A row for a URL with no result; its kind, size and dates are read now
    // (0 where they can't be). With `replacing`, `replacedID` takes its id.
    static std::shared_ptr<UINode> create(const Url& url, const std::shared_ptr<UINode>& parent,
                                          const UINode* replacing = nullptr, Highlight highlight = {},
                                          const Clock& clock = SystemClock::shared());
    // One row per direct entry of a folder; entries whose name begins with
    // "." only with `includeHiddenItems`. Fails when the folder can't be listed.
    static Result<NodeList> nodesForContentsOfFolder(const Url& folder, bool includeHiddenItems = false,
                                                     const Highlight& highlight = {});
    // The same, logging a failure and answering no rows.
    static NodeList nodesForContentsOfFolderIgnoringError(const Url& folder);

    // A new sorted list: by the column (ties by ascending name, then path), stable. A
    // query text (its name words joined) lets the name column lift items that
    // start with it, by the preferences "moveFoldersToTop" and
    // "moveItemsStartingWithQueryToTop"; without one the preferences aren't read.
    static NodeList sortNodes(const NodeList& nodes, Column byColumn, bool currentColumnReversed,
                              const std::optional<std::string>& queryText, const Preferences& preferences);

    // The highest content rank among the rows made for results; 0 for none.
    static std::int64_t calculateHighestRank(const NodeList& nodes);

    explicit UINode(MadeByCreate) {}
    UINode(const UINode&) = delete;
    UINode& operator=(const UINode&) = delete;

    // The summary line of a hit, else the file name with " (<found items>)"
    // when the result carries a found-items list.
    std::string displayName() const;
    // The collation key of `displayName()`.
    std::string nameSortKey() const;
    // The parent folder without a leading volumes folder; empty for a hit.
    std::string displayPath() const;
    // The parent folder's name; empty for a hit.
    std::string displayInside() const;
    const std::vector<std::string>& displayWordsToHighlight() const;
    bool displayWordsToHighlightIsCaseSensitive() const { return highlight && highlight->isCaseSensitive; }
    // The title of a hit; none for other rows.
    std::optional<std::string> summaryLine() const;
    const FoundItem* foundItem() const { return extras && extras->hit ? &*extras->hit : nullptr; }
    // The id of the row this one took the place of.
    std::optional<Uuid> replacedID() const { return extras ? extras->replacedID : std::nullopt; }
    // The folder row this entry was listed under.
    std::weak_ptr<UINode> parent() const { return extras ? extras->parent : std::weak_ptr<UINode>(); }

    Changable dynamic() const;
    // The children of `dynamic`, without copying the rest of it: a sort asks
    // every row.
    NodeList children() const;
    // Main loop only. `isInChanged` is true while the value changes.
    void setDynamic(Changable changes);
    bool isInChanged() const { return inChange.load(); }

    bool isFromSearchResult() const { return madeFromResult; }
    // Known from the cache of a disk that is not connected now.
    bool isOffline() const { return offline; }
    // The content rank of the result the row was made for.
    std::int64_t searchResultRank() const { return rank.load(); }
    // Main loop only: the rank that a late content search gave.
    void setSearchResultRank(std::int64_t newRank) { rank.store(newRank); }
    // The found lines of the result, with where the query's words lie in
    // them; null when it carried none.
    const FoundLines* contentSearchResults() const {
        return extras && extras->foundLines ? &*extras->foundLines : nullptr;
    }

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

    // The item's URL, its path made now.
    Url fileURL() const;
    // The last component of the path.
    std::string_view fileName() const;
    // Whether this row's path sorts before the other's, byte by byte.
    bool pathComesBefore(const UINode& other) const;
    // The `crc64` of the path, without making it.
    std::int64_t pathKey() const;

    const Uuid id = Uuid::random();
    Clock::TimePoint nodeCreated;
    std::int64_t modificationDate = 0;  // whole seconds since 1970; 0 unknown
    std::int64_t creationDate = 0;
    std::int64_t lastAccessDate = 0;

private:
    // What few rows have; a plain result's row holds none.
    struct Extras {
        std::optional<FoundItem> hit;
        std::optional<FoundLines> foundLines;
        std::optional<Uuid> replacedID;
        std::weak_ptr<UINode> parent;
    };

    static std::shared_ptr<UINode> made(Clock::TimePoint created, Highlight highlight);
    void setFileURL(const Url& url);
    // Everything but the tags and found items, which go to the first `Changable`.
    void takeFieldsOf(const SearchResult& searchResult);
    // The state `dynamic` answers while the row holds none of its own.
    Changable initialChanges() const;
    // Makes `changes` the row's state, held only when it differs from the initial one.
    void keep(Changable changes);

    // The path up to its last "/" included, and the rest, zero-ended: path
    // is folderPart + namePart, whatever the path.
    std::shared_ptr<const std::string> folderPart;
    std::unique_ptr<char[]> namePart;
    std::string_view folderText() const { return folderPart ? std::string_view(*folderPart) : std::string_view(); }
    std::string_view nameText() const { return namePart ? std::string_view(namePart.get()) : std::string_view(); }
    Highlight highlight;
    std::unique_ptr<const Extras> extras;
    const std::string* kindText = nullptr;  // interned: rows share the few kind texts
    std::uint64_t size = 0;
    std::atomic<std::int64_t> rank{0};
    std::int32_t foundItemCount = -1;  // -1: the result carried no found-items list
    Kind kind = Kind::file;
    bool madeFromResult = false;
    bool deleteFromResultsIfMissing = false;
    bool tryCollectSummaryLines = false;
    bool strikeThroughIfMissing = false;
    bool offline = false;
    bool isDirectory = false;
    std::atomic<bool> inChange{false};
    Locked<std::unique_ptr<Changable>> changed;  // null: `initialChanges` holds
};

using UINodePtr = std::shared_ptr<UINode>;

}  // namespace quester
