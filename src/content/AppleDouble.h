#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/FileSystem.h"

namespace quester {

// The "._" sidecar files that archives made on another system carry beside
// an entry: a header, descriptors and the entry's resource fork and Finder
// information. Restoring puts them back as extended attributes of the
// extracted file, under the "user." namespace that Linux grants to files.
class AppleDouble {
public:
    static constexpr std::uint32_t magic = 0x00051607;
    static constexpr std::string_view resourceForkAttribute = "user.com.apple.ResourceFork";
    static constexpr std::string_view finderInfoAttribute = "user.com.apple.FinderInfo";

    // Writes the resource fork (entry id 2) and Finder information (id 9) of
    // the sidecar `data` to `targetPath`. Anything malformed is passed over
    // and attribute failures are ignored: restoring never fails.
    static void apply(std::string_view data, const std::string& targetPath,
                      FileSystem& fileSystem = FileSystem::real());
    // The sidecar's path beside the entry at `entryPath`, in the same folder
    // ("a/._b" for "a/b"); none for a folder, whose path ends in "/".
    static std::optional<std::string> sidecarBeside(std::string_view entryPath);
};

}  // namespace quester
