#include "import/RawTextReader.h"

#include <unicode/ucnv.h>

#include <algorithm>
#include <memory>
#include <span>

#include "support/Utf8Text.h"

namespace quester {

namespace {

bool isContinuation(unsigned char byte) {
    return (byte & 0xC0) == 0x80;
}

std::size_t sequenceLength(unsigned char lead) {
    if ((lead & 0xF8) == 0xF0) return 4;
    if ((lead & 0xF0) == 0xE0) return 3;
    return 2;
}

std::string decodeMacRoman(std::string_view bytes) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<UConverter, decltype(&ucnv_close)> converter(ucnv_open("macintosh", &status), ucnv_close);
    if (U_FAILURE(status)) return {};
    std::string out(bytes.size() * 3 + 1, '\0');
    int32_t length = ucnv_convert("UTF-8", "macintosh", out.data(), static_cast<int32_t>(out.size()), bytes.data(),
                                  static_cast<int32_t>(bytes.size()), &status);
    if (U_FAILURE(status)) return {};
    out.resize(static_cast<std::size_t>(length));
    return out;
}

void giveOnePage(const ImportContext& context, std::string text) {
    context.result(onePage(std::move(text)), std::nullopt);
}

// Room for the rest of a file of known size, up to a piece; past the known
// end, a small read to find out whether the file grew.
std::size_t readSize(std::uint64_t size, std::uint64_t offset) {
    constexpr std::size_t probe = 64 * 1024;
    if (size <= offset) return probe;
    return static_cast<std::size_t>(std::min<std::uint64_t>(RawTextReader::pieceSize, size - offset));
}

}  // namespace

std::string RawTextReader::trimIncompleteUTF8Suffix(std::string& data) {
    std::size_t looked = 0;
    for (std::size_t index = data.size(); index > 0 && looked < 4; --index, ++looked) {
        auto byte = static_cast<unsigned char>(data[index - 1]);
        if (byte < 0x80) return {};
        if (isContinuation(byte)) continue;
        std::size_t start = index - 1;
        if (data.size() - start >= sequenceLength(byte)) return {};
        std::string suffix = data.substr(start);
        data.resize(start);
        return suffix;
    }
    return {};
}

std::string RawTextReader::decodePiece(std::string bytes) {
    // ASCII is a subset of UTF-8, so the UTF-8 test answers for both.
    if (isValidUTF8(bytes)) return bytes;
    return decodeMacRoman(bytes);
}

void RawTextReader::importText(const ImportContext& context) {
    const ReadableFile& file = context.file;
    std::uint64_t size = file.size().valueOr(0);
    context.reportProgress(0);
    // Holds the unfinished character of the last piece, then the new piece
    // read in behind it, so a piece is never copied to be joined.
    std::string carry;
    std::uint64_t offset = 0;
    while (!context.cancelled()) {
        std::size_t kept = carry.size();
        std::size_t want = readSize(size, offset);
        carry.resize(kept + want);
        auto got = file.readAt(offset, std::span<char>(carry.data() + kept, want));
        if (!got && offset == 0) return giveOnePage(context, {});
        carry.resize(kept + got.valueOr(0));
        if (!got || *got == 0) break;
        offset += *got;
        file.dropCachedPages();
        std::string next = trimIncompleteUTF8Suffix(carry);
        bool goOn = carry.empty() || context.result(onePage(decodePiece(std::move(carry))), std::nullopt);
        carry = std::move(next);
        if (size > 0) context.reportProgress(std::min(100.0f, static_cast<float>(offset) * 100.0f / size));
        if (!goOn) return;
    }
    if (!carry.empty()) giveOnePage(context, decodePiece(std::move(carry)));
}

}  // namespace quester
