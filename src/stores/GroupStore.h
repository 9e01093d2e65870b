#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "stores/GroupModel.h"
#include "stores/Preferences.h"

namespace quester {

// Every group, kept as one JSON array under the preference
// "GroupStoreJSONData". A group that doesn't read is dropped and the others
// load. Each change reads the array as the file holds it now, applies itself
// to the group it names and writes the array back under the file's lock, so
// two processes changing groups at once keep both changes. Any thread.
class GroupStore {
public:
    static constexpr const char* key = "GroupStoreJSONData";

    explicit GroupStore(Preferences& preferences = Preferences::shared());

    std::vector<GroupModel> content() const;
    std::optional<GroupModel> load(const std::optional<Uuid>& id) const;
    // The first group of that name.
    std::optional<GroupModel> groupNamed(const std::string& name) const;

    // Appends a new, empty group of that name and saves it.
    Result<GroupModel> newGroup(const std::string& name = "Untitled");
    // Applies `edit` to the stored group of that id and saves; `notFound`
    // when there is no such group. Answers the group as saved.
    Result<GroupModel> change(const Uuid& id, const std::function<void(GroupModel& group)>& edit);
    Status removeGroup(const Uuid& id);
    // `content` sorted by name, stably.
    std::vector<GroupModel> sorted() const;

private:
    Preferences& preferences;
};

}  // namespace quester
