#include "content/AppleDouble.h"

#include <cstdint>

namespace quester {

namespace {

constexpr std::size_t headerSize = 26;
constexpr std::size_t descriptorSize = 12;
constexpr std::uint32_t resourceForkId = 2;
constexpr std::uint32_t finderInfoId = 9;

std::uint32_t bigEndian(std::string_view data, std::size_t offset, std::size_t width) {
    std::uint32_t value = 0;
    for (std::size_t index = 0; index < width; ++index) {
        value = value << 8 | static_cast<unsigned char>(data[offset + index]);
    }
    return value;
}

std::string_view attributeFor(std::uint32_t entryId) {
    if (entryId == resourceForkId) return AppleDouble::resourceForkAttribute;
    if (entryId == finderInfoId) return AppleDouble::finderInfoAttribute;
    return {};
}

}  // namespace

void AppleDouble::apply(std::string_view data, const std::string& targetPath, FileSystem& fileSystem) {
    if (data.size() < headerSize || bigEndian(data, 0, 4) != magic) return;
    const std::uint32_t count = bigEndian(data, 24, 2);
    for (std::uint32_t index = 0; index < count; ++index) {
        const std::size_t descriptor = headerSize + index * descriptorSize;
        if (descriptor + descriptorSize > data.size()) return;
        const std::string_view attribute = attributeFor(bigEndian(data, descriptor, 4));
        const std::uint64_t offset = bigEndian(data, descriptor + 4, 4);
        const std::uint64_t length = bigEndian(data, descriptor + 8, 4);
        if (attribute.empty() || length == 0 || offset + length > data.size()) continue;
        (void)fileSystem.setExtendedAttribute(targetPath, std::string(attribute), data.substr(offset, length));
    }
}

std::optional<std::string> AppleDouble::sidecarBeside(std::string_view entryPath) {
    const std::size_t nameStart = entryPath.rfind('/') + 1;  // 0 when there is no folder
    if (nameStart == entryPath.size()) return std::nullopt;
    return std::string(entryPath.substr(0, nameStart)) + "._" + std::string(entryPath.substr(nameStart));
}

}  // namespace quester
