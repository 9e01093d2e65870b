#include <algorithm>

#include "results/SortedNodeList.h"
#include "results/UINode.h"

namespace quester {

UINode::NodeList UINode::sortNodes(const NodeList& nodes, Column byColumn, bool currentColumnReversed,
                                   const std::optional<std::string>& queryText, const Preferences& preferences) {
    if (byColumn == Column::image) return nodes;
    SortedNodeList sorted(byColumn, currentColumnReversed, queryText, preferences);
    sorted.merge(nodes);
    return sorted.nodes();
}

std::int64_t UINode::calculateHighestRank(const NodeList& nodes) {
    std::int64_t highest = 0;
    bool any = false;
    for (const auto& node : nodes) {
        if (!node->isFromSearchResult()) continue;
        const std::int64_t rank = node->searchResultRank();
        highest = any ? std::max(highest, rank) : rank;
        any = true;
    }
    return highest;
}

}  // namespace quester
