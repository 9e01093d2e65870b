// Any bytes as an office document, read by the office importer through a
// file as the import helper gets it. Small limits keep each run short; the
// reader must neither crash, throw, hang nor give pages without text.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "FuzzedFile.h"
#include "import/OfficeReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const quester::ReadableFile file = quester::fuzzedFile(data, size);
    const quester::OfficeReader::Limits limits{.fileBytes = 1 << 20, .memberBytes = 1 << 20, .totalBytes = 4 << 20};
    const quester::ImportContext context{
        file,
        1 << 20,
        false,
        nullptr,
        nullptr,
        [](std::optional<quester::ImportTextPages> text, std::optional<quester::ImportTextPages> ocr) {
            const auto empty = [](const quester::ImportTextPage& page) { return page.text.empty(); };
            if (!text || std::all_of(text->begin(), text->end(), empty) || ocr) std::abort();
            return true;
        }};
    quester::OfficeReader::importTextWithin(context, limits);
    return 0;
}
