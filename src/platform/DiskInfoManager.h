#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/DiskInfo.h"
#include "platform/FSUtilities.h"
#include "platform/MountMonitor.h"
#include "platform/MountTable.h"
#include "support/Locked.h"
#include "support/NotificationCenter.h"
#include "support/Result.h"

namespace quester {

// The mounted disks, in the order they arrived, kept current by the mount
// monitor. Readable from any thread; changes come from the monitor's thread
// and are told through the "RebuildLocationPopup" notification, delivered on
// the main loop.
class DiskInfoManager {
public:
    static constexpr const char* RebuildLocationPopupNotification = "RebuildLocationPopup";

    // `utilities` (with its profile) and `center` must outlive the manager.
    explicit DiskInfoManager(FSUtilities& utilities, NotificationCenter& center = NotificationCenter::shared());
    ~DiskInfoManager();
    DiskInfoManager(const DiskInfoManager&) = delete;
    DiskInfoManager& operator=(const DiskInfoManager&) = delete;

    // Made on first use: every volume of the mount table, then watching.
    static DiskInfoManager& shared();

    // Adds each volume of the kernel's table and starts watching it from that
    // same reading, so no mount falls between the two.
    Status buildAllAndWatch();
    // Adds each volume of `table`.
    void buildAll(const MountTable& table);
    // Starts the mount monitor; a mount adds the disk, an unmount removes it,
    // and either posts the notification. Changes are told against `baseline`
    // (the table read now by default). Fails when the monitor can't start.
    Status watchForDiskMountOrUnmount(std::optional<MountTable> baseline = std::nullopt);
    // Applies the monitor's report and posts the notification when a volume
    // came or went.
    void handleMountChanges(const MountChanges& changes);

    // Adds a volume, in place of an entry with the same mount point; mounts
    // that aren't volumes under the profile are ignored. Answers whether it
    // was added.
    bool add(const MountEntry& disk);
    // Drops the entries with that mount point; answers whether any was there.
    bool remove(const Url& disk);

    std::optional<DiskInfo> info(const std::string& forDisk) const;
    // Sorted by path, the boot volume first.
    std::vector<DiskInfo> volumes() const;
    // Local, not internal, not disk images.
    std::vector<DiskInfo> externalDisks() const;
    // The path lies on a disk other than the boot disk that holds an operating system.
    bool isAppOnNonRootButBootableDisk(const std::string& path) const;

    // Calls `call` on the main loop after each change; the token removes it
    // through the notification center.
    NotificationCenter::Token didChange(std::function<void()> call);
    void postRebuildLocationPopupNotification();

private:
    DiskInfo makeInfo(const MountEntry& disk) const;
    void updateKnownVolumePaths();

    FSUtilities& utilities;
    NotificationCenter& center;
    Locked<std::vector<DiskInfo>> disks;
    // Declared last: stopped before anything it calls into goes away.
    std::unique_ptr<MountMonitor> monitor;
};

}  // namespace quester
