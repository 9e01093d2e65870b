// Any bytes as a tar file: the block walk over memory and over a file, which
// must agree, then every entry's bytes under a small cap and its sidecar
// path. Nothing may crash, hang or give bytes outside the input or beyond
// the cap.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "FuzzedFile.h"
#include "content/TarArchive.h"

namespace {

constexpr std::uint64_t smallCap = 1 << 12;

void checkContents(const quester::TarArchive& archive, const quester::TarArchive::Entry& entry) {
    const auto contents = archive.contents(entry, smallCap);
    if (contents.error) {
        if (!contents.bytes.empty()) std::abort();
        return;
    }
    const std::string_view data = archive.data();
    if (contents.bytes.size() != entry.size || contents.bytes.size() > smallCap) std::abort();
    if (contents.bytes.data() < data.data() ||
        contents.bytes.data() + contents.bytes.size() > data.data() + data.size()) {
        std::abort();
    }
}

void compareWithFileWalk(const quester::TarArchive& archive, const std::uint8_t* data, std::size_t size) {
    const auto fromFile = quester::TarArchive::parseFile(quester::fuzzedFile(data, size));
    if (fromFile.size() != archive.entries().size()) std::abort();
    for (std::size_t index = 0; index < fromFile.size(); ++index) {
        const auto& inMemory = archive.entries()[index];
        if (fromFile[index].path != inMemory.path || fromFile[index].dataOffset != inMemory.dataOffset) std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const quester::TarArchive archive(std::string_view(reinterpret_cast<const char*>(data), size));
    if (archive.entries().size() > size / quester::TarArchive::blockSize) std::abort();
    compareWithFileWalk(archive, data, size);
    for (const auto& entry : archive.entries()) {
        if (entry.path.empty() || archive.entry(entry.path) == nullptr) std::abort();
        checkContents(archive, entry);
        if (const auto sidecar = quester::TarArchive::sidecarPath(entry.path); sidecar && sidecar->empty())
            std::abort();
    }
    return 0;
}
