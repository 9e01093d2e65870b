#pragma once

#include <string>

#include "support/Uuid.h"

namespace quester {

enum class IgnoreItemType { pathComponent, pathExtension, displayGroup };

// One row of the ignore list. The id is made when the item is made or loaded
// and is never stored: it names a row for one list's life only.
struct IgnoreItem {
    IgnoreItemType type = IgnoreItemType::pathComponent;
    Uuid id;
    std::string text;

    bool operator==(const IgnoreItem&) const = default;
};

}  // namespace quester
