#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace quester::testing {

// A tar file built in memory for tests: ustar headers with any type, name,
// prefix and size field, data padded to whole blocks, and raw blocks for
// damage on purpose.
class TarWriter {
public:
    struct Member {
        std::string name{};
        std::string content{};
        char type = '0';
        std::string prefix{};
        // The size field as written, when not the content's size in octal.
        std::string sizeField{};
        std::int64_t modified = 1'700'000'000;
    };

    TarWriter& add(std::string name, std::string content, char type = '0') {
        return add(Member{std::move(name), std::move(content), type});
    }
    TarWriter& add(const Member& member) {
        bytes += header(member);
        bytes += padded(member.content);
        return *this;
    }
    // A block of zeros: one is passed over, two end the archive.
    TarWriter& zeroBlock() {
        bytes += std::string(512, '\0');
        return *this;
    }
    // A pax extended header of `records` ("<length> <key>=<value>\n" each).
    TarWriter& pax(std::string_view records) { return add(Member{"PaxHeader", std::string(records), 'x'}); }

    const std::string& contents() const { return bytes; }
    // The members followed by the two zero blocks that end an archive.
    std::string finish() const { return bytes + std::string(1024, '\0'); }

    // One pax record with its length counted in.
    static std::string paxRecord(std::string_view key, std::string_view value) {
        const std::string body = " " + std::string(key) + "=" + std::string(value) + "\n";
        std::size_t length = body.size() + 1;
        while (std::to_string(length).size() + body.size() != length) ++length;
        return std::to_string(length) + body;
    }
    // A size field in base-256 form.
    static std::string base256(std::uint64_t value) {
        std::string field(12, '\0');
        field[0] = static_cast<char>(0x80);
        for (int index = 11; index > 0 && value > 0; --index, value >>= 8) {
            field[static_cast<std::size_t>(index)] = static_cast<char>(value & 0xFF);
        }
        return field;
    }
    static std::string padded(std::string_view content) {
        std::string out(content);
        out.resize((content.size() + 511) / 512 * 512, '\0');
        return out;
    }

private:
    static std::string octalField(std::uint64_t value, std::size_t width) {
        char digits[32];
        std::snprintf(digits, sizeof digits, "%0*llo", static_cast<int>(width - 1),
                      static_cast<unsigned long long>(value));
        return std::string(digits) + '\0';
    }
    static void place(std::string& block, std::size_t offset, std::string_view field, std::size_t width) {
        block.replace(offset, std::min(field.size(), width), field.substr(0, width));
    }
    static std::string header(const Member& member) {
        std::string block(512, '\0');
        place(block, 0, member.name, 100);
        place(block, 100, octalField(0644, 8), 8);
        place(block, 124, member.sizeField.empty() ? octalField(member.content.size(), 12) : member.sizeField, 12);
        place(block, 136, octalField(static_cast<std::uint64_t>(member.modified), 12), 12);
        block[156] = member.type;
        place(block, 257,
              std::string_view("ustar\0"
                               "00",
                               8),
              8);
        place(block, 345, member.prefix, 155);
        place(block, 148, "        ", 8);
        unsigned checksum = 0;
        for (const char byte : block) checksum += static_cast<unsigned char>(byte);
        place(block, 148, octalField(checksum, 7), 7);
        return block;
    }

    std::string bytes;
};

}  // namespace quester::testing
