#pragma once

#include <cstdint>

#include "import/ImportContext.h"

namespace quester {

// The text of office documents: word-processing documents, workbooks and
// slide shows in the Office Open XML form (docx, xlsx, pptx) and the
// OpenDocument form (odt, ods, odp). The kind is told by the archive's
// members, not by the file's name. Each XML member is decoded and parsed as a
// stream, so a document costs memory in proportion to its text, never to its
// members' inflated size. Pages: one per worksheet, slide, spreadsheet table
// or drawing page; one for a word-processing document.
class OfficeReader {
public:
    // How much of a document is read at most.
    struct Limits {
        std::uint64_t fileBytes = std::uint64_t{512} << 20;
        // Inflated bytes of one member: a larger member gives the text of
        // its first part.
        std::uint64_t memberBytes = std::uint64_t{256} << 20;
        // Inflated bytes of all members together, and the most characters
        // of text kept (an element that stands for many blanks could
        // otherwise make far more text than there is XML).
        std::uint64_t totalBytes = std::uint64_t{1} << 30;
    };

    // The importer: reads `context.file` whole (up to the default file size
    // limit), gives the pages found in one `result` call, or nothing for a
    // file that is no office document, gives no text or can't be read. Text
    // read before damage in a member, or before a cancel, is still given.
    // Never throws.
    static void importText(const ImportContext& context);
    // The same within other limits.
    static void importTextWithin(const ImportContext& context, const Limits& limits);
};

}  // namespace quester
