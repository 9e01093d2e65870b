#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "import/ImportContext.h"

namespace poppler {
class document;
}

namespace quester {

// Reads a PDF's text page by page with Poppler, and with OCR the text seen on
// each drawn page as well.
class PdfReader {
public:
    // Poppler addresses a document's bytes with an int.
    static constexpr std::uint64_t maxBytes = INT32_MAX;

    // A document loaded from memory, with the bytes it keeps reading from.
    class Document {
    public:
        // None for bytes that aren't a PDF Poppler can open, and for a PDF
        // locked by a password. Poppler's own error messages stay quiet.
        static std::unique_ptr<Document> load(std::string bytes);
        ~Document();
        Document(const Document&) = delete;
        Document& operator=(const Document&) = delete;

        const poppler::document& pdf() const { return *document; }

    private:
        Document() = default;

        // Declared first so that it outlives the document that points into it.
        std::string bytes;
        std::unique_ptr<poppler::document> document;
    };

    // One text page per document page, so that locators name real page
    // numbers; with OCR also one OCR page per page. Stops after the page that
    // takes the characters past `maxLength`, when `result` answers false, or
    // when cancelled. A broken, locked or unreadable file gives nothing.
    static void importText(const ImportContext& context);
};

}  // namespace quester
