#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "import/ImportContext.h"

namespace quester {

// Reads a plain text file of any size in 64 MiB pieces, each handed on as a
// page at once, keeping no cached pages in the system. A piece is UTF-8 when
// it decodes as such, else ASCII, else Mac Roman; a character cut by a piece
// boundary is carried whole into the next piece.
class RawTextReader {
public:
    static constexpr std::size_t pieceSize = 64 * 1024 * 1024;

    // The importer; neither `maxLength` nor `useOCR` matters to it. A file
    // that can't be read gives one empty page.
    static void importText(const ImportContext& context);

    // The bytes at the end of `data` that begin a UTF-8 sequence not
    // finished there; `data` is cut before them. Looks back at most 4 bytes.
    static std::string trimIncompleteUTF8Suffix(std::string& data);
    // `bytes` as UTF-8 text: unchanged when valid UTF-8, else read as Mac
    // Roman, which gives every byte a character.
    static std::string decodePiece(std::string bytes);
};

}  // namespace quester
