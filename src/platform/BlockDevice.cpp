#include "platform/BlockDevice.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <filesystem>
#include <fstream>

#include "support/PathText.h"

namespace quester {
namespace {

constexpr unsigned loopMajor = 7;

std::string readFirstLine(const std::string& path) {
    std::ifstream in(path);
    std::string line;
    std::getline(in, line);
    return line;
}

}  // namespace

std::optional<BlockDevice> BlockDevice::forSource(const std::string& source) {
    struct stat info {};
    if (source.empty() || source.front() != '/' || stat(source.c_str(), &info) != 0 || !S_ISBLK(info.st_mode)) {
        return std::nullopt;
    }
    std::string link =
        "/sys/dev/block/" + std::to_string(major(info.st_rdev)) + ":" + std::to_string(minor(info.st_rdev));
    std::error_code error;
    std::string device = std::filesystem::canonical(link, error).string();
    if (error) return std::nullopt;
    if (std::filesystem::exists(device + "/partition", error)) device = parentPath(device);
    return BlockDevice(device);
}

bool BlockDevice::isRemovable() const {
    return readFirstLine(diskPath + "/removable") == "1" || diskPath.find("/usb") != std::string::npos;
}

bool BlockDevice::isLoop() const {
    if (lastPathComponent(diskPath).rfind("loop", 0) == 0) return true;
    std::string devNumber = readFirstLine(diskPath + "/dev");
    return devNumber.rfind(std::to_string(loopMajor) + ":", 0) == 0;
}

}  // namespace quester
