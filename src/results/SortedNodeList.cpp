#include "results/SortedNodeList.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <deque>
#include <functional>
#include <iterator>
#include <numeric>
#include <thread>

#include "language/UnicodeText.h"
#include "platform/ItemAttributes.h"
#include "results/DisplayText.h"
#include "results/LocalizedCollation.h"
#include "stores/Preferences.h"

namespace quester {

namespace {

// One record per row, made when the row is added, so that a comparison reads
// no node and collates nothing: the localised texts are collation keys, kept
// in the list's `TextStore`s. The texts end in a zero byte, which neither a
// collation key nor a path holds inside, so a key keeps a pointer where a
// view would cost a length as well: a search may hold a million keys.
struct Key {
    UINodePtr node;
    const char* name = "";
    // What the list's column compares before the name; which member holds
    // it follows from the column, the same for every key of a list.
    union {
        // The compared number of the size, date or rank column. A size
        // fits: no file holds more than 2^63 bytes.
        std::int64_t columnValue = 0;
        // The compared text of the kind, inside, tags or path column.
        const char* columnText;
        // The name column's lift of folders and of names that start with the query.
        std::int32_t sortScore;
    };
};

// Texts appended one after another in large blocks that never move, so that
// keys can point into them: a million short keys cost no allocation each.
// Each text is stored with a zero byte after it. Not synchronised.
class TextStore {
public:
    const char* add(std::string_view text) {
        if (text.empty()) return "";
        const std::size_t needed = text.size() + 1;
        if (blocks.empty() || capacity - used < needed) {
            // Blocks grow from small: a file's few found lines get a list of
            // their own, and a megabyte each would cost more than the lines.
            capacity = std::max(std::min(blockSize, std::max(firstBlockSize, capacity * 2)), needed);
            blocks.push_back(std::make_unique_for_overwrite<char[]>(capacity));
            used = 0;
        }
        char* at = blocks.back().get() + used;
        *std::copy(text.begin(), text.end(), at) = '\0';
        used += needed;
        return at;
    }

private:
    static constexpr std::size_t firstBlockSize = 1 << 12;
    static constexpr std::size_t blockSize = 1 << 20;
    std::vector<std::unique_ptr<char[]>> blocks;
    std::size_t capacity = 0;  // of the last block
    std::size_t used = 0;
};

// Below this many rows a second thread costs more than it saves.
constexpr std::size_t kKeysOnTwoThreadsFrom = 8192;

struct ScoreRules {
    bool moveFoldersToTop = false;
    bool moveItemsStartingWithQueryToTop = false;
    std::string queryText;
};

ScoreRules scoreRules(const std::optional<std::string>& queryText, const Preferences& preferences) {
    if (!queryText) return {};
    return {preferences.boolValue("moveFoldersToTop"), preferences.boolValue("moveItemsStartingWithQueryToTop"),
            lowercased(*queryText)};
}

std::int32_t sortScore(const UINode& node, UINode::Kind kind, const ScoreRules& rules) {
    std::int32_t score = 0;
    if (rules.moveFoldersToTop && kind == UINode::Kind::folder) score = -1000;
    if (rules.moveItemsStartingWithQueryToTop &&
        lowercased(nameWithoutExtension(node.fileName())).starts_with(rules.queryText)) {
        score -= 500;
    }
    return score;
}

std::string tagsKey(std::vector<std::string> tags) {
    std::sort(tags.begin(), tags.end());
    std::string joined;
    for (const auto& tag : tags) {
        if (!joined.empty()) joined += ',';
        joined += tag;
    }
    return joined;
}

std::string columnText(const UINode& node, const UINode::Changable& changes, Column column) {
    switch (column) {
        case Column::kind:
            return LocalizedCollation::standardKey(changes.displayKind);
        case Column::inside:
            return node.displayInside();
        case Column::tags:
            // Rows learn their tags once on screen; a sort by tags can't wait for that.
            return LocalizedCollation::caseInsensitiveKey(tagsKey(
                changes.hasLoadedTagNames ? changes.tagNames : ItemAttributes::tagNames(node.fileURL().path())));
        case Column::path:
            return node.displayPath();
        default:
            return {};
    }
}

std::int64_t columnValue(const UINode& node, const UINode::Changable& changes, Column column) {
    switch (column) {
        case Column::size:
            return static_cast<std::int64_t>(changes.totalSize);
        case Column::modDate:
            return node.modificationDate;
        case Column::created:
            return node.creationDate;
        case Column::lastAccessDate:
            return node.lastAccessDate;
        case Column::rank:
            return changes.contentSearchResultsRank;
        default:
            return 0;
    }
}

// Whether the key of a row reads what the row learnt after it was made:
// copying that costs a formatted size text a row.
bool readsChanges(Column column, const ScoreRules& rules) {
    switch (column) {
        case Column::kind:
        case Column::tags:
        case Column::size:
        case Column::rank:
            return true;
        case Column::name:
            return rules.moveFoldersToTop;
        default:
            return false;
    }
}

// Only the texts the column compares are collated; the name always is, for ties.
Key makeKey(const UINodePtr& node, Column column, const ScoreRules& rules, TextStore& texts) {
    const UINode::Changable changes = readsChanges(column, rules) ? node->dynamic() : UINode::Changable{};
    Key key;
    key.node = node;
    key.name = texts.add(node->nameSortKey());
    switch (column) {
        case Column::image:
            break;
        case Column::name:
            key.sortScore = sortScore(*node, changes.kind, rules);
            break;
        case Column::kind:
        case Column::inside:
        case Column::tags:
        case Column::path:
            key.columnText = texts.add(columnText(*node, changes, column));
            break;
        default:
            key.columnValue = columnValue(*node, changes, column);
    }
    return key;
}

// Rows of the same name (in different folders, or in different case) go by
// their paths, so that a tree always lists the same way, however the walk's
// threads delivered its items.
bool byPath(const Key& a, const Key& b) {
    return a.node->pathComesBefore(*b.node);
}

// Negative, zero or positive as a comes before, ties with or comes after b.
int compared(std::int64_t a, std::int64_t b) {
    return a < b ? -1 : (b < a ? 1 : 0);
}

// a before b by one comparison (`order`) in the sort direction; equal values
// fall back to ascending names, then paths, whatever the direction.
bool inDirectionThenByName(int order, bool forward, const Key& a, const Key& b) {
    if (order != 0) return forward ? order < 0 : order > 0;
    if (const int byName = std::strcmp(a.name, b.name); byName != 0) return byName < 0;
    return byPath(a, b);
}

bool comesBefore(const Key& a, const Key& b, Column column, bool forward) {
    switch (column) {
        case Column::image:
            return false;
        case Column::name:
            if (a.sortScore != b.sortScore) return forward ? a.sortScore < b.sortScore : a.sortScore > b.sortScore;
            if (const int byName = std::strcmp(a.name, b.name); byName != 0) return forward ? byName < 0 : byName > 0;
            return byPath(a, b);
        case Column::size:
        case Column::modDate:
        case Column::created:
        case Column::lastAccessDate:
        case Column::rank:
            return inDirectionThenByName(compared(a.columnValue, b.columnValue), forward, a, b);
        case Column::kind:
        case Column::inside:
        case Column::tags:
        case Column::path:
            return inDirectionThenByName(std::strcmp(a.columnText, b.columnText), forward, a, b);
    }
    return false;
}

}  // namespace

struct SortedNodeList::Keys {
    Column column;
    bool reversed;
    std::optional<std::string> queryText;
    ScoreRules rules;
    std::deque<Key> added;           // in the order the rows came; keys never move
    std::array<TextStore, 2> texts;  // one for each thread that makes keys
    std::vector<std::size_t> order;  // positions in `added`, sorted
};

SortedNodeList::SortedNodeList(Column byColumn, bool currentColumnReversed, std::optional<std::string> queryText,
                               const Preferences& preferences)
    : keys(std::make_unique<Keys>()) {
    keys->column = byColumn;
    keys->reversed = currentColumnReversed;
    keys->rules = scoreRules(queryText, preferences);
    keys->queryText = std::move(queryText);
}

SortedNodeList::~SortedNodeList() = default;
SortedNodeList::SortedNodeList(SortedNodeList&&) noexcept = default;
SortedNodeList& SortedNodeList::operator=(SortedNodeList&&) noexcept = default;

void SortedNodeList::merge(const UINode::NodeList& batch) {
    const std::size_t first = keys->added.size();
    keys->added.resize(first + batch.size());
    const auto makeKeys = [this, &batch, first](std::size_t from, std::size_t to, TextStore& texts) {
        for (std::size_t i = from; i < to; ++i) {
            keys->added[first + i] = makeKey(batch[i], keys->column, keys->rules, texts);
        }
    };
    // Collating the names is most of a merge's work. A large batch, such as
    // the last one of a search, when the walk has stopped and a core waits,
    // shares it with a second thread; each thread has its own collators.
    if (batch.size() >= kKeysOnTwoThreadsFrom) {
        std::thread helper(makeKeys, batch.size() / 2, batch.size(), std::ref(keys->texts[1]));
        makeKeys(0, batch.size() / 2, keys->texts[0]);
        helper.join();
    } else {
        makeKeys(0, batch.size(), keys->texts[0]);
    }
    std::vector<std::size_t> batchOrder(batch.size());
    std::iota(batchOrder.begin(), batchOrder.end(), first);
    const bool forward = !keys->reversed;
    const auto before = [this, forward](std::size_t a, std::size_t b) {
        return comesBefore(keys->added[a], keys->added[b], keys->column, forward);
    };
    std::stable_sort(batchOrder.begin(), batchOrder.end(), before);
    // On a tie std::merge takes the earlier list's row first, as a stable sort would.
    std::vector<std::size_t> merged;
    merged.reserve(keys->order.size() + batchOrder.size());
    std::merge(keys->order.begin(), keys->order.end(), batchOrder.begin(), batchOrder.end(), std::back_inserter(merged),
               before);
    keys->order = std::move(merged);
}

UINode::NodeList SortedNodeList::nodes() const {
    UINode::NodeList sorted;
    sorted.reserve(keys->order.size());
    for (std::size_t index : keys->order) sorted.push_back(keys->added[index].node);
    return sorted;
}

std::size_t SortedNodeList::size() const {
    return keys->order.size();
}

bool SortedNodeList::sortsBy(Column byColumn, bool currentColumnReversed,
                             const std::optional<std::string>& queryText) const {
    return keys->column == byColumn && keys->reversed == currentColumnReversed && keys->queryText == queryText;
}

}  // namespace quester
