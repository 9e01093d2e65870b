#include "import/OfficeReader.h"

#include <libxml/parser.h>
#include <libxml/xmlreader.h>

#include <algorithm>
#include <charconv>
#include <climits>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "import/ZipArchive.h"

namespace quester {

namespace {

// Network access and entity substitution stay off: a document's DTD may name
// any file or address, and nothing it names is ever loaded.
constexpr int parseOptions = XML_PARSE_NONET | XML_PARSE_RECOVER | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;
// Nodes read between two looks at the cancel flag inside one member.
constexpr std::size_t nodesBetweenCancelChecks = 4096;
// Blanks one text:s element may stand for, so a forged count can't make
// gigabytes of spaces.
constexpr unsigned largestSpaceRun = 1024;
constexpr std::size_t largestSharedStringCount = 4'000'000;
constexpr std::string_view openDocumentType = "application/vnd.oasis.opendocument.";

void ignoreMessage(void*, const char*, ...) {}
void ignoreError(void*, xmlErrorPtr) {}

xmlParserInputPtr refuseToLoad(const char*, const char*, xmlParserCtxtPtr) {
    return nullptr;
}

// libxml2's global set-up, and silence on this thread: its default error
// handler would print a damaged document's faults on standard error. The
// entity loader refuses everything, so no external DTD or entity is read.
void prepareXmlParser() {
    static std::once_flag once;
    std::call_once(once, [] {
        xmlInitParser();
        xmlSetExternalEntityLoader(refuseToLoad);
    });
    xmlSetGenericErrorFunc(nullptr, ignoreMessage);
    xmlSetStructuredErrorFunc(nullptr, ignoreError);
}

std::string_view asView(const xmlChar* text) {
    return text == nullptr ? std::string_view() : std::string_view(reinterpret_cast<const char*>(text));
}

// The pages found so far, and the running count of characters that stops
// the reading once it passes the importer's `maxLength`.
class PageCollector {
public:
    explicit PageCollector(std::int64_t maxLength) : maxLength(maxLength) {}

    void append(std::string_view text) {
        if (full()) return;
        page += text;
        characters += std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; });
    }
    void append(char c) { append(std::string_view(&c, 1)); }
    // Ends the page at hand, empty or not, so page numbers match slides and
    // sheets; a page's trailing line breaks are dropped.
    void endPage() {
        while (!page.empty() && page.back() == '\n') page.pop_back();
        hasText = hasText || !page.empty();
        pages.push_back({std::move(page)});
        page.clear();
    }
    bool full() const { return characters > maxLength; }
    // The pages, or none when no page has text.
    std::optional<ImportTextPages> finish() {
        if (!page.empty()) endPage();
        if (!hasText) return std::nullopt;
        return std::move(pages);
    }

private:
    std::int64_t maxLength;
    std::int64_t characters = 0;
    std::string page;
    ImportTextPages pages;
    bool hasText = false;
};

// One XML member parsed as it is inflated: element starts, element ends and
// text, with the names of the open elements at hand. An empty element gives
// a start and an end. Reading stops at the end of the member, at damage
// that even recovery can't pass, and when the import is cancelled.
class XmlMember {
public:
    enum class Node { start, end, text };

    XmlMember(const ZipArchive& archive, const ZipArchive::Entry& entry, std::uint64_t maxBytes,
              const ImportContext& context)
        : source(archive.reader(entry, maxBytes)), context(context) {
        reader = xmlReaderForIO(readInput, nullptr, this, nullptr, nullptr, parseOptions);
        if (reader != nullptr) xmlTextReaderSetStructuredErrorHandler(reader, ignoreError, nullptr);
    }
    XmlMember(const XmlMember&) = delete;
    XmlMember& operator=(const XmlMember&) = delete;
    ~XmlMember() {
        if (reader != nullptr) xmlFreeTextReader(reader);
    }

