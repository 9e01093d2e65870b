#include "platform/Bookmark.h"

#include "platform/FSUtilities.h"
#include "platform/MountTable.h"
#include "platform/Url.h"
#include "support/PathText.h"

namespace quester {

namespace {

std::string belowMountPoint(const std::string& path, const std::string& mountPoint) {
    if (mountPoint == "/") return path.substr(1);
    return path.size() > mountPoint.size() ? path.substr(mountPoint.size() + 1) : std::string();
}

}  // namespace

Result<Bookmark> Bookmark::make(const std::string& path) {
    Url folder(parentPath(path), true);
    std::optional<MountEntry> mount = folder.mountEntry();
    std::string key = FSUtilities::shared().keyForDisk(folder);
    if (!mount || key.empty()) return makeError(ErrorCode::notFound, "no disk holds " + folder.path());
    return Bookmark{path, key, belowMountPoint(path, mount->mountPoint)};
}

Result<Bookmark::Resolved> Bookmark::resolve() const {
    if (FSUtilities::shared().isDiskPresent(parentPath(path), diskKey)) return Resolved{path, false};
    if (auto table = MountTable::current()) {
        for (const MountEntry& mount : table->volumes(FSUtilities::shared().profile()))
            if (FSUtilities::keyForMount(mount) == diskKey)
                return Resolved{joinPath(mount.mountPoint, pathOnDisk), true};
    }
    return makeError(ErrorCode::notFound, "the disk that held " + path + " (" + diskKey + ") is not mounted");
}

}  // namespace quester
