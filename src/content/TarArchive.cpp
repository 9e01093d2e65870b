#include "content/TarArchive.h"

#include <algorithm>
#include <array>
#include <limits>

#include "content/AppleDouble.h"
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
constexpr std::uint64_t copyRoundSize = 262'144;
// A sidecar holds a resource fork and Finder information; more than this is
// no sidecar worth holding in memory.
constexpr std::uint64_t largestSidecar = std::uint64_t{64} << 20;

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

// The archive's bytes from memory.
class MemoryBlocks {
public:
    explicit MemoryBlocks(std::string_view data) : data(data) {}
    std::string_view read(std::uint64_t offset, std::uint64_t length) { return clipped(data, offset, length); }

private:
    std::string_view data;
};

// The archive's bytes read from the file where the walk needs them, so that
// listing an archive of any size reads its headers and nothing else. A read
// that fails or comes back short gives fewer bytes, which ends the walk.
class FileBlocks {
public:
    explicit FileBlocks(const ReadableFile& file) : file(file), fileSize(file.size().ok() ? *file.size() : 0) {}
    std::string_view read(std::uint64_t offset, std::uint64_t length) {
        if (offset >= fileSize) return {};
        buffer.resize(static_cast<std::size_t>(std::min({length, fileSize - offset, largestRecordRead})));
        const auto got = file.readAt(offset, buffer);
        buffer.resize(got ? *got : 0);
        return buffer;
    }

private:
    // Pax records hold a few names and numbers: a size beyond this is
    // garbage, and reading it would only cost memory.
    static constexpr std::uint64_t largestRecordRead = std::uint64_t{1} << 20;

    const ReadableFile& file;
    std::uint64_t fileSize;
    std::string buffer;
};

template <typename Blocks>
std::vector<TarArchive::Entry> walkBlocks(Blocks& blocks) {
    constexpr std::size_t blockSize = TarArchive::blockSize;
    std::vector<TarArchive::Entry> entries;
    std::optional<std::string> pendingPath;
    std::array<char, blockSize> block{};
    const std::string_view header(block.data(), block.size());
    std::uint64_t offset = 0;
    while (entries.size() < TarArchive::maxEntries) {
        const std::string_view read = blocks.read(offset, blockSize);
        if (read.size() < blockSize) break;
        std::copy(read.begin(), read.end(), block.begin());
        if (isZeroBlock(header)) {
            const std::string_view next = blocks.read(offset + blockSize, blockSize);
            if (next.size() == blockSize && isZeroBlock(next)) break;
            offset += blockSize;
            continue;
        }
        const auto size = TarArchive::octal(header.substr(124, 12));
        if (!size || *size < 0) break;
        const char type = header[156];
        const std::uint64_t dataOffset = offset + blockSize;
        const auto length = static_cast<std::uint64_t>(*size);
        if (type == globalPaxHeader || type == paxHeader) {
            if (auto path = TarArchive::paxPath(blocks.read(dataOffset, length))) pendingPath = std::move(path);
        } else if (type == gnuLongName) {
            const auto longName = std::min<std::uint64_t>(length, TarArchive::maxLongNameBytes);
            pendingPath = TarArchive::cString(blocks.read(dataOffset, longName));
        } else {
            std::string path = pendingPath ? std::move(*pendingPath) : headerPath(header);
            pendingPath.reset();
            if (!path.empty()) {
                const auto modified = TarArchive::octal(header.substr(136, 12));
                const FoundItem::Category category = categoryOf(type, path);
                entries.push_back(TarArchive::Entry{std::move(path), category, length, modified.value_or(0),
                                                    static_cast<std::int64_t>(dataOffset)});
            }
        }
        offset = dataOffset + (length + blockSize - 1) / blockSize * blockSize;
    }
    return entries;
}

const TarArchive::Entry* entryAt(const std::vector<TarArchive::Entry>& entries, std::string_view path) {
    auto found = std::find_if(entries.begin(), entries.end(), [&](const auto& entry) { return entry.path == path; });
    return found == entries.end() ? nullptr : &*found;
}

