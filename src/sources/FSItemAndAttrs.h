#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/FileStatus.h"

namespace quester {

// One entry of a directory listing, with what a search needs to know of it.
// `wanted` says the listing's filter asked for the entry (a folder is listed
// either way). Without `attributesRead`, only the names and `isDirectory`
// are set.
struct FSItemAndAttrs {
    std::string fullPath;  // directory path + "/" + name
    std::string name;
    bool isDirectory = false;
    bool wanted = false;
    bool attributesRead = false;
    std::uint64_t fileSize = 0;  // 0 for directories
    FileTime modifyTime;
    FileTime createTime;  // birth time; where the file system keeps none, the earlier of change and modification
    FileTime accessTime;
    std::optional<FileSystemId> fileSystem;
    std::optional<std::uint64_t> object;  // inode number
};

}  // namespace quester
