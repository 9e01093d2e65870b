#include "platform/ExecutableFile.h"

#include <sys/stat.h>

#include <string_view>

namespace quester {

namespace {

constexpr std::string_view kElfMagic =
    "\x7f"
    "ELF";
constexpr std::string_view kShebang = "#!";

}  // namespace

bool isExecutableFile(const std::string& path, FileSystem& fileSystem) {
    const auto status = fileSystem.status(path);
    if (!status || !status->isRegular() || (status->permissions & (S_IXUSR | S_IXGRP | S_IXOTH)) == 0) return false;
    const auto start = fileSystem.readFile(path, kElfMagic.size());
    return start && (start->starts_with(kElfMagic) || start->starts_with(kShebang));
}

}  // namespace quester
