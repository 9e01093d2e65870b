#include "stores/SavedSearches.h"

#include <algorithm>

#include "stores/StoredList.h"

namespace quester {
namespace {

using json = nlohmann::json;

std::vector<SavedSearchItem> decodeItems(const json& list) {
    return decodeStoredList<SavedSearchItem>(list, &SavedSearchItem::fromStored);
}

json encodeItems(const std::vector<SavedSearchItem>& items) {
    return encodeStoredList(items, [](const SavedSearchItem& item) { return item.toStored(); });
}

}  // namespace

SavedSearches::SavedSearches(Preferences& preferences, NotificationCenter& center)
    : preferences(preferences), center(center) {}

std::map<std::string, SavedSearchItem> SavedSearches::contents() const {
    std::map<std::string, SavedSearchItem> byID;
    for (auto& item : decodeItems(preferences.jsonValue(key).value_or(json()))) byID.emplace(item.id, std::move(item));
    return byID;
}

std::vector<SavedSearchItem> SavedSearches::sortedByName() const {
    std::vector<SavedSearchItem> items;
    for (auto& [id, item] : contents()) items.push_back(std::move(item));
    std::stable_sort(items.begin(), items.end(),
                     [](const SavedSearchItem& a, const SavedSearchItem& b) { return a.displayName < b.displayName; });
    return items;
}

std::optional<SavedSearchItem> SavedSearches::itemNamed(const std::string& displayName) const {
    for (auto& item : sortedByName())
        if (item.displayName == displayName) return item;
    return std::nullopt;
}

std::string SavedSearches::makeUniqueName(const std::string& name) const {
    const auto items = contents();
    auto taken = [&](const std::string& candidate) {
        return std::any_of(items.begin(), items.end(),
                           [&](const auto& entry) { return entry.second.displayName == candidate; });
    };
    if (!taken(name)) return name;
    for (int number = 1;; ++number) {
        std::string candidate = name + "-" + std::to_string(number);
        if (!taken(candidate)) return candidate;
    }
}

Status SavedSearches::save(const SavedSearchItem& item) {
    Status saved = preferences.update([&](json& values) {
        auto items = decodeItems(storedValue(values, key));
        auto same = std::find_if(items.begin(), items.end(), [&](const auto& stored) { return stored.id == item.id; });
        if (same == items.end()) {
            items.push_back(item);
        } else {
            *same = item;
        }
        values[key] = encodeItems(items);
    });
    if (saved) center.post(DidChangeNotification);
    return saved;
}

Result<bool> SavedSearches::remove(const std::string& id) {
    bool removed = false;
    Status saved = preferences.update([&](json& values) {
        auto items = decodeItems(storedValue(values, key));
        removed = std::erase_if(items, [&](const auto& stored) { return stored.id == id; }) > 0;
        values[key] = encodeItems(items);
    });
    if (!saved) return saved.error();
    if (removed) center.post(DidChangeNotification);
    return removed;
}

NotificationCenter::Token SavedSearches::didChange(std::function<void()> handler) {
    return center.addObserver(DidChangeNotification, std::move(handler));
}

}  // namespace quester
