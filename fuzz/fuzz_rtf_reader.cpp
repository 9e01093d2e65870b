// Any bytes as a rich text document. The reader may not crash, hang or leak;
// it gives UTF-8, and the text cut at a length is the start of the whole text.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>

#include <unicode/utf8.h>

#include "FuzzedFile.h"
#include "import/RtfReader.h"
#include "support/Utf8Text.h"

namespace {

constexpr std::int64_t shortLength = 16;

std::optional<std::string> textOf(const quester::ReadableFile& file, std::int64_t maxLength) {
    std::optional<std::string> found;
    quester::ImportContext context{
        file,
        maxLength,
        false,
        {},
        {},
        [&](std::optional<quester::ImportTextPages> text, std::optional<quester::ImportTextPages> ocr) {
            if (found || !text || text->size() != 1 || ocr) std::abort();
            found = text->front().text;
            return true;
        }};
    quester::RtfReader::importText(context);
    return found;
}

std::int64_t characterCount(const std::string& text) {
    std::int64_t count = 0;
    for (char byte : text) count += !U8_IS_TRAIL(byte);
    return count;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const quester::ReadableFile file = quester::fuzzedFile(data, size);
    auto whole = textOf(file, INT64_MAX);
    auto cut = textOf(file, shortLength);
    if (whole.has_value() != cut.has_value()) std::abort();
    if (!whole) return 0;
    if (whole->empty() || !quester::isValidUTF8(*whole)) std::abort();
    if (characterCount(*cut) > shortLength || !whole->starts_with(*cut)) std::abort();
    return 0;
}
