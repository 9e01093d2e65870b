#include "import/ImportText.h"

#include <algorithm>

#include "platform/UniformTypeTable.h"
#include "support/PathText.h"

namespace quester {

namespace {

std::string lowercasedExtension(std::string_view path) {
    std::string_view name = lastPathComponentView(path);
    auto dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0) return {};
    std::string extension(name.substr(dot + 1));
    for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return extension;
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
    table["public.rtf"] = Reader::rtf;
    for (const char* office : {"org.openxmlformats.wordprocessingml.document", "org.openxmlformats.spreadsheetml.sheet",
                               "org.openxmlformats.presentationml.presentation", "org.oasis-open.opendocument.text",
                               "org.oasis-open.opendocument.spreadsheet", "org.oasis-open.opendocument.presentation"}) {
        table[office] = Reader::office;
    }
    // Pictures are read only by recognition, so only when it is wanted.
    if (useOCR) {
        for (const char* image : {"public.jpeg", "public.png", "com.compuserve.gif", "com.microsoft.bmp", "public.tiff",
                                  "org.webmproject.webp"}) {
            table[image] = Reader::image;
        }
    }
    table["com.adobe.illustrator.ai-image"] = Reader::image;
    table["com.adobe.pdf"] = Reader::pdf;
    table["public.html"] = Reader::html;
    table["public.xml"] = Reader::xml;
    table["public.plain-text"] = Reader::rawText;
    table["com.apple.traditional-mac-plain-text"] = Reader::rawText;
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

std::optional<ImportText::Reader> ImportText::readerFor(const std::string& type, std::string_view path,
                                                        bool importRawTextAllowed, bool useOCR) const {
    const auto& table = tableFor(useOCR);
    if (auto row = table.find(type); row != table.end()) return row->second;
    if (types.conformsTo(type, "public.plain-text")) return Reader::rawText;
    if (importRawTextAllowed || hasListedExtension(path)) return Reader::rawText;
    return std::nullopt;
}

}  // namespace quester
