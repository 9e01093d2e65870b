#include "content/TarArchive.h"

#include <algorithm>
#include <limits>

#include "content/AppleDouble.h"
#include "content/ArchiveFile.h"
#include "content/ExtractedFile.h"
#include "support/PathText.h"
#include "support/Utf8Text.h"

namespace quester {

namespace {

constexpr std::int64_t largestValue = std::numeric_limits<std::int64_t>::max();
constexpr char globalPaxHeader = 'g';
constexpr char paxHeader = 'x';
constexpr char gnuLongName = 'L';
constexpr char directoryType = '5';
constexpr char symbolicLinkType = '2';

bool isZeroBlock(std::string_view block) {
    return std::all_of(block.begin(), block.end(), [](char byte) { return byte == 0; });
}

// The bytes from `offset` on, at most `length`, cut at the end of `data`.
std::string_view clipped(std::string_view data, std::uint64_t offset, std::uint64_t length) {
    if (offset >= data.size()) return {};
    return data.substr(offset, static_cast<std::size_t>(std::min<std::uint64_t>(length, data.size() - offset)));
}

std::string headerPath(std::string_view header) {
    std::string name = TarArchive::cString(header.substr(0, 100));
    if (!TarArchive::isPosixUstar(header)) return name;
    const std::string prefix = TarArchive::cString(header.substr(345, 155));
    return prefix.empty() ? name : prefix + "/" + name;
}

FoundItem::Category categoryOf(char type, std::string_view path) {
    if (type == directoryType || path.ends_with('/')) return FoundItem::Category::directory;
    if (type == symbolicLinkType) return FoundItem::Category::link;
    return FoundItem::Category::file;
}

std::optional<std::int64_t> base256(std::string_view digits) {
    std::int64_t value = 0;
    for (const char byte : digits) {
        if (value > (largestValue >> 8)) return std::nullopt;
        value = value << 8 | static_cast<unsigned char>(byte);
    }
    return value;
}

// The decimal length that opens a pax record, and where its key begins.
std::optional<std::pair<std::size_t, std::size_t>> paxRecordLength(std::string_view rest) {
    const std::size_t blank = rest.find(' ');
    if (blank == 0 || blank == std::string_view::npos || blank > 18) return std::nullopt;
    std::size_t length = 0;
    for (const char digit : rest.substr(0, blank)) {
        if (digit < '0' || digit > '9') return std::nullopt;
        length = length * 10 + static_cast<std::size_t>(digit - '0');
    }
    return std::pair{length, blank + 1};
}

}  // namespace

TarArchive::TarArchive(std::string_view data) : bytes(data), entryList(parseBlocks(data)) {}

std::vector<TarArchive::Entry> TarArchive::parseBlocks(std::string_view data) {
    std::vector<Entry> entries;
    std::optional<std::string> pendingPath;
    std::uint64_t offset = 0;
    while (offset + blockSize <= data.size() && entries.size() < maxEntries) {
        const std::string_view header = data.substr(offset, blockSize);
        if (isZeroBlock(header)) {
            const std::string_view next = clipped(data, offset + blockSize, blockSize);
            if (next.size() == blockSize && isZeroBlock(next)) break;
            offset += blockSize;
            continue;
        }
        const auto size = octal(header.substr(124, 12));
        if (!size || *size < 0) break;
        const char type = header[156];
        const std::uint64_t dataOffset = offset + blockSize;
        const auto length = static_cast<std::uint64_t>(*size);
        if (type == globalPaxHeader || type == paxHeader) {
            if (auto path = paxPath(clipped(data, dataOffset, length))) pendingPath = std::move(path);
        } else if (type == gnuLongName) {
            pendingPath = cString(clipped(data, dataOffset, std::min<std::uint64_t>(length, maxLongNameBytes)));
        } else {
            std::string path = pendingPath ? std::move(*pendingPath) : headerPath(header);
            pendingPath.reset();
            if (!path.empty()) {
                const auto modified = octal(header.substr(136, 12));
                const FoundItem::Category category = categoryOf(type, path);
                entries.push_back(Entry{std::move(path), category, length, modified.value_or(0),
                                        static_cast<std::int64_t>(dataOffset)});
            }
        }
        offset = dataOffset + (length + blockSize - 1) / blockSize * blockSize;
    }
    return entries;
}

const TarArchive::Entry* TarArchive::entry(std::string_view path) const {
    auto found = std::find_if(entryList.begin(), entryList.end(), [&](const Entry& e) { return e.path == path; });
    return found == entryList.end() ? nullptr : &*found;
}

TarArchive::Contents TarArchive::contents(const Entry& entry, std::uint64_t maxBytes) const {
    if (entry.size > maxBytes) return {{}, ExtractError::tooLarge};
    const auto offset = static_cast<std::uint64_t>(entry.dataOffset);
    if (offset > bytes.size() || entry.size > bytes.size() - offset) return {{}, ExtractError::corrupt};
    return {bytes.substr(offset, entry.size), std::nullopt};
}

std::optional<TarArchive::ExtractError> TarArchive::extract(const std::string& from, const std::string& entryPath,
                                                            const std::string& to, const ContentProgress& progress,
                                                            FileSystem& fileSystem) {
    if (progress.cancelled()) return ExtractError::cancelled;
    const auto file = ArchiveFile::read(from);
    if (!file) return ExtractError::corrupt;
    const TarArchive archive(*file);
    const Entry* found = archive.entry(entryPath);
    if (found == nullptr) return ExtractError::notFound;
    const Contents contents = archive.contents(*found);
    if (contents.error) return contents.error;
    progress.reportPercentage(0);
    auto target = ExtractedFile::create(to, fileSystem);
    if (!target || !target->append(contents.bytes) || !target->commit()) return ExtractError::unwritable;
    archive.restoreAppleDoubleMetadata(entryPath, to, fileSystem);
    progress.reportPercentage(100);
    return std::nullopt;
}

std::optional<std::string> TarArchive::sidecarPath(std::string_view entryPath) {
    if (lastPathComponentView(entryPath).starts_with("._")) return std::nullopt;
    return AppleDouble::sidecarBeside(entryPath);
}

void TarArchive::restoreAppleDoubleMetadata(std::string_view entryPath, const std::string& target,
                                            FileSystem& fileSystem) const {
    const auto sidecar = sidecarPath(entryPath);
    const Entry* found = sidecar ? entry(*sidecar) : nullptr;
    if (found == nullptr) return;
    const Contents contents = this->contents(*found);
    if (!contents.error) AppleDouble::apply(contents.bytes, target, fileSystem);
}

std::optional<std::int64_t> TarArchive::octal(std::string_view field) {
    if (field.empty()) return std::nullopt;
    if (static_cast<unsigned char>(field[0]) & 0x80) return base256(field.substr(1));
    std::int64_t value = 0;
    for (const char byte : field) {
        if (byte == 0 || byte == ' ') continue;
        if (byte < '0' || byte > '7') return std::nullopt;
        if (value > (largestValue >> 3)) return std::nullopt;
        value = value << 3 | (byte - '0');
    }
    return value;
}

std::string TarArchive::cString(std::string_view field) {
    return repairedUTF8(field.substr(0, std::min(field.find('\0'), field.size())));
}

bool TarArchive::isPosixUstar(std::string_view header) {
    return header.size() >= 263 && header.substr(257, 6) == std::string_view("ustar\0", 6);
}

std::optional<std::string> TarArchive::paxPath(std::string_view records) {
    std::optional<std::string> path;
    while (!records.empty()) {
        const auto opening = paxRecordLength(records);
        if (!opening) break;
        const auto [length, keyStart] = *opening;
        if (length <= keyStart || length > records.size() || records[length - 1] != '\n') break;
        const std::string_view body = records.substr(keyStart, length - keyStart - 1);
        const std::size_t equals = body.find('=');
        if (equals == std::string_view::npos) break;
        if (body.substr(0, equals) == "path") path = repairedUTF8(body.substr(equals + 1));
        records.remove_prefix(length);
    }
    return path;
}

}  // namespace quester
