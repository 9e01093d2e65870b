#include <iterator>
#include <utility>

#include "import/HtmlReader.h"
#include "import/ImageTextReader.h"
#include "import/ImportText.h"
#include "import/OfficeReader.h"
#include "import/PdfReader.h"
#include "import/RawTextReader.h"
#include "import/RtfReader.h"
#include "import/WordTally.h"
#include "platform/UniformTypeTable.h"

// The part of ImportText that runs the readers; only the import helper calls it.

namespace quester {

Importer ImportText::importerOf(Reader reader) {
    switch (reader) {
        case Reader::rtf:
            return &RtfReader::importText;
        case Reader::office:
            return &OfficeReader::importText;
        case Reader::image:
            return &ImageTextReader::importText;
        case Reader::pdf:
            return &PdfReader::importText;
        case Reader::html:
            return &HtmlReader::importHTML;
        case Reader::xml:
            return &HtmlReader::importXML;
        case Reader::rawText:
            return &RawTextReader::importText;
    }
    return nullptr;
}

Importer ImportText::importerFor(const std::string& type, std::string_view path, bool importRawTextAllowed,
                                 bool useOCR) const {
    std::optional<Reader> reader = readerFor(type, path, importRawTextAllowed, useOCR);
    return reader ? importerOf(*reader) : nullptr;
}

std::optional<ImportTextResult> ImportText::importFileText(const ReadableFile& file, bool importRawTextAllowed,
                                                           std::int64_t maxLength, bool useOCR,
                                                           std::function<void(float)> progressHandler,
                                                           std::function<bool()> shouldCancel) const {
    Importer importer = importerFor(types.typeOfItem(file.path(), false), file.path(), importRawTextAllowed, useOCR);
    if (!importer) return std::nullopt;
    ImportTextPages text;
    ImportTextPages ocrText;
    auto collect = [&](std::optional<ImportTextPages> morePages, std::optional<ImportTextPages> moreOCR) {
        if (morePages) std::move(morePages->begin(), morePages->end(), std::back_inserter(text));
        if (moreOCR) std::move(moreOCR->begin(), moreOCR->end(), std::back_inserter(ocrText));
        return true;
    };
    importer(ImportContext{file, maxLength, useOCR, std::move(progressHandler), std::move(shouldCancel), collect});
    if (text.empty() && ocrText.empty()) return std::nullopt;
    ImportTextResult result;
    if (!text.empty()) result.text = std::move(text);
    if (!ocrText.empty()) result.ocrText = std::move(ocrText);
    return result;
}

WordCounts ImportText::wordsInFile(const ReadableFile& file, bool useOCR, std::function<void(float)> progressHandler,
                                   std::function<bool()> shouldCancel) const {
    Importer importer = importerFor(types.typeOfItem(file.path(), false), file.path(), false, useOCR);
    if (!importer) return {};
    WordTally tally;
    auto count = [&](std::optional<ImportTextPages> text, std::optional<ImportTextPages> ocrText) {
        if (!(shouldCancel && shouldCancel())) tally.add(text, ocrText);
        return true;
    };
    importer(ImportContext{file, INT64_MAX, useOCR, std::move(progressHandler), shouldCancel, count});
    return tally.takeCounts();
}

}  // namespace quester
