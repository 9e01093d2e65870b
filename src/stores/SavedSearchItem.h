#pragma once

#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace quester {

// A search a person named and kept: its query text and where it looks.
struct SavedSearchItem {
    std::string id;  // UUID text
    std::string displayName;
    std::string queryString;
    bool searchHiddenLocations = false;
    std::string location;  // the name of a location (a group, a favourite folder, "home"…), or empty
    // The folders it searches when it names none of those, as given on the
    // command line; kept under "paths", which the other stored keys leave alone.
    std::vector<std::string> paths;
    bool dirty = false;  // not stored: an open window's query differs from it

    bool operator==(const SavedSearchItem&) const = default;

    // The stored map: "id", "userName", "queryString", "searchHidden",
    // "location", and "paths" when there are any.
    nlohmann::json toStored() const;
    // None unless "userName", "queryString" and "location" are text and
    // "searchHidden" a truth value. A missing "id" gets a new UUID.
    static std::optional<SavedSearchItem> fromStored(const nlohmann::json& map);
};

}  // namespace quester