    // Moves to the next start, end or text; false when there is none.
    bool next() {
        if (popBeforeNext && !openElements.empty()) openElements.pop_back();
        popBeforeNext = false;
        if (endOfEmptyElement) {
            endOfEmptyElement = false;
            return at(Node::end);
        }
        while (reader != nullptr && !cancelled()) {
            if (xmlTextReaderRead(reader) != 1) return false;
            switch (xmlTextReaderNodeType(reader)) {
                case XML_READER_TYPE_ELEMENT:
                    openElements.emplace_back(asView(xmlTextReaderConstLocalName(reader)));
                    endOfEmptyElement = xmlTextReaderIsEmptyElement(reader) == 1;
                    return at(Node::start);
                case XML_READER_TYPE_END_ELEMENT:
                    return at(Node::end);
                case XML_READER_TYPE_TEXT:
                case XML_READER_TYPE_CDATA:
                case XML_READER_TYPE_WHITESPACE:
                case XML_READER_TYPE_SIGNIFICANT_WHITESPACE:
                    return at(Node::text);
                default:
                    break;
            }
        }
        return false;
    }
    Node node() const { return current; }
    // The local name of the element `up` levels out from the node: for a
    // start or an end 0 is the element itself, for text the one holding it.
    std::string_view element(std::size_t up = 0) const {
        return up < openElements.size() ? std::string_view(openElements[openElements.size() - 1 - up]) : "";
    }
    bool isInside(std::string_view name) const {
        return std::find(openElements.begin(), openElements.end(), name) != openElements.end();
    }
    std::string_view text() const { return asView(xmlTextReaderConstValue(reader)); }
    // The value of the start's attribute with this local name; empty if none.
    std::string attribute(std::string_view localName) const {
        std::string value;
        for (int more = xmlTextReaderMoveToFirstAttribute(reader); more == 1;
             more = xmlTextReaderMoveToNextAttribute(reader)) {
            if (asView(xmlTextReaderConstLocalName(reader)) == localName) {
                value = asView(xmlTextReaderConstValue(reader));
                break;
            }
        }
        xmlTextReaderMoveToElement(reader);
        return value;
    }
    // Inflated bytes read so far.
    std::uint64_t bytesRead() const { return source.produced(); }

private:
    static int readInput(void* self, char* buffer, int length) {
        auto& member = *static_cast<XmlMember*>(self);
        const std::size_t got = member.source.read({buffer, static_cast<std::size_t>(std::max(length, 0))});
        return got == 0 && member.source.error() ? -1 : static_cast<int>(got);
    }
    bool at(Node node) {
        current = node;
        popBeforeNext = node == Node::end;
        return true;
    }
    bool cancelled() { return ++nodesRead % nodesBetweenCancelChecks == 0 && context.cancelled(); }

    ZipArchive::EntryReader source;
    const ImportContext& context;
    xmlTextReaderPtr reader = nullptr;
    std::vector<std::string> openElements;
    Node current = Node::text;
    bool endOfEmptyElement = false;
    bool popBeforeNext = false;
    std::size_t nodesRead = 0;
};

// The number in a member name such as "ppt/slides/slide12.xml" after
// `prefix`, or none when the name has another form.
std::optional<unsigned> numberedMember(std::string_view path, std::string_view prefix) {
    if (!path.starts_with(prefix) || !path.ends_with(".xml")) return std::nullopt;
    const std::string_view digits = path.substr(prefix.size(), path.size() - prefix.size() - 4);
    unsigned number = 0;
    auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
    return number;
}

// Entries named `prefix`, a number and ".xml", in numeric order (slide2
// before slide10).
std::vector<const ZipArchive::Entry*> numberedMembers(const ZipArchive& archive, std::string_view prefix) {
    std::vector<std::pair<unsigned, const ZipArchive::Entry*>> numbered;
    for (const auto& entry : archive.entries()) {
        if (auto number = numberedMember(entry.path, prefix)) numbered.emplace_back(*number, &entry);
    }
    std::stable_sort(numbered.begin(), numbered.end(), [](auto& a, auto& b) { return a.first < b.first; });
    std::vector<const ZipArchive::Entry*> members;
    for (const auto& [number, entry] : numbered) members.push_back(entry);
    return members;
}

// A workbook's shared strings, kept in one buffer: a workbook of millions
// of short strings costs their text and an offset each, and no more than
// `largestSharedStringCount` of them are kept.
class SharedStrings {
public:
    void add(std::string_view text) {
        if (ends.size() >= largestSharedStringCount) return;
        pool += text;
        ends.push_back(pool.size());
    }
    // The string at `index`; empty when there is none.
    std::string_view at(std::size_t index) const {
        if (index >= ends.size()) return {};
        const std::size_t start = index == 0 ? 0 : ends[index - 1];
        return std::string_view(pool).substr(start, ends[index] - start);
    }

private:
    std::string pool;
    std::vector<std::size_t> ends;
};

// One document's reading: the archive, what is left of the inflate budget,
// and the pages.
class OfficeImport {
public:
    OfficeImport(const ImportContext& context, const OfficeReader::Limits& limits, std::string_view bytes)
        : context(context),
          limits(limits),
          archive(bytes),
          budget(limits.totalBytes),
          pages(std::min(context.maxLength,
                         static_cast<std::int64_t>(std::min<std::uint64_t>(limits.totalBytes, INT64_MAX)))) {}

