#include "support/GuruMeditation.h"

#include <sys/utsname.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iostream>

#include <fmt/format.h>

#include "support/AppDirectories.h"
#include "support/LogFunc.h"
#include "support/SourceLocation.h"

#ifndef QUESTER_VERSION
#define QUESTER_VERSION ""
#endif

namespace quester {
namespace {

std::string versionText() {
    std::string version = QUESTER_VERSION;
    return version.empty() ? "Unknown Version" : version;
}

std::string trimmingControlCharacters(std::string text) {
    auto isControl = [](char c) { return std::iscntrl(static_cast<unsigned char>(c)) != 0; };
    while (!text.empty() && isControl(text.back())) text.pop_back();
    std::size_t first = 0;
    while (first < text.size() && isControl(text[first])) ++first;
    return text.substr(first);
}

// "PRETTY_NAME" of /etc/os-release without its quotes, empty when unknown.
std::string distributionName() {
    std::ifstream release("/etc/os-release");
    std::string line;
    while (std::getline(release, line)) {
        if (!line.starts_with("PRETTY_NAME=")) continue;
        std::string value = line.substr(12);
        if (value.size() >= 2 && value.front() == '"' && value.back() == '"') value = value.substr(1, value.size() - 2);
        return value;
    }
    return {};
}

std::string operatingSystemVersion() {
    utsname names{};
    if (uname(&names) != 0) return "Unknown";
    std::string version = fmt::format("{} {}", names.sysname, names.release);
    std::string distribution = distributionName();
    if (!distribution.empty()) version += " (" + distribution + ")";
    return version;
}

std::string machineName() {
    utsname names{};
    if (uname(&names) != 0) return "Unknown";
    std::string machine = trimmingControlCharacters(names.machine);
    return machine.empty() ? "Unknown" : machine;
}

Result<std::string> appendReport(const std::string& report) {
    auto caches = AppDirectories::appCachesDirectory();
    if (!caches) return caches.error();
    std::string path = (std::filesystem::path(*caches) / "Error Reports.txt").string();
    std::ofstream file(path, std::ios::app | std::ios::binary);
    file << report << '\n';
    file.close();
    if (!file) return makeError(ErrorCode::ioError, "Can't write the error report to " + path);
    return path;
}

}  // namespace

std::string GuruMeditation::errorToDetailedString(const Error& error, const GMTrace* crumbs, std::string_view file,
                                                  unsigned line) {
    std::string lines;
    lines += fmt::format("{} v{} error details:\n", program_invocation_short_name, versionText());
    lines += fmt::format("File: {}  Line: {}\n", sourceFileStem(file), line);
    lines += fmt::format("Trace: {}\n", crumbs ? crumbs->description() : std::string());
    lines += error.description() + "\n";
    lines += fmt::format("OS: {}\n", operatingSystemVersion());
    lines += fmt::format("Mac Cores: {}  Arch: {}\n", sysconf(_SC_NPROCESSORS_ONLN), machineName());
    lines += std::string(39, '-');
    return lines;
}

std::optional<std::string> GuruMeditation::showErrorAlert(const Error& error, const GMTrace* trace,
                                                          SourceLocation where) {
    std::string report = errorToDetailedString(error, trace, where.file_name(), where.line());
    LogFunc(report, where);
    std::cerr << report << std::endl;
    auto written = appendReport(report);
    if (written) return *written;
    std::cerr << written.error().description() << std::endl;
    return std::nullopt;
}

}  // namespace quester
