// Any bytes as a zip file: the directory walk, then every entry decoded whole
// when it is small, streamed under a small cap, and read through a reader in
// odd-sized pieces. Nothing may crash, hang or give more than it promised.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "import/ZipArchive.h"

namespace {

constexpr std::uint64_t smallCap = 1 << 16;

void streamUnderCap(const quester::ZipArchive& archive, const quester::ZipArchive::Entry& entry) {
    std::uint64_t given = 0;
    const auto error = archive.stream(entry, smallCap, [&](std::string_view piece) {
        given += piece.size();
        return true;
    });
    if (given > smallCap) std::abort();
    if (!error && given != static_cast<std::uint64_t>(entry.uncompressedSize)) std::abort();
}

void readInPieces(const quester::ZipArchive& archive, const quester::ZipArchive::Entry& entry, std::size_t piece) {
    auto reader = archive.reader(entry, smallCap / 4);
    std::vector<char> buffer(piece);
    std::uint64_t given = 0;
    while (std::size_t got = reader.read(buffer)) given += got;
    if (given != reader.produced() || given > smallCap / 4) std::abort();
    if (reader.finished() == reader.error().has_value()) std::abort();
}

void decompressWhenSmall(const quester::ZipArchive& archive, const quester::ZipArchive::Entry& entry) {
    if (entry.uncompressedSize > static_cast<std::int64_t>(smallCap)) return;
    const auto extracted = archive.decompress(entry);
    if (!extracted.error && extracted.bytes.size() != static_cast<std::size_t>(entry.uncompressedSize)) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const quester::ZipArchive archive(std::string_view(reinterpret_cast<const char*>(data), size));
    std::size_t index = 0;
    for (const auto& entry : archive.entries()) {
        if (archive.entry(entry.path) == nullptr) std::abort();
        streamUnderCap(archive, entry);
        readInPieces(archive, entry, 1 + index++ % 7);
        decompressWhenSmall(archive, entry);
    }
    return 0;
}
