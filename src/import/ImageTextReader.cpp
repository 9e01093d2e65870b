#include "import/ImageTextReader.h"

#include <poppler/cpp/poppler-document.h>
#include <poppler/cpp/poppler-page.h>

#include "import/PdfReader.h"
#include "import/VisionTextCollector.h"
#include "support/LogFunc.h"

namespace quester {

namespace {

std::vector<std::string> linesOfFirstPage(std::string bytes, const ImportContext& context) {
    auto document = PdfReader::Document::load(std::move(bytes));
    if (!document || document->pdf().pages() < 1) return {};
    std::unique_ptr<poppler::page> page(document->pdf().create_page(0));
    if (!page) return {};
    return VisionTextCollector::borrow()->linesOfTextFrom(*page, context.shouldCancel);
}

}  // namespace

void ImageTextReader::importText(const ImportContext& context) {
    try {
        auto bytes = context.file.readAll(maxBytes);
        if (!bytes) return;
        auto lines = bytes->starts_with("%PDF")
                         ? linesOfFirstPage(std::move(*bytes), context)
                         : VisionTextCollector::borrow()->linesOfTextFrom(*bytes, context.shouldCancel);
        if (lines.empty()) return;
        context.result(std::nullopt, onePage(VisionTextCollector::joined(lines)));
    } catch (...) {
        LOG("ImageTextReader stopped by an exception reading " + context.file.path());
    }
}

}  // namespace quester
