#pragma once

#include <string>

namespace quester {

struct PlatformProfile;

// One line of the kernel's mount table.
struct MountEntry {
    int id = 0;
    int parentId = 0;
    std::string mountPoint;
    // The mounted device ("/dev/sdb1") or what stands for it ("server:/export", "tmpfs").
    std::string source;
    // "ext4", "nfs4", "fuse.sshfs", ...; empty when the table has none.
    std::string fsType;
    // The mount options followed by the file system's own, comma-separated.
    std::string options;

    bool operator==(const MountEntry&) const = default;

    // A file system reached over the network, including FUSE file systems that
    // stand for a remote store.
    bool isNetwork() const;
    // A kernel or container file system that holds nothing a person browses.
    bool isPseudo() const;
    bool isReadOnly() const;
    // Whether a person's files may live here, so that the mount is walked as
    // a disk of its own when a search reaches it: not a pseudo file system,
    // a container's layers or a snap's image, though a tmpfs outside the
    // system's run-time folders (/tmp) is.
    bool holdsPersonalFiles() const;
    // Whether this mount is a volume a person browses and searches: "/",
    // "/home" when separate, mounts below /media, /run/media, /mnt and the
    // profile's volumes folder, and network mounts anywhere.
    bool isVolume(const PlatformProfile& profile) const;
};

}  // namespace quester
