#include "platform/DiskInfoManager.h"

#include <algorithm>

#include "platform/BlockDevice.h"
#include "support/LogFunc.h"
#include "support/PathText.h"

namespace quester {
namespace {

bool hasMarkers(const std::string& mountPoint, const std::vector<std::string>& markers) {
    return !markers.empty() && std::all_of(markers.begin(), markers.end(), [&](const std::string& name) {
        return Url(joinPath(mountPoint, name)).isReachable();
    });
}

}  // namespace

DiskInfoManager::DiskInfoManager(FSUtilities& fsUtilities, NotificationCenter& notificationCenter)
    : utilities(fsUtilities), center(notificationCenter) {}

DiskInfoManager::~DiskInfoManager() {
    monitor.reset();
}

DiskInfoManager& DiskInfoManager::shared() {
    static DiskInfoManager* instance = [] {
        auto* made = new DiskInfoManager(FSUtilities::shared());
        if (Status built = made->buildAllAndWatch(); !built) {
            LOG("disks are not watched: " + built.error().message);
        }
        return made;
    }();
    return *instance;
}

Status DiskInfoManager::buildAllAndWatch() {
    auto table = MountTable::read();
    if (!table) return table.error();
    buildAll(*table);
    return watchForDiskMountOrUnmount(std::move(*table));
}

void DiskInfoManager::buildAll(const MountTable& table) {
    for (const auto& entry : table.volumes(utilities.profile())) add(entry);
}

Status DiskInfoManager::watchForDiskMountOrUnmount(std::optional<MountTable> baseline) {
    auto started =
        MountMonitor::start([this](const MountChanges& changes) { handleMountChanges(changes); }, std::move(baseline));
    if (!started) return started.error();
    monitor = std::move(*started);
    return Status::success();
}

void DiskInfoManager::handleMountChanges(const MountChanges& changes) {
    bool changed = false;
    for (const auto& entry : changes.unmounted) changed = remove(Url(entry.mountPoint, true)) || changed;
    for (const auto& entry : changes.mounted) changed = add(entry) || changed;
    if (changed) postRebuildLocationPopupNotification();
}

DiskInfo DiskInfoManager::makeInfo(const MountEntry& disk) const {
    DiskInfo info;
    info.url = Url(disk.mountPoint, true);
    info.isMacFS = disk.fsType == "apfs" || disk.fsType == "hfs" || disk.fsType == "hfsplus";
    info.isBackup = info.isMacFS && utilities.isBackupDisk(info.url);
    info.isLocal = !disk.isNetwork();
    auto device = BlockDevice::forSource(disk.source);
    info.isInternal = info.isLocal && !(device && device->isRemovable());
    info.isSystemDisk = hasMarkers(disk.mountPoint, utilities.profile().systemDiskMarkers);
    info.isDiskImage = device && device->isLoop();
    info.diskKey = FSUtilities::keyForMount(disk);
    return info;
}

bool DiskInfoManager::add(const MountEntry& disk) {
    if (!disk.isVolume(utilities.profile())) return false;
    DiskInfo info = makeInfo(disk);
    disks.access([&](auto& list) {
        std::erase_if(list, [&](const DiskInfo& known) { return known.url == info.url; });
        list.push_back(std::move(info));
    });
    updateKnownVolumePaths();
    return true;
}

bool DiskInfoManager::remove(const Url& disk) {
    bool removed = disks.access(
        [&](auto& list) { return std::erase_if(list, [&](const DiskInfo& info) { return info.url == disk; }) > 0; });
    if (removed) updateKnownVolumePaths();
    return removed;
}

void DiskInfoManager::updateKnownVolumePaths() {
    std::vector<std::string> paths;
    for (const auto& info : disks.value()) paths.push_back(info.url.path());
    utilities.setKnownVolumePaths(std::move(paths));
}

std::optional<DiskInfo> DiskInfoManager::info(const std::string& forDisk) const {
    return disks.access([&](const auto& list) -> std::optional<DiskInfo> {
        auto found =
            std::find_if(list.begin(), list.end(), [&](const DiskInfo& info) { return info.url.path() == forDisk; });
        if (found == list.end()) return std::nullopt;
        return *found;
    });
}

std::vector<DiskInfo> DiskInfoManager::volumes() const {
    auto sorted = disks.value();
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const DiskInfo& a, const DiskInfo& b) { return a.url.path() < b.url.path(); });
    if (auto boot = utilities.profile().bootVolumePath()) {
        std::stable_partition(sorted.begin(), sorted.end(),
                              [&](const DiskInfo& info) { return info.url.path() == *boot; });
    }
    return sorted;
}

std::vector<DiskInfo> DiskInfoManager::externalDisks() const {
    auto list = volumes();
    std::erase_if(list, [](const DiskInfo& info) { return !info.isLocal || info.isDiskImage || info.isInternal; });
    return list;
}

bool DiskInfoManager::isAppOnNonRootButBootableDisk(const std::string& path) const {
    std::string diskPath = utilities.diskPathFromFullPath(path);
    if (diskPath == "/" || diskPath == utilities.profile().bootVolumePath()) return false;
    auto disk = info(diskPath);
    return disk && disk->isSystemDisk;
}

NotificationCenter::Token DiskInfoManager::didChange(std::function<void()> call) {
    return center.addObserver(RebuildLocationPopupNotification, std::move(call));
}

void DiskInfoManager::postRebuildLocationPopupNotification() {
    center.post(RebuildLocationPopupNotification);
}

}  // namespace quester
