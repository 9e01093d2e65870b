#include "stores/RecentLocations.h"

#include <algorithm>

#include "stores/StoredList.h"

namespace quester {

RecentLocations::RecentLocations(Preferences& preferences) : preferences(preferences) {}

std::vector<std::string> RecentLocations::contents() const {
    return decodeStoredTexts(preferences.jsonValue(key).value_or(nlohmann::json()));
}

std::int64_t RecentLocations::maxElements() const {
    return preferences.integerValue("recentItemsMaxCount");
}

Status RecentLocations::add(const std::string& path) {
    const auto limit = static_cast<std::size_t>(std::max<std::int64_t>(maxElements(), 1));
    return preferences.update([&](nlohmann::json& values) {
        auto paths = decodeStoredTexts(storedValue(values, key));
        if (std::find(paths.begin(), paths.end(), path) != paths.end()) return;
        if (paths.size() >= limit) paths.resize(limit - 1);
        paths.insert(paths.begin(), path);
        values[key] = paths;
    });
}

}  // namespace quester
