// Any bytes as a web page and as an XML document. Neither reader may crash,
// hang or leak, and what they give is UTF-8 in normalised lines: no empty
// line, no blank at either end of a line, no run of blanks.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string_view>

#include "FuzzedFile.h"
#include "import/HtmlReader.h"
#include "support/Utf8Text.h"

namespace {

void checkLines(std::string_view text) {
    if (text.empty() || !quester::isValidUTF8(text)) std::abort();
    if (text.front() == '\n' || text.back() == '\n' || text.find("\n\n") != std::string_view::npos) std::abort();
    if (text.find("  ") != std::string_view::npos || text.find(" \n") != std::string_view::npos ||
        text.find("\n ") != std::string_view::npos || text.front() == ' ' || text.back() == ' ') {
        std::abort();
    }
}

void run(quester::Importer importer, const quester::ReadableFile& file) {
    quester::ImportContext context{
        file,
        INT64_MAX,
        false,
        {},
        {},
        [](std::optional<quester::ImportTextPages> text, std::optional<quester::ImportTextPages> ocr) {
            if (!text || text->size() != 1 || ocr) std::abort();
            checkLines(text->front().text);
            return true;
        }};
    importer(context);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const quester::ReadableFile file = quester::fuzzedFile(data, size);
    run(quester::HtmlReader::importHTML, file);
    run(quester::HtmlReader::importXML, file);
    return 0;
}
