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

namespace {

Result<Bookmark> bookmarkOn(const std::string& path, const std::string& holder, bool isFolder) {
    Url folder(holder, true);
    std::optional<MountEntry> mount = folder.mountEntry();
    std::string key = FSUtilities::shared().keyForDisk(folder);
    if (!mount || key.empty()) return makeError(ErrorCode::notFound, "no disk holds " + folder.path());
    return Bookmark{path, key, belowMountPoint(path, mount->mountPoint), isFolder};
}

}  // namespace

Result<Bookmark> Bookmark::make(const std::string& path) {
    return bookmarkOn(path, parentPath(path), false);
}

Result<Bookmark> Bookmark::makeForFolder(const std::string& folder) {
    return bookmarkOn(folder, folder, true);
}

Result<Bookmark::Resolved> Bookmark::resolve() const {
    if (FSUtilities::shared().isDiskPresent(isFolder ? path : parentPath(path), diskKey)) return Resolved{path, false};
    // Any place a disk can be mounted, not only the usual folders for disks:
    // a disk moved to /srv is still the disk.
    if (auto table = MountTable::current()) {
        for (const MountEntry& mount : table->entries())
            if (!mount.isPseudo() && FSUtilities::keyForMount(mount) == diskKey)
                return Resolved{joinPath(mount.mountPoint, pathOnDisk), true};
    }
    return makeError(ErrorCode::notFound, "the disk that held " + path + " (" + diskKey + ") is not mounted");
}

}  // namespace quester
