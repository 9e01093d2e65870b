#include "commands/ContainerEntries.h"

#include "content/ArchiveFile.h"
#include "content/TarArchive.h"
#include "content/ZipContentSearcher.h"
#include "import/ZipArchive.h"
#include "platform/ReadableFile.h"

namespace quester {

namespace {

// A zip size field of all ones stands for a ZIP64 size, which isn't read.
constexpr std::int64_t zip64SizeMarker = 0xFFFFFFFF;

std::vector<ContainerEntries::FlatEntry> zipFiles(const std::string& archivePath) {
    std::vector<ContainerEntries::FlatEntry> files;
    const auto bytes = ArchiveFile::read(archivePath);
    if (!bytes) return files;
    for (const auto& entry : ZipArchive::parseCentralDirectory(*bytes)) {
        if (entry.category == ZipArchive::Category::directory) continue;
        const auto size = entry.uncompressedSize == zip64SizeMarker ? 0 : entry.uncompressedSize;
        files.push_back({entry.path, static_cast<std::uint64_t>(size), entry.modified});
    }
    return files;
}

std::vector<ContainerEntries::FlatEntry> tarFiles(const std::string& archivePath) {
    std::vector<ContainerEntries::FlatEntry> files;
    const auto file = ReadableFile::open(archivePath);
    if (!file) return files;
    for (const auto& entry : TarArchive::parseFile(*file)) {
        if (entry.category == FoundItem::Category::directory) continue;
        files.push_back({entry.path, entry.size, entry.modified});
    }
    return files;
}

// Both readers name the same failures; only zip adds the unknown method.
template <typename Error>
const char* extractErrorText(Error error) {
    if (error == Error::notFound) return "not found";
    if (error == Error::corrupt) return "corrupt";
    if (error == Error::tooLarge) return "too large";
    if (error == Error::cancelled) return "cancelled";
    if (error == Error::unwritable) return "target not writable";
    return "unsupported compression method";
}

}  // namespace

std::vector<ContainerEntries::FlatEntry> ContainerEntries::files(const std::string& archivePath, Kind kind) {
    return kind == Kind::zip ? zipFiles(archivePath) : tarFiles(archivePath);
}

std::optional<std::string> ContainerEntries::extract(const std::string& archivePath, Kind kind,
                                                     const std::string& entryPath, const std::string& target,
                                                     const ContentProgress& progress) {
    if (kind == Kind::zip) {
        const auto error = ZipContentSearcher::extract(archivePath, entryPath, target, progress);
        if (error) return extractErrorText(*error);
    } else {
        const auto error = TarArchive::extract(archivePath, entryPath, target, progress);
        if (error) return extractErrorText(*error);
    }
    return std::nullopt;
}

}  // namespace quester
