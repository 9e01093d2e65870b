// Any bytes as a tar file: the block walk, then every entry's bytes under a
// small cap and its sidecar path. Nothing may crash, hang or give bytes
// outside the input or beyond the cap.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const quester::TarArchive archive(std::string_view(reinterpret_cast<const char*>(data), size));
    if (archive.entries().size() > size / quester::TarArchive::blockSize) std::abort();
    for (const auto& entry : archive.entries()) {
        if (entry.path.empty() || archive.entry(entry.path) == nullptr) std::abort();
        checkContents(archive, entry);
        if (const auto sidecar = quester::TarArchive::sidecarPath(entry.path); sidecar && sidecar->empty())
            std::abort();
    }
    return 0;
}
