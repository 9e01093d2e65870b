#include "platform/VolumeLabel.h"

#include <blkid/blkid.h>

#include <filesystem>

#include "platform/MountEntry.h"
#include "support/PathText.h"

namespace quester {
namespace {

// Probes the device itself, read-only. The library's cache is left alone: a
// search writes no system state, and reading the cache as root rewrites it.
std::optional<std::string> labelFromBlkid(const std::string& device) {
    blkid_probe probe = blkid_new_probe_from_filename(device.c_str());
    if (probe == nullptr) return std::nullopt;
    blkid_probe_enable_superblocks(probe, 1);
    blkid_probe_set_superblocks_flags(probe, BLKID_SUBLKS_LABEL);
    std::optional<std::string> label;
    const char* value = nullptr;
    if (blkid_do_safeprobe(probe) == 0 && blkid_probe_lookup_value(probe, "LABEL", &value, nullptr) == 0 &&
        value != nullptr && *value != '\0') {
        label = value;
    }
    blkid_free_probe(probe);
    return label;
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// udev writes bytes it won't put in a file name as "\xNN".
std::string decodeUdevName(const std::string& name) {
    std::string decoded;
    for (std::size_t i = 0; i < name.size(); ++i) {
        if (name[i] == '\\' && i + 3 < name.size() && name[i + 1] == 'x' && hexDigit(name[i + 2]) >= 0 &&
            hexDigit(name[i + 3]) >= 0) {
            decoded += static_cast<char>(hexDigit(name[i + 2]) * 16 + hexDigit(name[i + 3]));
            i += 3;
        } else {
            decoded += name[i];
        }
    }
    return decoded;
}

std::optional<std::string> labelFromUdevLinks(const std::string& device) {
    std::error_code error;
    auto target = std::filesystem::canonical(device, error);
    if (error) return std::nullopt;
    for (std::filesystem::directory_iterator it("/dev/disk/by-label", error), end; !error && it != end;
         it.increment(error)) {
        std::error_code linkError;
        if (std::filesystem::canonical(it->path(), linkError) == target && !linkError) {
            return decodeUdevName(it->path().filename().string());
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::string> VolumeLabel::ofDevice(const std::string& source) {
    if (source.rfind("/dev/", 0) != 0) return std::nullopt;
    if (auto label = labelFromBlkid(source)) return label;
    return labelFromUdevLinks(source);
}

std::string VolumeLabel::nameFor(const MountEntry& mount) {
    if (auto label = ofDevice(mount.source)) return *label;
    return lastPathComponent(mount.mountPoint.empty() ? std::string("/") : mount.mountPoint);
}

}  // namespace quester
