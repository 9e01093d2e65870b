#include "NamedLocation.h"

#include "platform/FileSystem.h"
#include "query/SearchLocation.h"
#include "stores/FavoriteFolders.h"
#include "stores/GroupStore.h"

namespace quester::cli {
namespace {

Result<std::vector<std::string>> reachableMembers(const GroupModel& group) {
    std::vector<std::string> folders;
    for (const auto& url : group.fileUrls()) {
        const auto status = FileSystem::real().status(url.path());
        if (status && status->isDirectory()) folders.push_back(url.path());
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
