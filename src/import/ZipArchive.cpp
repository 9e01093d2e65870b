#include "import/ZipArchive.h"

#include <zlib.h>

#include <algorithm>
#include <climits>
#include <ctime>

#include "support/Utf8Text.h"

namespace quester {

namespace {

constexpr std::size_t endRecordSize = 22;
constexpr std::size_t longestComment = 65'535;
constexpr std::size_t directoryHeaderSize = 46;
constexpr std::size_t localHeaderSize = 30;
constexpr std::uint32_t endRecordSignature = 0x06054B50;
constexpr std::uint32_t directorySignature = 0x02014B50;
constexpr std::uint32_t localSignature = 0x04034B50;
constexpr std::uint32_t zip64Marker = 0xFFFFFFFF;
constexpr std::uint16_t stored = 0;
constexpr std::uint16_t deflated = 8;
// Bytes reserved up front for a whole entry: its size as the header says,
// but no more than this, so a lying header can't make us allocate gigabytes.
constexpr std::uint64_t largestReservation = 16u << 20;

std::uint16_t read16(std::string_view data, std::size_t offset) {
    const auto* byte = reinterpret_cast<const unsigned char*>(data.data() + offset);
    return static_cast<std::uint16_t>(byte[0] | byte[1] << 8);
}

std::uint32_t read32(std::string_view data, std::size_t offset) {
    const auto* byte = reinterpret_cast<const unsigned char*>(data.data() + offset);
    return static_cast<std::uint32_t>(byte[0]) | static_cast<std::uint32_t>(byte[1]) << 8 |
           static_cast<std::uint32_t>(byte[2]) << 16 | static_cast<std::uint32_t>(byte[3]) << 24;
}

// The offset of the end of central directory record, searched from the back
// over the longest comment it may be followed by.
std::optional<std::size_t> endRecordOffset(std::string_view data) {
    if (data.size() < endRecordSize) return std::nullopt;
    const std::size_t last = data.size() - endRecordSize;
    const std::size_t first = last > longestComment ? last - longestComment : 0;
    for (std::size_t offset = last + 1; offset-- > first;) {
        if (read32(data, offset) == endRecordSignature) return offset;
    }
    return std::nullopt;
}

ZipArchive::Category categoryOf(std::uint32_t externalAttributes, std::string_view name) {
    const std::uint32_t fileType = (externalAttributes >> 16) & 0xF000;
    if (fileType == 0xA000) return ZipArchive::Category::link;
    if (name.ends_with('/') || fileType == 0x4000) return ZipArchive::Category::directory;
    return ZipArchive::Category::file;
}

// The directory record at `offset`, or none when it is damaged or its name
// runs past `directoryEnd`; `next` gets the offset of the record after it.
std::optional<ZipArchive::Entry> directoryRecord(std::string_view data, std::size_t offset, std::size_t directoryEnd,
                                                 std::size_t& next) {
    if (read32(data, offset) != directorySignature) return std::nullopt;
    const std::size_t nameLength = read16(data, offset + 28);
    const std::size_t nameStart = offset + directoryHeaderSize;
    if (nameStart + nameLength > directoryEnd) return std::nullopt;
    const std::string_view name = data.substr(nameStart, nameLength);
    ZipArchive::Entry entry;
    entry.path = repairedUTF8(name);
    entry.category = categoryOf(read32(data, offset + 38), name);
    entry.modified = ZipArchive::dosDateToUnix(read16(data, offset + 14), read16(data, offset + 12));
    entry.crc32 = read32(data, offset + 16);
    entry.method = read16(data, offset + 10);
    entry.compressedSize = read32(data, offset + 20);
    entry.uncompressedSize = read32(data, offset + 24);
    entry.localHeaderOffset = read32(data, offset + 42);
    next = nameStart + nameLength + read16(data, offset + 30) + read16(data, offset + 32);
    return entry;
}

// The bytes of `entry` as its local header places them, or none when the
// header is missing or the bytes run past the end of `data`.
std::optional<std::string_view> entryData(std::string_view data, const ZipArchive::Entry& entry) {
    const auto header = static_cast<std::uint64_t>(entry.localHeaderOffset);
    if (header + localHeaderSize > data.size() || read32(data, header) != localSignature) return std::nullopt;
    const std::uint64_t start = header + localHeaderSize + read16(data, header + 26) + read16(data, header + 28);
    const auto length = static_cast<std::uint64_t>(entry.compressedSize);
    if (start + length > data.size()) return std::nullopt;
    return data.substr(start, length);
}

}  // namespace

ZipArchive::ZipArchive(std::string_view data) : bytes(data), entryList(parseCentralDirectory(data)) {}

std::vector<ZipArchive::Entry> ZipArchive::parseCentralDirectory(std::string_view data) {
    std::vector<Entry> entries;
    const auto endRecord = endRecordOffset(data);
    if (!endRecord) return entries;
    const std::uint32_t directorySize = read32(data, *endRecord + 12);
    const std::uint32_t directoryOffset = read32(data, *endRecord + 16);
    if (directorySize == zip64Marker || directoryOffset == zip64Marker) return entries;
    const std::uint64_t directoryEnd = std::uint64_t{directoryOffset} + directorySize;
    if (directoryEnd > data.size()) return entries;
    std::size_t offset = directoryOffset;
    while (offset + directoryHeaderSize <= directoryEnd && entries.size() < maxEntries) {
        auto entry = directoryRecord(data, offset, directoryEnd, offset);
        if (!entry) break;
        entries.push_back(std::move(*entry));
    }
    return entries;
}

const ZipArchive::Entry* ZipArchive::entry(std::string_view path) const {
    auto found = std::find_if(entryList.begin(), entryList.end(), [&](const Entry& e) { return e.path == path; });
    return found == entryList.end() ? nullptr : &*found;
}

ZipArchive::Extracted ZipArchive::decompress(const Entry& entry, const Progress& progress) const {
    Extracted result;
    const auto expected = static_cast<std::uint64_t>(entry.uncompressedSize);
    if (expected <= maxExtractedSize) result.bytes.reserve(std::min(expected, largestReservation));
    result.error = stream(
        entry, maxExtractedSize,
        [&](std::string_view piece) {
            result.bytes.append(piece);
            return true;
        },
        progress);
    if (result.error) result.bytes.clear();
    return result;
}

std::optional<ZipArchive::ExtractError> ZipArchive::stream(const Entry& entry, std::uint64_t maxBytes,
                                                           const std::function<bool(std::string_view)>& sink,
                                                           const Progress& progress) const {
    if (static_cast<std::uint64_t>(entry.uncompressedSize) > maxExtractedSize) return ExtractError::tooLarge;
    if (progress.cancelled()) return ExtractError::cancelled;
    EntryReader source = reader(entry, maxBytes);
    if (source.error()) return source.error();
    progress.reportPercent(0);
    std::vector<char> buffer(inflateBufferSize);
    const double expected = static_cast<double>(std::max<std::int64_t>(entry.uncompressedSize, 1));
    while (std::size_t got = source.read(buffer)) {
        if (!sink(std::string_view(buffer.data(), got))) return ExtractError::cancelled;
        progress.reportPercent(static_cast<float>(std::min(100.0, source.produced() / expected * 100)));
        if (progress.cancelled()) return ExtractError::cancelled;
    }
    if (source.error()) return source.error();
    progress.reportPercent(100);
    return std::nullopt;
}

ZipArchive::EntryReader ZipArchive::reader(const Entry& entry, std::uint64_t maxBytes) const {
    if (static_cast<std::uint64_t>(entry.uncompressedSize) > maxExtractedSize) {
        return EntryReader(ExtractError::tooLarge);
    }
    const auto compressed = entryData(bytes, entry);
    if (!compressed) return EntryReader(ExtractError::corrupt);
    if (entry.method != stored && entry.method != deflated) return EntryReader(ExtractError::unsupportedMethod);
    return EntryReader(entry, *compressed, maxBytes);
}

std::int64_t ZipArchive::dosDateToUnix(std::uint16_t date, std::uint16_t time) {
    if (date == 0) return 0;
    std::tm parts{};
    parts.tm_year = ((date >> 9) & 0x7F) + 1980 - 1900;
    parts.tm_mon = ((date >> 5) & 0xF) - 1;
    parts.tm_mday = date & 0x1F;
    parts.tm_hour = (time >> 11) & 0x1F;
    parts.tm_min = (time >> 5) & 0x3F;
    parts.tm_sec = (time & 0x1F) * 2;
    parts.tm_isdst = -1;
    const bool realDayAndTime = parts.tm_mon >= 0 && parts.tm_mon < 12 && parts.tm_mday >= 1 && parts.tm_hour < 24 &&
                                parts.tm_min < 60 && parts.tm_sec < 60;
    if (!realDayAndTime) return 0;
    const std::time_t seconds = std::mktime(&parts);
    return seconds == -1 ? 0 : static_cast<std::int64_t>(seconds);
}

void ZipArchive::EntryReader::StreamDeleter::operator()(z_stream_s* stream) const {
    inflateEnd(stream);
    delete stream;
}

ZipArchive::EntryReader::EntryReader(const Entry& entry, std::string_view compressed, std::uint64_t maxBytes)
    : input(compressed),
      method(entry.method),
      expectedSize(static_cast<std::uint64_t>(entry.uncompressedSize)),
      expectedCrc(entry.crc32),
      cap(maxBytes),
      crc(static_cast<std::uint32_t>(::crc32(0, nullptr, 0))) {
    if (method != deflated || expectedSize == 0) return;
    if (input.empty()) {
        fail(ExtractError::corrupt);
        return;
    }
    auto* decoder = new z_stream{};
    // Negative window bits: raw DEFLATE, as zip stores it, with no zlib header.
    if (inflateInit2(decoder, -MAX_WBITS) != Z_OK) {
        delete decoder;
        fail(ExtractError::corrupt);
        return;
    }
    stream.reset(decoder);
    stream->next_in = reinterpret_cast<Bytef*>(const_cast<char*>(input.data()));
    stream->avail_in = static_cast<uInt>(input.size());
}

ZipArchive::EntryReader::EntryReader(ExtractError error) : state(State::failed), failure(error) {}

ZipArchive::EntryReader::EntryReader(EntryReader&&) noexcept = default;
ZipArchive::EntryReader& ZipArchive::EntryReader::operator=(EntryReader&&) noexcept = default;
ZipArchive::EntryReader::~EntryReader() = default;

std::size_t ZipArchive::EntryReader::read(std::span<char> into) {
    if (state != State::reading) return 0;
    const std::uint64_t room = std::min<std::uint64_t>({into.size(), cap - producedBytes, UINT_MAX / 2});
    if (room == 0) return into.empty() ? 0 : probePastCap();
    const std::size_t got = decode(into.data(), static_cast<std::size_t>(room));
    if (state == State::failed) return 0;
    accept(into.data(), got);
    if (state == State::failed) return 0;
    if (got == 0) finish();
    return got;
}

std::size_t ZipArchive::EntryReader::decode(char* out, std::size_t room) {
    if (expectedSize == 0 && method == deflated) return 0;
    return method == stored ? copyStored(out, room) : inflateRaw(out, room);
}

std::size_t ZipArchive::EntryReader::copyStored(char* out, std::size_t room) {
    const std::size_t count = static_cast<std::size_t>(std::min<std::uint64_t>(room, input.size() - storedOffset));
    std::copy_n(input.data() + storedOffset, count, out);
    storedOffset += count;
    return count;
}

// Decodes until some output appears or the stream ends; zlib answers Z_OK
// only when it made progress, so this loop always ends.
std::size_t ZipArchive::EntryReader::inflateRaw(char* out, std::size_t room) {
    stream->next_out = reinterpret_cast<Bytef*>(out);
    stream->avail_out = static_cast<uInt>(room);
    while (stream->avail_out == room) {
        const int status = ::inflate(stream.get(), Z_NO_FLUSH);
        if (status == Z_STREAM_END) break;
        if (status != Z_OK) {
            fail(ExtractError::corrupt);
            return 0;
        }
    }
    return room - stream->avail_out;
}

// At the cap: one more byte tells an entry that ends there from one that
// goes on (too large, or corrupt when it goes past its own size).
std::size_t ZipArchive::EntryReader::probePastCap() {
    char probe = 0;
    const std::size_t got = decode(&probe, 1);
    if (state == State::failed) return 0;
    if (got == 0) {
        finish();
    } else {
        fail(producedBytes + got > expectedSize ? ExtractError::corrupt : ExtractError::tooLarge);
    }
    return 0;
}

void ZipArchive::EntryReader::accept(const char* bytes, std::size_t count) {
    if (producedBytes + count > expectedSize) return fail(ExtractError::corrupt);
    producedBytes += count;
    crc = static_cast<std::uint32_t>(::crc32(crc, reinterpret_cast<const Bytef*>(bytes), static_cast<uInt>(count)));
}

void ZipArchive::EntryReader::finish() {
    if (producedBytes != expectedSize || crc != expectedCrc) return fail(ExtractError::corrupt);
    state = State::finished;
    stream.reset();
}

void ZipArchive::EntryReader::fail(ExtractError error) {
    state = State::failed;
    failure = error;
    stream.reset();
}

}  // namespace quester
