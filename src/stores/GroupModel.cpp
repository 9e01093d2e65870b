#include "stores/GroupModel.h"

#include <algorithm>

#include "platform/FSUtilities.h"
#include "stores/StoredList.h"

namespace quester {
namespace {

using json = nlohmann::json;

std::optional<Uuid> uuidOf(const json& value) {
    if (!value.is_string()) return std::nullopt;
    return Uuid::fromString(value.get<std::string>());
}

std::optional<URLID> memberFromStored(const json& object) {
    if (!object.is_object()) return std::nullopt;
    const auto id = uuidOf(storedValue(object, "id"));
    const auto& urlText = storedValue(object, "url");
    const auto url = urlText.is_string() ? urlFromFileURLString(urlText.get<std::string>()) : std::nullopt;
    if (!id || !url) return std::nullopt;
    URLID member{*id, *url, std::nullopt};
    const auto& diskKey = storedValue(object, "diskKey");
    if (diskKey.is_string()) member.diskKey = diskKey.get<std::string>();
    return member;
}

}  // namespace

std::vector<Url> GroupModel::fileUrls() const {
    std::vector<Url> files;
    for (const auto& member : urls) files.push_back(member.url);
    return files;
}

std::set<Uuid> GroupModel::add(const std::vector<Url>& added, const FSUtilities& fsUtilities) {
    std::vector<URLID> fresh;
    for (const auto& url : added) {
        const bool isMember =
            std::any_of(urls.begin(), urls.end(), [&](const URLID& member) { return member.url == url; });
        if (isMember) continue;
        std::string diskKey = fsUtilities.keyForDisk(url);
        fresh.push_back({Uuid::random(), url, diskKey.empty() ? std::nullopt : std::optional(std::move(diskKey))});
    }
    std::set<Uuid> ids;
    for (auto& member : fresh) {
        ids.insert(member.id);
        urls.push_back(std::move(member));
    }
    return ids;
}

void GroupModel::addCaches(const std::vector<Uuid>& ids) {
    if (!cacheIDs) {
        cacheIDs = ids;
        return;
    }
    for (const auto& id : ids) {
        if (std::find(cacheIDs->begin(), cacheIDs->end(), id) == cacheIDs->end()) cacheIDs->push_back(id);
    }
}

void GroupModel::remove(const std::set<Uuid>& ids) {
    std::erase_if(urls, [&](const URLID& member) { return ids.contains(member.id); });
    if (cacheIDs) std::erase_if(*cacheIDs, [&](const Uuid& id) { return ids.contains(id); });
}

json GroupModel::toStored() const {
    json members = json::array();
    for (const auto& member : urls) {
        json object{{"id", member.id.toString()}, {"url", fileURLString(member.url)}};
        if (member.diskKey) object["diskKey"] = *member.diskKey;
        members.push_back(std::move(object));
    }
    json object{{"id", id.toString()}, {"name", name}, {"urls", std::move(members)}};
    if (cacheIDs) {
        json caches = json::array();
        for (const auto& cache : *cacheIDs) caches.push_back(cache.toString());
        object["cacheIDs"] = std::move(caches);
    }
    return object;
}

std::optional<GroupModel> GroupModel::fromStored(const json& object) {
    if (!object.is_object()) return std::nullopt;
    const auto id = uuidOf(storedValue(object, "id"));
    const auto& name = storedValue(object, "name");
    const auto& members = storedValue(object, "urls");
    if (!id || !name.is_string() || !members.is_array()) return std::nullopt;
    GroupModel group{*id, name.get<std::string>(), {}, std::nullopt};
    for (const auto& stored : members) {
        auto member = memberFromStored(stored);
        if (!member) return std::nullopt;
        group.urls.push_back(std::move(*member));
    }
    const auto& caches = storedValue(object, "cacheIDs");
    if (caches.is_array()) {
        group.cacheIDs.emplace();
        for (const auto& stored : caches) {
            auto cache = uuidOf(stored);
            if (!cache) return std::nullopt;
            group.cacheIDs->push_back(*cache);
        }
    }
    return group;
}

}  // namespace quester
