#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "import/ImportContext.h"
#include "import/WordTally.h"

namespace quester {

class UniformTypeTable;

// Turns a document into pages of text and into counted words, choosing the
// reader from the file's type. Both reader tables (with and without OCR) are
// built at creation; afterwards everything is const, so one instance may
// serve several threads. The readers run where this object runs: in the
// program only for the `canImportTextFrom` tests and small plain text, all
// else in the import helper.
class ImportText {
public:
    // Extensions read as raw text whatever their type.
    static const std::vector<std::string>& extensionsList();

    explicit ImportText(const UniformTypeTable& types);
    ImportText();

    // Whether a file of this path can give text: its type has a reader, or
    // conforms to plain text, or its extension is in `extensionsList`.
    bool canImportTextFrom(std::string_view path, bool useOCR) const;
    // The same for a name that has no file behind it, such as an archive entry.
    bool canImportTextFromName(std::string_view name, bool useOCR) const;

    // The document's pages; none when the file has no reader (raw text is
    // read for any type with `importRawTextAllowed`) or gave no page.
    std::optional<ImportTextResult> importFileText(const ReadableFile& file, bool importRawTextAllowed,
                                                   std::int64_t maxLength, bool useOCR,
                                                   std::function<void(float)> progressHandler = {},
                                                   std::function<bool()> shouldCancel = {}) const;
    // The document's words with their counts. On a page read both as text and
    // by OCR a word counts as often as the richer of the two has it.
    WordCounts wordsInFile(const ReadableFile& file, bool useOCR, std::function<void(float)> progressHandler = {},
                           std::function<bool()> shouldCancel = {}) const;

    // The words of a text in order: split at white space, control, private-use
    // and invalid characters, lowercased, stripped of punctuation and symbols at
    // both ends; empty pieces and pieces over 32 characters are dropped.
    static std::vector<std::string> wordsFromText(std::string_view text);

private:
    // Which reader reads a kind of document. The tables name readers by this
    // rather than by function, so that a program that only asks what can be
    // read (the main program, whose helper does the reading) links none of
    // them: the readers and their calls live in ImportTextReaders.cpp.
    enum class Reader { rtf, office, image, pdf, html, xml, rawText };
    using ImporterTable = std::unordered_map<std::string, Reader>;

    static ImporterTable builtinFileImportFunctions(bool useOCR);
    static Importer importerOf(Reader reader);
    const ImporterTable& tableFor(bool useOCR) const { return useOCR ? withOCR : withoutOCR; }
    // The reader for a file of `type`, by the table, else plain-text
    // conformance, else the raw reader when allowed; none when none.
    std::optional<Reader> readerFor(const std::string& type, std::string_view path, bool importRawTextAllowed,
                                    bool useOCR) const;
    Importer importerFor(const std::string& type, std::string_view path, bool importRawTextAllowed, bool useOCR) const;
    bool hasListedExtension(std::string_view path) const;

    const UniformTypeTable& types;
    ImporterTable withOCR;
    ImporterTable withoutOCR;
};

}  // namespace quester
