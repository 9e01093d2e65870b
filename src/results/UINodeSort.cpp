#include <unicode/unistr.h>

#include <algorithm>

#include "platform/PathText.h"
#include "results/DisplayText.h"
#include "results/LocalizedCollation.h"
#include "results/UINode.h"
#include "stores/Preferences.h"

namespace quester {

namespace {

// One record per row, made before sorting, so that a comparison reads no
// node and collates nothing: the localised texts are collation keys.
struct Key {
    UINodePtr node;
    std::string name;
    std::int64_t sortScore = 0;
    std::uint64_t totalSize = 0;
    std::int64_t modDate = 0;
    std::int64_t created = 0;
    std::int64_t lastAccessDate = 0;
    std::string kind;
    std::string inside;
    std::string tagsKey;
    std::string path;
    std::int64_t rank = 0;
};

struct ScoreRules {
    bool moveFoldersToTop = false;
    bool moveItemsStartingWithQueryToTop = false;
    std::string queryText;
};

std::string lowercased(const std::string& text) {
    std::string lower;
    icu::UnicodeString::fromUTF8(text).toLower().toUTF8String(lower);
    return lower;
}

ScoreRules scoreRules(const std::optional<std::string>& queryText, const Preferences& preferences) {
    if (!queryText) return {};
    return {preferences.boolValue("moveFoldersToTop"), preferences.boolValue("moveItemsStartingWithQueryToTop"),
            lowercased(*queryText)};
}

std::int64_t sortScore(const UINode& node, UINode::Kind kind, const ScoreRules& rules) {
    std::int64_t score = 0;
    if (rules.moveFoldersToTop && kind == UINode::Kind::folder) score = -1000;
    if (rules.moveItemsStartingWithQueryToTop &&
        lowercased(nameWithoutExtension(node.fileURL.path())).starts_with(rules.queryText)) {
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

// Only the texts the column compares are collated; the name always is, for ties.
Key makeKey(const UINodePtr& node, Column column, const ScoreRules& rules) {
    const UINode::Changable changes = node->dynamic();
    Key key;
    key.node = node;
    key.name = node->nameSortKey();
    key.sortScore = sortScore(*node, changes.kind, rules);
    key.totalSize = changes.totalSize;
    key.modDate = node->modificationDate;
    key.created = node->creationDate;
    key.lastAccessDate = node->lastAccessDate;
    if (column == Column::kind) key.kind = LocalizedCollation::standardKey(changes.displayKind);
    if (column == Column::inside) key.inside = node->displayInside;
    if (column == Column::tags) key.tagsKey = LocalizedCollation::caseInsensitiveKey(tagsKey(changes.tagNames));
    if (column == Column::path) key.path = node->displayPath;
    key.rank = changes.contentSearchResultsRank;
    return key;
}

// a before b by one value in the sort direction; equal values fall back to
// ascending names whatever the direction.
template <typename T>
bool inDirectionThenByName(const T& a, const T& b, bool forward, const Key& keyA, const Key& keyB) {
    if (a != b) return forward ? a < b : b < a;
    return keyA.name < keyB.name;
}

bool comesBefore(const Key& a, const Key& b, Column column, bool forward) {
    switch (column) {
        case Column::image: return false;
        case Column::name:
            if (a.sortScore != b.sortScore) return forward ? a.sortScore < b.sortScore : a.sortScore > b.sortScore;
            return forward ? a.name < b.name : b.name < a.name;
        case Column::size: return inDirectionThenByName(a.totalSize, b.totalSize, forward, a, b);
        case Column::modDate: return inDirectionThenByName(a.modDate, b.modDate, forward, a, b);
        case Column::created: return inDirectionThenByName(a.created, b.created, forward, a, b);
        case Column::lastAccessDate: return inDirectionThenByName(a.lastAccessDate, b.lastAccessDate, forward, a, b);
        case Column::kind: return inDirectionThenByName(a.kind, b.kind, forward, a, b);
        case Column::inside: return inDirectionThenByName(a.inside, b.inside, forward, a, b);
        case Column::tags: return inDirectionThenByName(a.tagsKey, b.tagsKey, forward, a, b);
        case Column::path: return inDirectionThenByName(a.path, b.path, forward, a, b);
        case Column::rank: return inDirectionThenByName(a.rank, b.rank, forward, a, b);
    }
    return false;
}

}  // namespace

UINode::NodeList UINode::sortNodes(const NodeList& nodes, Column byColumn, bool currentColumnReversed,
                                   const std::optional<std::string>& queryText, const Preferences& preferences) {
    if (byColumn == Column::image) return nodes;
    const ScoreRules rules = scoreRules(queryText, preferences);
    std::vector<Key> keys;
    keys.reserve(nodes.size());
    for (const auto& node : nodes) keys.push_back(makeKey(node, byColumn, rules));
    const bool forward = !currentColumnReversed;
    // Positions move during the sort, the keys with their texts stay put.
    std::vector<std::size_t> order(keys.size());
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        return comesBefore(keys[a], keys[b], byColumn, forward);
    });
    NodeList sorted;
    sorted.reserve(keys.size());
    for (std::size_t index : order) sorted.push_back(std::move(keys[index].node));
    return sorted;
}

std::int64_t UINode::calculateHighestRank(const NodeList& nodes) {
    std::int64_t highest = 0;
    bool any = false;
    for (const auto& node : nodes) {
        const auto result = node->searchResult();
        if (!result) continue;
        highest = any ? std::max(highest, result->contentSearchResultsRank) : result->contentSearchResultsRank;
        any = true;
    }
    return highest;
}

}  // namespace quester