    std::optional<ImportTextPages> run() {
        if (archive.entry("word/document.xml")) {
            importWordDocument();
        } else if (archive.entry("xl/workbook.xml")) {
            importWorkbook();
        } else if (archive.entry("ppt/presentation.xml")) {
            importSlides();
        } else if (isOpenDocument()) {
            importOpenDocument();
        }
        return pages.finish();
    }

private:
    template <typename Visit>
    void readMember(const ZipArchive::Entry* entry, Visit visit) {
        if (entry == nullptr || budget == 0 || pages.full() || context.cancelled()) return;
        XmlMember xml(archive, *entry, std::min(limits.memberBytes, budget), context);
        while (!pages.full() && xml.next()) visit(xml);
        budget -= std::min(budget, xml.bytesRead());
    }
    template <typename Visit>
    void readMembers(const std::vector<const ZipArchive::Entry*>& members, Visit visit) {
        for (std::size_t index = 0; index < members.size(); ++index) {
            readMember(members[index], visit);
            context.reportProgress(static_cast<float>(index + 1) * 100 / static_cast<float>(members.size()));
        }
    }

    void importWordDocument() {
        std::vector<const ZipArchive::Entry*> members{archive.entry("word/document.xml")};
        for (auto prefix : {"word/header", "word/footer"}) {
            auto numbered = numberedMembers(archive, prefix);
            members.insert(members.end(), numbered.begin(), numbered.end());
        }
        members.push_back(archive.entry("word/footnotes.xml"));
        members.push_back(archive.entry("word/endnotes.xml"));
        readMembers(members, [&](const XmlMember& xml) { visitWordNode(xml); });
        pages.endPage();
    }
    void visitWordNode(const XmlMember& xml) {
        using Node = XmlMember::Node;
        // A text box is written twice, once for old readers inside a
        // "Fallback" element: that copy is skipped.
        if (xml.isInside("Fallback")) return;
        if (xml.node() == Node::text && xml.element() == "t") pages.append(xml.text());
        if (xml.node() == Node::start && xml.element(1) == "r") {
            if (xml.element() == "tab") pages.append('\t');
            if (xml.element() == "br" || xml.element() == "cr") pages.append('\n');
        }
        if (xml.node() == Node::end && xml.element() == "p") pages.append('\n');
    }

