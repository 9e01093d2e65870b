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

Result<std::vector<std::string>> foldersOfLocationNamed(const std::string& name) {
    if (auto group = GroupStore().groupNamed(name)) return reachableMembers(*group);
    if (auto folder = FavoriteFolders().folderForKeyword(name)) return std::vector<std::string>{*folder};
    if (auto preset = searchLocationURLSetFromName(name)) {
        std::vector<std::string> folders;
        for (const auto& url : SearchLocation::preset(*preset, name).locationURLs()) folders.push_back(url.path());
        return folders;
    }
    return makeError(ErrorCode::notFound, "no group, favourite folder or location named '" + name +
                                              "' (see 'quester group list', 'quester favorite list'; presets: home, "
                                              "all, local, network, external, backups)");
}

}  // namespace quester::cli
