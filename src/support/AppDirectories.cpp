#include "support/AppDirectories.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <system_error>
#include <vector>

#include "support/Locked.h"
#include "support/PathText.h"

namespace quester {
namespace {

constexpr const char* kAppFolder = "quester";

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? std::string(value) : std::string();
}

// The folder for one kind of files: under QUESTER_HOME when set, else the
// XDG variable when it holds an absolute path, else the home-relative default.
Result<std::string> baseDirectory(const char* questerHomeSubfolder, const char* xdgVariable,
                                  const char* homeRelativeDefault) {
    std::string questerHome = environment("QUESTER_HOME");
    if (!questerHome.empty()) return joinPath(questerHome, questerHomeSubfolder);
    std::string xdg = environment(xdgVariable);
    if (!xdg.empty() && xdg.front() == '/') return joinPath(xdg, kAppFolder);
    std::string home = AppDirectories::homeDirectory();
    if (home.empty()) return makeError(ErrorCode::notFound, "The home folder of the user is unknown");
    return joinPath(joinPath(home, homeRelativeDefault), kAppFolder);
}

Result<std::string> createdDirectory(Result<std::string> path) {
    if (!path) return path;
    Status created = createDirectoryWithParents(*path);
    if (!created) return created.error();
    return path;
}

std::string passwdHomeDirectory() {
    long suggested = sysconf(_SC_GETPW_R_SIZE_MAX);
    std::vector<char> buffer(suggested > 0 ? static_cast<std::size_t>(suggested) : 16384);
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr) return {};
    return found->pw_dir ? std::string(found->pw_dir) : std::string();
}

ErrorCode errorCodeFor(const std::error_code& error) {
    if (error == std::errc::permission_denied || error == std::errc::operation_not_permitted)
        return ErrorCode::permissionDenied;
    return ErrorCode::ioError;
}

}  // namespace

Status createDirectoryWithParents(const std::string& path) {
    std::error_code error;
    std::filesystem::create_directories(path, error);
    if (error) return makeError(errorCodeFor(error), "Can't create folder " + path + ": " + error.message());
    if (!std::filesystem::is_directory(path, error)) return makeError(ErrorCode::ioError, "Not a folder: " + path);
    return Status::success();
}

Result<std::string> AppDirectories::configDirectory() {
    return createdDirectory(configDirectoryPath());
}

Result<std::string> AppDirectories::configDirectoryPath() {
    return baseDirectory("config", "XDG_CONFIG_HOME", ".config");
}

Result<std::string> AppDirectories::applicationSupportDirectoryPath() {
    return baseDirectory("data", "XDG_DATA_HOME", ".local/share");
}

Result<std::string> AppDirectories::appCachesDirectory() {
    return createdDirectory(baseDirectory("cache", "XDG_CACHE_HOME", ".cache"));
}

Result<std::string> AppDirectories::applicationSupportDirectory() {
    return createdDirectory(applicationSupportDirectoryPath());
}

Result<std::string> AppDirectories::applicationScriptsDirectory() {
    static Locked<std::map<std::string, std::string>> remembered;
    Result<std::string> data = applicationSupportDirectory();
    if (!data) return data;
    auto known = remembered.access([&](auto& byData) -> std::string {
        auto found = byData.find(*data);
        return found == byData.end() ? std::string() : found->second;
    });
    if (!known.empty()) return known;
    Result<std::string> scripts = createdDirectory(joinPath(*data, "scripts"));
    if (scripts) remembered.access([&](auto& byData) { byData.emplace(*data, *scripts); });
    return scripts;
}

std::string AppDirectories::homeDirectory() {
    std::string home = environment("HOME");
    return !home.empty() && home.front() == '/' ? home : passwdHomeDirectory();
}

bool AppDirectories::removeItem_NoThrow(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::exists(std::filesystem::symlink_status(path, error))) return false;
    std::filesystem::remove_all(path, error);
    return !error;
}

}  // namespace quester
