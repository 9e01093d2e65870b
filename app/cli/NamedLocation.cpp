#include "NamedLocation.h"

#include "platform/FSUtilities.h"
#include "platform/FileSystem.h"
#include "query/SearchLocation.h"
#include "stores/FavoriteFolders.h"
#include "stores/GroupStore.h"

namespace quester::cli {
namespace {

// A member whose disk was recorded is there only while that disk is: a mount
// point outlives its disk as an empty folder, which is not the member.
bool isReachable(const URLID& member) {
    const auto status = FileSystem::real().status(member.url.path());
    if (!status || !status->isDirectory()) return false;
    return !member.diskKey || FSUtilities::shared().isDiskPresent(member.url.path(), *member.diskKey);
}

Result<std::vector<std::string>> reachableMembers(const GroupModel& group) {
    std::vector<std::string> folders;
    for (const auto& member : group.urls) {
        if (isReachable(member)) folders.push_back(member.url.path());
    }
    if (folders.empty()) {
        return makeError(ErrorCode::notFound, "no folder of the group '" + group.name + "' can be reached now");
    }
    return folders;
}

}  // namespace

Result<NamedLocation> locationNamed(const std::string& name, const std::vector<ContentIndex*>& caches) {
    if (auto group = GroupStore().groupNamed(name)) {
        auto members = reachableMembers(*group);
        if (!members) return members.error();
        return NamedLocation{std::move(*members), nullptr};
    }
    if (auto folder = FavoriteFolders().folderForKeyword(name)) return NamedLocation{{*folder}, nullptr};
    for (const ContentIndex* cache : caches)
        if (cache->displayName() == name) return NamedLocation{{}, cache};
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
