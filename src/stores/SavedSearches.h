#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "stores/Preferences.h"
#include "stores/SavedSearchItem.h"
#include "support/NotificationCenter.h"

namespace quester {

// The saved searches, a list of maps under the preference "savedSearches".
// Changes read the list as the file holds it now and write it back under the
// file's lock, so that two processes saving at once keep both searches. Maps
// that make no item are dropped one by one. Posts "SavedSearches.DidChange"
// after each save. Any thread.
class SavedSearches {
public:
    static constexpr const char* DidChangeNotification = "SavedSearches.DidChange";
    static constexpr const char* key = "savedSearches";

    explicit SavedSearches(Preferences& preferences = Preferences::shared(),
                           NotificationCenter& center = NotificationCenter::shared());

    // Every item by its id, read now.
    std::map<std::string, SavedSearchItem> contents() const;
    // The items sorted by name, for a menu.
    std::vector<SavedSearchItem> sortedByName() const;
    // The first item of that name.
    std::optional<SavedSearchItem> itemNamed(const std::string& displayName) const;

    // `name` if no item has it, else `name-1`, `name-2`… whichever is free first.
    std::string makeUniqueName(const std::string& name) const;

    // Stores the item under its id, replacing one of that id.
    Status save(const SavedSearchItem& item);
    // Removes the item of that id; false when there was none.
    Result<bool> remove(const std::string& id);

    // Calls `handler` on the main loop after each save.
    NotificationCenter::Token didChange(std::function<void()> handler);

private:
    Preferences& preferences;
    NotificationCenter& center;
};

}  // namespace quester
