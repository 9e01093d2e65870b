#include "NamedLocation.h"

#include <algorithm>

#include "platform/FSUtilities.h"
#include "platform/FileSystem.h"
#include "query/SearchLocation.h"
#include "stores/FavoriteFolders.h"
#include "stores/GroupStore.h"
#include "support/PathText.h"

namespace quester::cli {
namespace {

// A member whose disk was recorded is there only while that disk is: a mount
// point outlives its disk as an empty folder, which is not the member.
bool isReachable(const URLID& member) {
    const auto status = FileSystem::real().status(member.url.path());
    if (!status || !status->isDirectory()) return false;
    return !member.diskKey || FSUtilities::shared().isDiskPresent(member.url.path(), *member.diskKey);
}

// The caches recorded of the member's disk whose folder holds it. The
// member's own disk key decides, since an unplugged member's path now lies
// on whatever disk holds its empty mount point.
std::vector<const ContentIndex*> coveringCaches(const URLID& member, const std::vector<ContentIndex*>& caches) {
    std::vector<const ContentIndex*> covering;
    const std::string& path = member.url.path();
    const std::string disk = member.diskKey.value_or(FSUtilities::shared().keyForDisk(member.url));
    for (const ContentIndex* cache : caches) {
        if (!cache->targetURL() || !isSameOrBelow(path, *cache->targetURL())) continue;
        if (cache->documentInfo().diskKey.value_or(disk) == disk) covering.push_back(cache);
    }
    return covering;
}

void addCache(NamedLocation& location, const ContentIndex* cache, bool isExplicit) {
    auto same = [&](const NamedLocation::Cache& known) { return known.cache == cache; };
    auto found = std::find_if(location.caches.begin(), location.caches.end(), same);
    if (found == location.caches.end())
        location.caches.push_back({cache, isExplicit});
    else
        found->isExplicit = found->isExplicit || isExplicit;
}

// The members that can be reached are searched on disk, each covering cache
// standing back; one that can't is searched through its covering caches,
// which then answer for it like a cache member of the group.
Result<NamedLocation> groupLocation(const GroupModel& group, const std::vector<ContentIndex*>& caches) {
    NamedLocation location;
    for (const auto& id : group.cacheIDs.value_or(std::vector<Uuid>{}))
        for (const ContentIndex* cache : caches)
            if (cache->id() == id) addCache(location, cache, true);
    for (const auto& member : group.urls) {
        const bool reachable = isReachable(member);
        if (reachable) location.folders.push_back(member.url.path());
        for (const ContentIndex* cache : coveringCaches(member, caches)) addCache(location, cache, !reachable);
    }
    if (location.folders.empty() && location.caches.empty())
        return makeError(ErrorCode::notFound,
                         "no member of the group '" + group.name + "' can be reached now, and no cache covers one");
    return location;
}

}  // namespace

Result<NamedLocation> locationNamed(const std::string& name, const std::vector<ContentIndex*>& caches) {
    if (auto group = GroupStore().groupNamed(name)) return groupLocation(*group, caches);
    if (auto folder = FavoriteFolders().folderForKeyword(name)) return NamedLocation{{*folder}, {}};
    for (const ContentIndex* cache : caches)
        if (cache->displayName() == name) return NamedLocation{{}, {{cache, true}}};
    if (auto preset = searchLocationURLSetFromName(name)) {
        NamedLocation location;
        for (const auto& url : SearchLocation::preset(*preset, name).locationURLs())
            location.folders.push_back(url.path());
        return location;
    }
    return makeError(ErrorCode::notFound, "no group, favourite folder, cache or location named '" + name +
                                              "' (see 'quester group list', 'quester favorite list', 'quester cache "
                                              "list'; presets: home, all, local, network, external, backups)");
}

}  // namespace quester::cli
