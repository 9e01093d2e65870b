// Any bytes as a PDF, read through the PDF reader as the import helper reads
// a handed-over file (without recognition, which takes seconds a page): it
// must neither crash nor throw, and must give one text page a call.

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "import/PdfReader.h"

namespace {

// The input as a descriptor of a memory file, as the helper gets a document.
quester::ReadableFile fileWith(const std::uint8_t* data, std::size_t size) {
    int fd = memfd_create("document.pdf", MFD_CLOEXEC);
    if (fd < 0) std::abort();
    if (size > 0 && pwrite(fd, data, size, 0) != static_cast<ssize_t>(size)) std::abort();
    return quester::ReadableFile::adopt(fd, "document.pdf");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const quester::ReadableFile file = fileWith(data, size);
    float lastProgress = -1;
    quester::ImportContext context{
        file,
        INT64_MAX,
        false,
        [&](float percentage) { lastProgress = percentage; },
        {},
        [](std::optional<quester::ImportTextPages> text, std::optional<quester::ImportTextPages> ocrText) {
            if (!text || text->size() != 1 || ocrText) std::abort();
            return true;
        }};
    quester::PdfReader::importText(context);
    if (lastProgress != -1 && lastProgress != 100) std::abort();
    return 0;
}
