#include "import/PdfReader.h"

#include <fmt/format.h>
#include <poppler/cpp/poppler-document.h>
#include <poppler/cpp/poppler-global.h>
#include <poppler/cpp/poppler-page.h>

#include <algorithm>
#include <filesystem>
#include <mutex>

#include "import/VisionTextCollector.h"
#include "support/LogFunc.h"

namespace quester {

namespace {

// Poppler writes every complaint about a damaged file to standard error;
// a damaged file here just gives no text.
void silencePoppler() {
    static std::once_flag once;
    std::call_once(once, [] { poppler::set_debug_error_function([](const std::string&, void*) {}, nullptr); });
}

bool isLowSurrogate(unsigned short unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

// Characters as the running total counts them: code points, not UTF-16 units.
std::int64_t characterCount(const poppler::ustring& text) {
    return static_cast<std::int64_t>(text.size()) - std::count_if(text.begin(), text.end(), isLowSurrogate);
}

struct PageText {
    std::string text;
    std::int64_t characters = 0;
};

PageText textOf(const poppler::page* page) {
    if (page == nullptr) return {};
    poppler::ustring text = page->text(poppler::rectf(), poppler::page::non_raw_non_physical_layout);
    poppler::byte_array utf8 = text.to_utf8();
    return {std::string(utf8.begin(), utf8.end()), characterCount(text)};
}

void reportPageDone(const ImportContext& context, const std::string& name, int pagesDone, int pageCount) {
    float percentage = static_cast<float>(pagesDone) / static_cast<float>(pageCount) * 100.0f;
    context.reportProgress(percentage);
    // The helper's standard output is no console; the log is where this shows.
    LOG(fmt::format("importPDF: {} {:.0f}%", name, percentage));
}

void importPages(const ImportContext& context) {
    auto bytes = context.file.readAll(PdfReader::maxBytes);
    if (!bytes) return;
    auto document = PdfReader::Document::load(std::move(*bytes));
    if (!document) return;
    const poppler::document& pdf = document->pdf();
    const std::string name = std::filesystem::path(context.file.path()).filename().string();
    const int pageCount = pdf.pages();

    context.reportProgress(0);
    std::int64_t characters = 0;
    std::optional<VisionTextCollector::Loan> recogniser;
    if (context.useOCR) recogniser.emplace(VisionTextCollector::borrow());
    for (int index = 0; index < pageCount && characters < context.maxLength; ++index) {
        std::unique_ptr<poppler::page> page(pdf.create_page(index));
        PageText text = textOf(page.get());
        characters += text.characters;
        std::optional<ImportTextPages> ocrText;
        if (context.useOCR) {
            std::vector<std::string> lines;
            if (page) lines = (*recogniser)->linesOfTextFrom(*page, context.shouldCancel);
            characters += static_cast<std::int64_t>(lines.size());
            ocrText = onePage(VisionTextCollector::joined(lines));
        }
        bool goOn = context.result(onePage(std::move(text.text)), std::move(ocrText));
        reportPageDone(context, name, index + 1, pageCount);
        if (!goOn || context.cancelled()) break;
    }
    context.reportProgress(100);
}

}  // namespace

std::unique_ptr<PdfReader::Document> PdfReader::Document::load(std::string bytes) {
    silencePoppler();
    if (bytes.size() > maxBytes) return nullptr;
    std::unique_ptr<Document> loaded(new Document());
    loaded->bytes = std::move(bytes);
    loaded->document.reset(
        poppler::document::load_from_raw_data(loaded->bytes.data(), static_cast<int>(loaded->bytes.size())));
    if (!loaded->document || loaded->document->is_locked()) return nullptr;
    return loaded;
}

PdfReader::Document::~Document() = default;

void PdfReader::importText(const ImportContext& context) {
    // Nothing may escape into the helper's loop: a document that makes a
    // library throw (out of memory, mostly) counts as giving no more text.
    try {
        importPages(context);
    } catch (...) {
        LOG("PdfReader stopped by an exception reading " + context.file.path());
    }
}

}  // namespace quester
