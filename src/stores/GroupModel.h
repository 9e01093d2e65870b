#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "platform/Url.h"
#include "support/Uuid.h"

namespace quester {

class FSUtilities;

// A member of a group that is a file or a folder, with the key of its disk
// when the disk was known at adding.
struct URLID {
    Uuid id;
    Url url;
    std::optional<std::string> diskKey;

    bool operator==(const URLID&) const = default;
};

// A named, user-made search location: files and folders, and disk caches by
// their ids. Members stay when their disk is off line.
struct GroupModel {
    Uuid id;
    std::string name = "Untitled";
    std::vector<URLID> urls;                    // in order of adding
    std::optional<std::vector<Uuid>> cacheIDs;  // none until the first cache is added

    bool operator==(const GroupModel&) const = default;

    std::vector<Url> fileUrls() const;

    // Appends the URLs not yet members, each with a new id and its disk's key
    // (none when the volume can't be read); answers their ids. Doubles within
    // `added` are not looked for.
    std::set<Uuid> add(const std::vector<Url>& added, const FSUtilities& fsUtilities);
    // With no caches yet the ids become the list; otherwise they are appended.
    void addCaches(const std::vector<Uuid>& ids);
    // Takes the members and caches of those ids.
    void remove(const std::set<Uuid>& ids);

    // The stored object: "id", "name", "urls" (each "id", "url" as file URL
    // text, and "diskKey" when there is one), and "cacheIDs" when not none.
    nlohmann::json toStored() const;
    // None when "id", "name" or "urls" is missing or ill-typed, or when a
    // member has no id or no file URL.
    static std::optional<GroupModel> fromStored(const nlohmann::json& object);
};

}  // namespace quester
