#pragma once

#include <string>

#include "platform/Url.h"

namespace quester {

// One mounted disk as the location lists and the caches see it. A plain value.
struct DiskInfo {
    Url url;                    // the mount point
    bool isMacFS = false;       // formatted APFS or HFS
    bool isBackup = false;      // Mac-formatted and a backup disk
    bool isLocal = false;       // not a network or remote FUSE file system
    bool isSystemDisk = false;  // holds an operating system (the profile's marker folders)
    bool isInternal = false;    // not removable, not on a USB bus, not on the network
    bool isDiskImage = false;   // mounted from a loop device
    // The disk key found at adding; the disk is present at `url` only while
    // the key found there equals this one.
    std::string diskKey;
};

}  // namespace quester
