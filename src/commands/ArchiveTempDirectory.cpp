#include "commands/ArchiveTempDirectory.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "support/Uuid.h"

namespace quester {

std::optional<ArchiveTempDirectory> ArchiveTempDirectory::create() {
    std::error_code error;
    const auto base = std::filesystem::temp_directory_path(error);
    if (error) return std::nullopt;
    const auto folder = base / ("quester-archive-" + Uuid::random().toString());
    if (!std::filesystem::create_directory(folder, error) || error) return std::nullopt;
    return ArchiveTempDirectory(folder.string());
}

ArchiveTempDirectory::ArchiveTempDirectory(ArchiveTempDirectory&& other) noexcept
    : folder(std::exchange(other.folder, {})) {}

ArchiveTempDirectory::~ArchiveTempDirectory() {
    if (folder.empty()) return;
    std::error_code error;
    std::filesystem::remove_all(folder, error);
}

}  // namespace quester
