#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "results/Column.h"
#include "results/UINode.h"

namespace quester {

class Preferences;

// Rows kept in the order of one sort (column, direction, query text) while
// batches come: each batch is sorted and merged in, and every row's sort key
// is made once, when its batch comes. Rows equal in the column and in name go
// by path, so the order doesn't depend on the order the rows came in.
//
// A row is placed by the values it had when it was added; a row that changes
// afterwards needs a sort from scratch. The preferences that steer the name
// column are read once, here. Not synchronised.
class SortedNodeList {
public:
    SortedNodeList(Column byColumn, bool currentColumnReversed, std::optional<std::string> queryText,
                   const Preferences& preferences);
    ~SortedNodeList();
    SortedNodeList(SortedNodeList&&) noexcept;
    SortedNodeList& operator=(SortedNodeList&&) noexcept;

    // Sorts `batch` and merges it in after every row it ties with.
    void merge(const UINode::NodeList& batch);
    // The rows in order.
    UINode::NodeList nodes() const;
    std::size_t size() const;

    // Whether this list orders by that column, direction and query text.
    bool sortsBy(Column byColumn, bool currentColumnReversed, const std::optional<std::string>& queryText) const;

private:
    struct Keys;
    std::unique_ptr<Keys> keys;
};

}  // namespace quester
