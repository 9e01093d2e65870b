#include "platform/MountEntry.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "platform/PlatformProfile.h"
#include "support/PathText.h"

namespace quester {
namespace {

constexpr std::array<std::string_view, 12> networkTypes = {
    "nfs", "nfs4", "cifs", "smb3", "smbfs", "ncpfs", "afs", "ceph", "glusterfs", "9p", "davfs", "fuse.glusterfs"};

constexpr std::array<std::string_view, 9> remoteFuseTypes = {"fuse.sshfs",     "fuse.rclone",  "fuse.s3fs",
                                                             "fuse.curlftpfs", "fuse.gcsfuse", "fuse.davfs",
                                                             "fuse.smbnetfs",  "fuse.goofys",  "fuse.onedriver"};

constexpr std::array<std::string_view, 30> pseudoTypes = {
    "proc",      "sysfs",   "cgroup",          "cgroup2",     "devtmpfs",   "devpts",       "tmpfs",      "ramfs",
    "mqueue",    "debugfs", "tracefs",         "securityfs",  "pstore",     "bpf",          "configfs",   "fusectl",
    "hugetlbfs", "autofs",  "binfmt_misc",     "efivarfs",    "overlay",    "nsfs",         "rpc_pipefs", "selinuxfs",
    "nfsd",      "binder",  "fuse.gvfsd-fuse", "fuse.portal", "fuse.lxcfs", "fuse.snapfuse"};

constexpr std::array<std::string_view, 4> systemRuntimeFolders = {"/run", "/dev", "/sys", "/proc"};

template <std::size_t N>
bool contains(const std::array<std::string_view, N>& names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

bool MountEntry::isNetwork() const {
    return contains(networkTypes, fsType) || contains(remoteFuseTypes, fsType);
}

bool MountEntry::isPseudo() const {
    return contains(pseudoTypes, fsType);
}

bool MountEntry::isReadOnly() const {
    auto list = splitNonEmpty(options, ',');
    return std::find(list.begin(), list.end(), "ro") != list.end();
}

bool MountEntry::holdsPersonalFiles() const {
    if (fsType == "tmpfs") {
        return std::none_of(systemRuntimeFolders.begin(), systemRuntimeFolders.end(),
                            [&](std::string_view folder) { return isSameOrBelow(mountPoint, folder); });
    }
    if (fsType == "squashfs" && isSameOrBelow(mountPoint, "/snap")) return false;
    return !isPseudo();
}

bool MountEntry::isVolume(const PlatformProfile& profile) const {
    if (mountPoint == "/") return true;
    if (isPseudo()) return false;
    if (isNetwork() || mountPoint == "/home") return true;
    for (std::string_view folder :
         {std::string_view("/media"), std::string_view("/run/media"), std::string_view("/mnt")}) {
        if (isStrictlyBelow(mountPoint, folder)) return true;
    }
    return isStrictlyBelow(mountPoint, profile.volumesFolder);
}

}  // namespace quester
