#include "stores/SavedSearchItem.h"

#include "stores/StoredList.h"
#include "support/Uuid.h"

namespace quester {

nlohmann::json SavedSearchItem::toStored() const {
    nlohmann::json map{{"id", id},
                       {"userName", displayName},
                       {"queryString", queryString},
                       {"searchHidden", searchHiddenLocations},
                       {"location", location}};
    if (!paths.empty()) map["paths"] = paths;
    return map;
}

std::optional<SavedSearchItem> SavedSearchItem::fromStored(const nlohmann::json& map) {
    if (!map.is_object()) return std::nullopt;
    const auto& name = storedValue(map, "userName");
    const auto& query = storedValue(map, "queryString");
    const auto& hidden = storedValue(map, "searchHidden");
    const auto& location = storedValue(map, "location");
    if (!name.is_string() || !query.is_string() || !hidden.is_boolean() || !location.is_string()) return std::nullopt;
    const auto& id = storedValue(map, "id");
    SavedSearchItem item;
    item.id = id.is_string() ? id.get<std::string>() : Uuid::random().toString();
    item.displayName = name.get<std::string>();
    item.queryString = query.get<std::string>();
    item.searchHiddenLocations = hidden.get<bool>();
    item.location = location.get<std::string>();
    item.paths = decodeStoredTexts(storedValue(map, "paths"));
    return item;
}

}  // namespace quester