// Whether the data of `entry` lie inside a file of `fileSize` bytes.
bool fitsInFile(const TarArchive::Entry& entry, std::uint64_t fileSize) {
    const auto offset = static_cast<std::uint64_t>(entry.dataOffset);
    return offset <= fileSize && entry.size <= fileSize - offset;
}

// Copies the data of `entry` from `file` to a new file at `to`, a round at a
// time; a read that fails or comes back short means the archive changed
// under us.
std::optional<TarArchive::ExtractError> copyEntry(const ReadableFile& file, const TarArchive::Entry& entry,
                                                  const std::string& to, FileSystem& fileSystem) {
    auto target = ExtractedFile::create(to, fileSystem);
    if (!target) return TarArchive::ExtractError::unwritable;
    std::string buffer(static_cast<std::size_t>(std::min<std::uint64_t>(entry.size, copyRoundSize)), '\0');
    for (std::uint64_t done = 0; done < entry.size;) {
        const auto round = static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), entry.size - done));
        const auto got = file.readAt(static_cast<std::uint64_t>(entry.dataOffset) + done, {buffer.data(), round});
        if (!got || *got != round) return TarArchive::ExtractError::corrupt;
        if (!target->append({buffer.data(), round})) return TarArchive::ExtractError::unwritable;
        done += round;
    }
    if (!target->commit()) return TarArchive::ExtractError::unwritable;
    return std::nullopt;
}

// Gives the sidecar of `entryPath`, when the archive holds it whole and it is
// of a sidecar's size, to AppleDouble.
void restoreAppleDoubleMetadata(const ReadableFile& file, std::uint64_t fileSize,
                                const std::vector<TarArchive::Entry>& entries, std::string_view entryPath,
                                const std::string& target, FileSystem& fileSystem) {
    const auto sidecar = TarArchive::sidecarPath(entryPath);
    const TarArchive::Entry* found = sidecar ? entryAt(entries, *sidecar) : nullptr;
    if (found == nullptr || !fitsInFile(*found, fileSize) || found->size > largestSidecar) return;
    std::string data(static_cast<std::size_t>(found->size), '\0');
    const auto got = file.readAt(static_cast<std::uint64_t>(found->dataOffset), data);
    if (got && *got == data.size()) AppleDouble::apply(data, target, fileSystem);
}

}  // namespace

TarArchive::TarArchive(std::string_view data) : bytes(data), entryList(parseBlocks(data)) {}

std::vector<TarArchive::Entry> TarArchive::parseBlocks(std::string_view data) {
    MemoryBlocks blocks(data);
    return walkBlocks(blocks);
}

std::vector<TarArchive::Entry> TarArchive::parseFile(const ReadableFile& file) {
    FileBlocks blocks(file);
    return walkBlocks(blocks);
}

const TarArchive::Entry* TarArchive::entry(std::string_view path) const {
    return entryAt(entryList, path);
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
    const auto file = ReadableFile::open(from);
    const auto fileSize = file ? file->size() : Result<std::uint64_t>(file.error());
    if (!fileSize) return ExtractError::corrupt;
    const std::vector<Entry> entries = parseFile(*file);
    const Entry* found = entryAt(entries, entryPath);
    if (found == nullptr) return ExtractError::notFound;
    if (found->size > maxExtractedSize) return ExtractError::tooLarge;
    if (!fitsInFile(*found, *fileSize)) return ExtractError::corrupt;
    progress.reportPercentage(0);
    if (auto error = copyEntry(*file, *found, to, fileSystem)) return error;
    restoreAppleDoubleMetadata(*file, *fileSize, entries, entryPath, to, fileSystem);
    progress.reportPercentage(100);
    return std::nullopt;
}

std::optional<std::string> TarArchive::sidecarPath(std::string_view entryPath) {
    if (lastPathComponentView(entryPath).starts_with("._")) return std::nullopt;
    return AppleDouble::sidecarBeside(entryPath);
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
