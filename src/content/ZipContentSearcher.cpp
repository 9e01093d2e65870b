#include "content/ZipContentSearcher.h"

#include "content/AppleDouble.h"
#include "content/ArchiveFile.h"
#include "content/EntryNameSearch.h"
#include "content/ExtractedFile.h"
#include "import/ZipArchive.h"

namespace quester {

namespace {

// A size field that ZIP64 moved elsewhere reads as all ones.
constexpr std::int64_t zip64SizeMarker = 0xFFFFFFFF;

FoundItem::Category foundCategory(ZipArchive::Category category) {
    switch (category) {
        case ZipArchive::Category::link:
            return FoundItem::Category::link;
        case ZipArchive::Category::directory:
            return FoundItem::Category::directory;
        case ZipArchive::Category::file:
            return FoundItem::Category::file;
    }
    return FoundItem::Category::file;
}

ZipContentSearcher::ExtractError extractError(ZipArchive::ExtractError error) {
    using Error = ZipContentSearcher::ExtractError;
    switch (error) {
        case ZipArchive::ExtractError::notFound:
            return Error::notFound;
        case ZipArchive::ExtractError::unsupportedMethod:
            return Error::unsupportedMethod;
        case ZipArchive::ExtractError::corrupt:
            return Error::corrupt;
        case ZipArchive::ExtractError::tooLarge:
            return Error::tooLarge;
        case ZipArchive::ExtractError::cancelled:
            return Error::cancelled;
    }
    return Error::corrupt;
}

// Decodes `entry` into a new file at `to`, made only once the first bytes
// are good, so that decoding errors come before any trouble with the target.
std::optional<ZipContentSearcher::ExtractError> writeEntry(const ZipArchive& archive, const ZipArchive::Entry& entry,
                                                           const std::string& to, const ContentProgress& progress,
                                                           FileSystem& fileSystem) {
    std::optional<ExtractedFile> target;
    bool unwritable = false;
    const auto startTarget = [&] {
        auto created = ExtractedFile::create(to, fileSystem);
        if (created) target.emplace(std::move(*created));
        return target.has_value();
    };
    const auto error = archive.stream(
        entry, ZipArchive::maxExtractedSize,
        [&](std::string_view piece) {
            unwritable = (!target && !startTarget()) || !target->append(piece);
            return !unwritable;
        },
        ZipArchive::Progress{progress.report, progress.isCancelled});
    if (unwritable) return ZipContentSearcher::ExtractError::unwritable;
    if (error) return extractError(*error);
    if ((!target && !startTarget()) || !target->commit()) return ZipContentSearcher::ExtractError::unwritable;
    return std::nullopt;
}

}  // namespace

bool ZipContentSearcher::canSearch(const std::string& path) const {
    return ArchiveFile::conformsTo(path, "public.zip-archive", "zip");
}

std::vector<FoundItem> ZipContentSearcher::search(const std::string& path, const std::vector<std::string>& words,
                                                  bool allWords, bool caseSensitive,
                                                  const ContentProgress& progress) const {
    const auto listEntries = [](const std::string& zipPath) {
        const auto file = ArchiveFile::read(zipPath);
        return file ? ZipArchive::parseCentralDirectory(*file) : std::vector<ZipArchive::Entry>{};
    };
    return EntryNameSearch::inFile(path, words, allWords, caseSensitive, true, progress, listEntries,
                                   [](const ZipArchive::Entry& entry, std::string_view name) {
                                       FoundItem item;
                                       item.type = foundCategory(entry.category);
                                       item.title = std::string(name);
                                       item.location = entry.path;
                                       item.size = entry.uncompressedSize == zip64SizeMarker
                                                       ? 0
                                                       : static_cast<std::uint64_t>(entry.uncompressedSize);
                                       item.modified = entry.modified;
                                       item.crc32 = entry.crc32;
                                       return item;
                                   });
}

std::optional<ZipContentSearcher::ExtractError> ZipContentSearcher::extract(const std::string& from,
                                                                            const std::string& entryPath,
                                                                            const std::string& to,
                                                                            const ContentProgress& progress,
                                                                            FileSystem& fileSystem) {
    const auto file = ArchiveFile::read(from);
    if (!file) return ExtractError::corrupt;
    const ZipArchive archive(*file);
    const ZipArchive::Entry* entry = archive.entry(entryPath);
    if (entry == nullptr) return ExtractError::notFound;
    if (auto error = writeEntry(archive, *entry, to, progress, fileSystem)) return error;
    const auto sidecar = sidecarPath(entryPath);
    const ZipArchive::Entry* sidecarEntry = sidecar ? archive.entry(*sidecar) : nullptr;
    if (sidecarEntry == nullptr) return std::nullopt;
    const auto metadata = archive.decompress(*sidecarEntry);
    if (!metadata.error) AppleDouble::apply(metadata.bytes, to, fileSystem);
    return std::nullopt;
}

std::optional<std::string> ZipContentSearcher::sidecarPath(std::string_view entryPath) {
    if (entryPath.starts_with("__MACOSX/")) return std::nullopt;
    const auto beside = AppleDouble::sidecarBeside(entryPath);
    if (!beside) return std::nullopt;
    return "__MACOSX/" + *beside;
}

}  // namespace quester
