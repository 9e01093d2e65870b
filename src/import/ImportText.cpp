#include "import/ImportText.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <utility>

#include "import/HtmlReader.h"
#include "import/ImageTextReader.h"
#include "import/OfficeReader.h"
#include "import/PdfReader.h"
#include "import/RawTextReader.h"
#include "import/RtfReader.h"
#include "import/WordTally.h"
#include "language/UnicodeText.h"
#include "platform/UniformTypeTable.h"
#include "support/PathText.h"

namespace quester {

namespace {

constexpr std::size_t longestWord = 32;

std::string lowercasedExtension(std::string_view path) {
    std::string_view name = lastPathComponentView(path);
    auto dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0) return {};
    std::string extension(name.substr(dot + 1));
    for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return extension;
}

// Joiners glue emoji and scripts into one character, so they never split.
bool splitsWords(UChar32 scalar) {
    if (scalar < 0) return true;
    if (scalar == 0x200C || scalar == 0x200D) return false;
    if (scalar >= 0xE000 && scalar <= 0xF8FF) return true;
    if (u_isUWhiteSpace(scalar)) return true;
    int8_t type = u_charType(scalar);
    return type == U_CONTROL_CHAR || type == U_FORMAT_CHAR || type == U_UNASSIGNED ||
           u_hasBinaryProperty(scalar, UCHAR_NONCHARACTER_CODE_POINT);
}

bool isCombiningMark(UChar32 scalar) {
    return (U_GET_GC_MASK(scalar) & U_GC_M_MASK) != 0;
}

bool isTrimmed(UChar32 scalar) {
    return (U_GET_GC_MASK(scalar) & (U_GC_P_MASK | U_GC_S_MASK)) != 0;
}

// `word` without punctuation and symbols at either end.
std::string_view trimmed(std::string_view word) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(word.data());
    int32_t length = static_cast<int32_t>(word.size());
    int32_t start = 0;
    while (start < length) {
        int32_t next = start;
        UChar32 scalar;
        U8_NEXT(bytes, next, length, scalar);
        if (!isTrimmed(scalar)) break;
        start = next;
    }
    int32_t end = length;
    while (end > start) {
        int32_t previous = end;
        UChar32 scalar;
        U8_PREV(bytes, start, previous, scalar);
        if (!isTrimmed(scalar)) break;
        end = previous;
    }
    return word.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start));
}

// Characters as a reader sees them: combining marks belong to the letter before.
std::size_t characterCount(std::string_view word) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(word.data());
    int32_t length = static_cast<int32_t>(word.size());
    std::size_t count = 0;
    for (int32_t index = 0; index < length;) {
        UChar32 scalar;
        U8_NEXT(bytes, index, length, scalar);
        if (!isCombiningMark(scalar)) ++count;
    }
    return count;
}

void addWord(std::string_view piece, std::string& lowered, std::vector<std::string>& words) {
    if (piece.empty()) return;
    lowercaseInto(piece, lowered);
    std::string_view word = trimmed(lowered);
    if (!word.empty() && characterCount(word) <= longestWord) words.emplace_back(word);
}

}  // namespace

const std::vector<std::string>& ImportText::extensionsList() {
    static const std::vector<std::string> extensions{"indd", "swift", "c",   "cpp", "h",
                                                     "json", "emlx",  "tsx", "csv", "xml"};
    return extensions;
}

ImportText::ImportText(const UniformTypeTable& types)
    : types(types), withOCR(builtinFileImportFunctions(true)), withoutOCR(builtinFileImportFunctions(false)) {}

ImportText::ImportText() : ImportText(UniformTypeTable::shared()) {}

ImportText::ImporterTable ImportText::builtinFileImportFunctions(bool useOCR) {
    ImporterTable table;
    // Rich documents: what a word processor, spreadsheet or slide program saves.
    table["public.rtf"] = &RtfReader::importText;
    for (const char* office : {"org.openxmlformats.wordprocessingml.document", "org.openxmlformats.spreadsheetml.sheet",
                               "org.openxmlformats.presentationml.presentation", "org.oasis-open.opendocument.text",
                               "org.oasis-open.opendocument.spreadsheet", "org.oasis-open.opendocument.presentation"}) {
        table[office] = &OfficeReader::importText;
    }
    // Pictures are read only by recognition, so only when it is wanted.
    if (useOCR) {
        for (const char* image : {"public.jpeg", "public.png", "com.compuserve.gif", "com.microsoft.bmp", "public.tiff",
                                  "org.webmproject.webp"}) {
            table[image] = &ImageTextReader::importText;
        }
    }
    table["com.adobe.illustrator.ai-image"] = &ImageTextReader::importText;
    table["com.adobe.pdf"] = &PdfReader::importText;
    table["public.html"] = &HtmlReader::importHTML;
    table["public.xml"] = &HtmlReader::importXML;
    table["public.plain-text"] = &RawTextReader::importText;
    table["com.apple.traditional-mac-plain-text"] = &RawTextReader::importText;
    return table;
}

bool ImportText::hasListedExtension(std::string_view path) const {
    const auto& listed = extensionsList();
    return std::find(listed.begin(), listed.end(), lowercasedExtension(path)) != listed.end();
}

bool ImportText::canImportTextFrom(std::string_view path, bool useOCR) const {
    std::string type = types.typeOfItem(path, false);
    if (tableFor(useOCR).count(type) > 0) return true;
    if (types.conformsTo(type, "public.plain-text")) return true;
    return hasListedExtension(path);
}

bool ImportText::canImportTextFromName(std::string_view name, bool useOCR) const {
    if (hasListedExtension(name)) return true;
    auto type = types.typeForExtension(lowercasedExtension(name));
    if (!type || !types.conformsTo(*type, "public.data")) return false;
    if (tableFor(useOCR).count(*type) > 0) return true;
    return types.conformsTo(*type, "public.plain-text");
}

Importer ImportText::importerFor(const std::string& type, std::string_view path, bool importRawTextAllowed,
                                 bool useOCR) const {
    const auto& table = tableFor(useOCR);
    if (auto row = table.find(type); row != table.end()) return row->second;
    if (types.conformsTo(type, "public.plain-text")) return &RawTextReader::importText;
    if (importRawTextAllowed || hasListedExtension(path)) return &RawTextReader::importText;
    return nullptr;
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

std::vector<std::string> ImportText::wordsFromText(std::string_view text) {
    std::vector<std::string> words;
    std::string lowered;
    const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
    int32_t length = static_cast<int32_t>(text.size());
    int32_t pieceStart = 0;
    for (int32_t index = 0; index < length;) {
        int32_t start = index;
        UChar32 scalar;
        if (bytes[index] < 0x80) {
            scalar = bytes[index++];
        } else {
            U8_NEXT(bytes, index, length, scalar);
        }
        if (!splitsWords(scalar)) continue;
        // A mark on a separator makes a character that is not all separator.
        if (index < length && bytes[index] >= 0x80) {
            int32_t peek = index;
            UChar32 following;
            U8_NEXT(bytes, peek, length, following);
            if (following >= 0 && isCombiningMark(following)) continue;
        }
        addWord(text.substr(static_cast<std::size_t>(pieceStart), static_cast<std::size_t>(start - pieceStart)),
                lowered, words);
        pieceStart = index;
    }
    addWord(text.substr(static_cast<std::size_t>(pieceStart)), lowered, words);
    return words;
}

}  // namespace quester
