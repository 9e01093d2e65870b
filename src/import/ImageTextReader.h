#pragma once

#include <cstdint>

#include "import/ImportContext.h"

namespace quester {

// Reads the text seen in a picture as one OCR page, with no text page.
// Illustrator files are PDF inside: their first page is drawn and read.
class ImageTextReader {
public:
    // Pictures past this are not read at all.
    static constexpr std::uint64_t maxBytes = 256ull << 20;

    // Gives nothing when the picture can't be read or shows no text.
    static void importText(const ImportContext& context);
};

}  // namespace quester
