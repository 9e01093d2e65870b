#pragma once

#include <zlib.h>

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace quester::testing {

// A zip file built in memory for tests. Each member can be given faults on
// purpose (a wrong CRC or size, extra fields that differ between the local
// header and the directory); the offsets of the parts are kept so that a test
// can damage the bytes afterwards.
class ZipWriter {
public:
    struct Member {
        std::string path{};
        std::string content{};
        bool deflate = true;
        // The bytes written for the member, when not `content` compressed;
        // its CRC and size then come from `crc` and `uncompressedSize`.
        std::optional<std::string> data{};
        std::string localExtra{};
        std::string directoryExtra{};
        std::optional<std::uint32_t> crc{};
        std::optional<std::uint32_t> uncompressedSize{};
        std::uint32_t externalAttributes = 0;
        std::uint16_t dosTime = 0;
        std::uint16_t dosDate = 0;
    };

    // Adds a member whose name and content are all that matter.
    ZipWriter& add(std::string path, std::string content, bool deflate = true) {
        return add(Member{std::move(path), std::move(content), deflate});
    }
    ZipWriter& add(const Member& member) {
        const std::string data = member.data      ? *member.data
                                 : member.deflate ? rawDeflate(member.content)
                                                  : member.content;
        Record record{member, static_cast<std::uint32_t>(bytes.size()), static_cast<std::uint32_t>(data.size())};
        record.member.crc = member.crc.value_or(crcOf(member.content));
        record.member.uncompressedSize = member.uncompressedSize.value_or(member.content.size());
        record.member.content.clear();
        localHeaders.push_back(record.localOffset);
        writeLocalHeader(record);
        bytes += data;
        records.push_back(std::move(record));
        return *this;
    }

    // The whole file: the members, their directory and the end record with
    // `comment` after it.
    std::string finish(std::string_view comment = {}) {
        std::string file = bytes;
        directoryStart = file.size();
        for (const auto& record : records) writeDirectoryRecord(file, record);
        const std::size_t directorySize = file.size() - directoryStart;
        put32(file, 0x06054B50);
        put16(file, 0);
        put16(file, 0);
        put16(file, static_cast<std::uint16_t>(records.size()));
        put16(file, static_cast<std::uint16_t>(records.size()));
        put32(file, static_cast<std::uint32_t>(directorySize));
        put32(file, static_cast<std::uint32_t>(directoryStart));
        put16(file, static_cast<std::uint16_t>(comment.size()));
        file += comment;
        return file;
    }

    // Where the directory began in the last `finish`.
    std::size_t directoryOffset() const { return directoryStart; }
    // Where the local header of the member added `index`-th begins.
    std::size_t localHeaderOffset(std::size_t index) const { return localHeaders.at(index); }

    // `content` as raw DEFLATE, the way zip stores it.
    static std::string rawDeflate(std::string_view content) {
        z_stream stream{};
        if (deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY) != Z_OK) {
            throw std::runtime_error("deflateInit2");
        }
        std::string out(deflateBound(&stream, content.size()), '\0');
        stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(content.data()));
        stream.avail_in = static_cast<uInt>(content.size());
        stream.next_out = reinterpret_cast<Bytef*>(out.data());
        stream.avail_out = static_cast<uInt>(out.size());
        const int status = deflate(&stream, Z_FINISH);
        out.resize(stream.total_out);
        deflateEnd(&stream);
        if (status != Z_STREAM_END) throw std::runtime_error("deflate");
        return out;
    }
    // Raw DEFLATE of `prefix`, `times` copies of `chunk` and `suffix`, made
    // without holding the whole text, with that text's CRC-32 and size: a
    // member that inflates far beyond its stored size.
    struct Compressed {
        std::string data;
        std::uint32_t crc = 0;
        std::uint32_t size = 0;
    };
    static Compressed rawDeflateRepeated(std::string_view prefix, std::string_view chunk, std::size_t times,
                                         std::string_view suffix) {
        z_stream stream{};
        if (deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY) != Z_OK) {
            throw std::runtime_error("deflateInit2");
        }
        Compressed out;
        auto feed = [&](std::string_view piece, int flush) {
            out.crc = static_cast<std::uint32_t>(
                crc32(out.crc, reinterpret_cast<const Bytef*>(piece.data()), static_cast<uInt>(piece.size())));
            out.size += static_cast<std::uint32_t>(piece.size());
            stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(piece.data()));
            stream.avail_in = static_cast<uInt>(piece.size());
            char buffer[65536];
            do {
                stream.next_out = reinterpret_cast<Bytef*>(buffer);
                stream.avail_out = sizeof buffer;
                deflate(&stream, flush);
                out.data.append(buffer, sizeof buffer - stream.avail_out);
            } while (stream.avail_out == 0 || stream.avail_in > 0);
        };
        feed(prefix, Z_NO_FLUSH);
        for (std::size_t copy = 0; copy < times; ++copy) feed(chunk, Z_NO_FLUSH);
        feed(suffix, Z_FINISH);
        deflateEnd(&stream);
        return out;
    }
    static std::uint32_t crcOf(std::string_view content) {
        return static_cast<std::uint32_t>(
            crc32(0, reinterpret_cast<const Bytef*>(content.data()), static_cast<uInt>(content.size())));
    }
    static void put16(std::string& out, std::uint16_t value) {
        out += static_cast<char>(value & 0xFF);
        out += static_cast<char>(value >> 8);
    }
    static void put32(std::string& out, std::uint32_t value) {
        put16(out, static_cast<std::uint16_t>(value & 0xFFFF));
        put16(out, static_cast<std::uint16_t>(value >> 16));
    }

private:
    struct Record {
        Member member;
        std::uint32_t localOffset;
        std::uint32_t compressedSize;
    };

    // The fields local header and directory record share, from "version
    // needed" to the extra field's length.
    static void writeSharedFields(std::string& out, const Record& record, const std::string& extra) {
        const Member& member = record.member;
        put16(out, 20);
        put16(out, 0);
        put16(out, member.deflate ? 8 : 0);
        put16(out, member.dosTime);
        put16(out, member.dosDate);
        put32(out, *member.crc);
        put32(out, record.compressedSize);
        put32(out, *member.uncompressedSize);
        put16(out, static_cast<std::uint16_t>(member.path.size()));
        put16(out, static_cast<std::uint16_t>(extra.size()));
    }
    void writeLocalHeader(const Record& record) {
        put32(bytes, 0x04034B50);
        writeSharedFields(bytes, record, record.member.localExtra);
        bytes += record.member.path;
        bytes += record.member.localExtra;
    }
    static void writeDirectoryRecord(std::string& out, const Record& record) {
        put32(out, 0x02014B50);
        put16(out, 0x031E);
        writeSharedFields(out, record, record.member.directoryExtra);
        put16(out, 0);
        put16(out, 0);
        put16(out, 0);
        put32(out, record.member.externalAttributes);
        put32(out, record.localOffset);
        out += record.member.path;
        out += record.member.directoryExtra;
    }

    std::string bytes;
    std::vector<Record> records;
    std::vector<std::size_t> localHeaders;
    std::size_t directoryStart = 0;
};

}  // namespace quester::testing
