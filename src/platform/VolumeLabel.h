#pragma once

#include <optional>
#include <string>

namespace quester {

struct MountEntry;

// The name a person knows a volume by.
class VolumeLabel {
public:
    // The file system label of a device node ("/dev/sdb1") through libblkid,
    // else from the udev links in /dev/disk/by-label; none when it has none or
    // `source` is no device. Thread-safe.
    static std::optional<std::string> ofDevice(const std::string& source);

    // Never empty: the label, else the mount point's last component, else "/"
    // for the root file system.
    static std::string nameFor(const MountEntry& mount);
};

}  // namespace quester
