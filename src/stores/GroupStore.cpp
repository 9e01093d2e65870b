#include "stores/GroupStore.h"

#include <algorithm>

#include "stores/StoredList.h"
#include "support/LogFunc.h"

namespace quester {
namespace {

using json = nlohmann::json;

std::vector<GroupModel> decodeGroups(const json& array) {
    return decodeStoredList<GroupModel>(array, &GroupModel::fromStored);
}

json encodeGroups(const std::vector<GroupModel>& groups) {
    return encodeStoredList(groups, [](const GroupModel& group) { return group.toStored(); });
}

}  // namespace

GroupStore::GroupStore(Preferences& preferences) : preferences(preferences) {}

std::vector<GroupModel> GroupStore::content() const {
    return decodeGroups(preferences.jsonValue(key).value_or(json()));
}

std::optional<GroupModel> GroupStore::load(const std::optional<Uuid>& id) const {
    if (!id) return std::nullopt;
    for (auto& group : content())
        if (group.id == *id) return group;
    return std::nullopt;
}

std::optional<GroupModel> GroupStore::groupNamed(const std::string& name) const {
    for (auto& group : content())
        if (group.name == name) return group;
    return std::nullopt;
}

Result<GroupModel> GroupStore::newGroup(const std::string& name) {
    GroupModel group;
    group.id = Uuid::random();
    group.name = name;
    Status saved = preferences.update([&](json& values) {
        auto groups = decodeGroups(storedValue(values, key));
        groups.push_back(group);
        values[key] = encodeGroups(groups);
    });
    if (!saved) return saved.error();
    LOG("new group " + group.id.toString());
    return group;
}

Result<GroupModel> GroupStore::change(const Uuid& id, const std::function<void(GroupModel& group)>& edit) {
    std::optional<GroupModel> changed;
    Status saved = preferences.update([&](json& values) {
        auto groups = decodeGroups(storedValue(values, key));
        auto found =
            std::find_if(groups.begin(), groups.end(), [&](const GroupModel& group) { return group.id == id; });
        if (found == groups.end()) return;
        edit(*found);
        changed = *found;
        values[key] = encodeGroups(groups);
    });
    if (!saved) return saved.error();
    if (!changed) return makeError(ErrorCode::notFound, "no group " + id.toString());
    return *changed;
}

Status GroupStore::removeGroup(const Uuid& id) {
    return preferences.update([&](json& values) {
        auto groups = decodeGroups(storedValue(values, key));
        std::erase_if(groups, [&](const GroupModel& group) { return group.id == id; });
        values[key] = encodeGroups(groups);
    });
}

std::vector<GroupModel> GroupStore::sorted() const {
    auto groups = content();
    std::stable_sort(groups.begin(), groups.end(),
                     [](const GroupModel& a, const GroupModel& b) { return a.name < b.name; });
    return groups;
}

}  // namespace quester