    void importWorkbook() {
        const SharedStrings sharedStrings = readSharedStrings();
        auto sheets = worksheetsInWorkbookOrder();
        for (std::size_t index = 0; index < sheets.size(); ++index) {
            readWorksheet(sheets[index], sharedStrings);
            context.reportProgress(static_cast<float>(index + 1) * 100 / static_cast<float>(sheets.size()));
        }
    }
    SharedStrings readSharedStrings() {
        SharedStrings strings;
        std::string item;
        readMember(archive.entry("xl/sharedStrings.xml"), [&](const XmlMember& xml) {
            if (xml.node() == XmlMember::Node::start && xml.element() == "si") item.clear();
            // Phonetic runs repeat the reading of East Asian text.
            if (xml.node() == XmlMember::Node::text && xml.element() == "t" && !xml.isInside("rPh")) item += xml.text();
            if (xml.node() == XmlMember::Node::end && xml.element() == "si") strings.add(item);
        });
        return strings;
    }
    // The worksheets as the workbook lists them, through its relationships;
    // by number when those can't be followed.
    std::vector<const ZipArchive::Entry*> worksheetsInWorkbookOrder() {
        std::map<std::string, std::string> targets;
        readMember(archive.entry("xl/_rels/workbook.xml.rels"), [&](const XmlMember& xml) {
            if (xml.node() == XmlMember::Node::start && xml.element() == "Relationship") {
                targets[xml.attribute("Id")] = xml.attribute("Target");
            }
        });
        std::vector<const ZipArchive::Entry*> sheets;
        readMember(archive.entry("xl/workbook.xml"), [&](const XmlMember& xml) {
            if (xml.node() != XmlMember::Node::start || xml.element() != "sheet") return;
            auto target = targets.find(xml.attribute("id"));
            if (target == targets.end()) return;
            const std::string& path = target->second;
            if (auto sheet = archive.entry(path.starts_with('/') ? path.substr(1) : "xl/" + path)) {
                sheets.push_back(sheet);
            }
        });
        return sheets.empty() ? numberedMembers(archive, "xl/worksheets/sheet") : sheets;
    }
    void readWorksheet(const ZipArchive::Entry* sheet, const SharedStrings& sharedStrings) {
        std::string type;
        std::string value;
        bool rowHasCell = false;
        bool sheetHasRow = false;
        readMember(sheet, [&](const XmlMember& xml) {
            using Node = XmlMember::Node;
            if (xml.node() == Node::start && xml.element() == "c") {
                type = xml.attribute("t");
                value.clear();
            }
            const bool cellValue = xml.element() == "v" && xml.element(1) == "c";
            const bool inlineText = xml.element() == "t" && xml.isInside("is");
            if (xml.node() == Node::text && (cellValue || inlineText)) value += xml.text();
            if (xml.node() == Node::end && xml.element() == "c") {
                const std::string text = cellText(type, value, sharedStrings);
                if (text.empty()) return;
                if (rowHasCell || sheetHasRow) pages.append(rowHasCell ? '\t' : '\n');
                pages.append(text);
                rowHasCell = true;
            }
            if (xml.node() == Node::end && xml.element() == "row") {
                sheetHasRow = sheetHasRow || rowHasCell;
                rowHasCell = false;
            }
        });
        pages.endPage();
    }
    static std::string cellText(const std::string& type, const std::string& value, const SharedStrings& sharedStrings) {
        if (type == "s") {
            std::size_t index = 0;
            auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), index);
            if (error != std::errc()) return {};
            return std::string(sharedStrings.at(index));
        }
        if (type == "b") return value == "1" ? "TRUE" : value == "0" ? "FALSE" : value;
        return value;
    }

    void importSlides() {
        auto slides = numberedMembers(archive, "ppt/slides/slide");
        for (std::size_t index = 0; index < slides.size(); ++index) {
            readMember(slides[index], [&](const XmlMember& xml) {
                using Node = XmlMember::Node;
                if (xml.node() == Node::text && xml.element() == "t") pages.append(xml.text());
                if (xml.node() == Node::start && xml.element() == "br") pages.append('\n');
                if (xml.node() == Node::end && xml.element() == "p") pages.append('\n');
            });
            if (pages.full() || context.cancelled()) break;
            pages.endPage();
            context.reportProgress(static_cast<float>(index + 1) * 100 / static_cast<float>(slides.size()));
        }
    }

    bool isOpenDocument() {
        const auto* mimetype = archive.entry("mimetype");
        if (mimetype == nullptr) return archive.entry("content.xml") != nullptr;
        if (mimetype->uncompressedSize > 256) return false;
        return archive.decompress(*mimetype).bytes.starts_with(openDocumentType);
    }
    void importOpenDocument() {
        int paragraphDepth = 0;
        readMember(archive.entry("content.xml"), [&](const XmlMember& xml) {
            using Node = XmlMember::Node;
            const std::string_view name = xml.element();
            const bool paragraph = name == "p" || name == "h";
            if (xml.node() == Node::text && paragraphDepth > 0) pages.append(xml.text());
            if (xml.node() == Node::start && paragraph) ++paragraphDepth;
            if (xml.node() == Node::start && paragraphDepth > 0) appendOpenDocumentMark(xml);
            if (xml.node() == Node::end && paragraph) {
                paragraphDepth = std::max(paragraphDepth - 1, 0);
                pages.append('\n');
            }
            if (xml.node() == Node::end && isOpenDocumentPage(xml)) pages.endPage();
        });
        context.reportProgress(100);
    }
    void appendOpenDocumentMark(const XmlMember& xml) {
        if (xml.element() == "tab") pages.append('\t');
        if (xml.element() == "line-break") pages.append('\n');
        if (xml.element() == "s") {
            const std::string count = xml.attribute("c");
            unsigned spaces = 1;
            std::from_chars(count.data(), count.data() + count.size(), spaces);
            pages.append(std::string(std::min(spaces, largestSpaceRun), ' '));
        }
    }
    // A sheet of a spreadsheet, or a page of a presentation or drawing.
    static bool isOpenDocumentPage(const XmlMember& xml) {
        return (xml.element() == "table" && xml.element(1) == "spreadsheet") || xml.element() == "page";
    }

    const ImportContext& context;
    const OfficeReader::Limits& limits;
    ZipArchive archive;
    std::uint64_t budget;
    PageCollector pages;
};

}  // namespace

void OfficeReader::importText(const ImportContext& context) {
    importTextWithin(context, Limits{});
}

void OfficeReader::importTextWithin(const ImportContext& context, const Limits& limits) {
    try {
        context.reportProgress(0);
        auto bytes = context.file.readAll(limits.fileBytes);
        if (!bytes) return;
        prepareXmlParser();
        auto pages = OfficeImport(context, limits, *bytes).run();
        context.reportProgress(100);
        if (pages && context.result) context.result(std::move(pages), std::nullopt);
    } catch (const std::exception&) {
        // Out of memory in a hostile document: it gives nothing.
    }
}

}  // namespace quester
