#pragma once

#include <optional>
#include <string>

namespace quester {

// What sysfs tells of the block device behind a mount source such as
// "/dev/sdb1". Sources that are no block device ("server:/export", "tmpfs")
// are not found.
class BlockDevice {
public:
    // None when `source` is not a block device node.
    static std::optional<BlockDevice> forSource(const std::string& source);

    // The device's folder in sysfs, its partition resolved to the whole disk.
    const std::string& sysfsDiskPath() const { return diskPath; }

    // The disk can be taken out (the kernel's `removable` flag) or hangs on a
    // USB bus, where many external disks report themselves as fixed.
    bool isRemovable() const;
    // A loop device, which is how disk images are mounted.
    bool isLoop() const;

private:
    explicit BlockDevice(std::string diskPath) : diskPath(std::move(diskPath)) {}
    std::string diskPath;
};

}  // namespace quester
