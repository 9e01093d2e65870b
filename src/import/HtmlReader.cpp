#include "import/HtmlReader.h"

#include <libxml/HTMLparser.h>
#include <libxml/entities.h>
#include <libxml/parser.h>
#include <libxml/xmlerror.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quester {
namespace {

// libxml2 takes the document's length as an int; pages beyond this are not
// web pages a person reads.
constexpr std::uint64_t maximumDocumentBytes = 256u << 20;
constexpr unsigned eventsBetweenCancelChecks = 4096;
// How far into a page a <meta> charset is looked for.
constexpr std::size_t encodingPrescanBytes = 64u << 10;

// Text gathered into normalised lines: a run of blanks becomes one blank, a
// line neither begins nor ends with one, and an empty line is never written.
class LineWriter {
public:
    // With `preformatted`, a newline in the text ends the line. The XML
    // parser passes on bytes that aren't UTF-8 as they are: each is read as
    // Latin-1, as the HTML parser does, so that the text is always UTF-8.
    void append(std::string_view utf8, bool preformatted) {
        std::size_t index = 0;
        while (index < utf8.size()) {
            std::size_t start = index;
            UChar32 character;
            U8_NEXT(utf8.data(), index, utf8.size(), character);
            if (character < 0) {
                index = start + 1;
                character = static_cast<unsigned char>(utf8[start]);
            }
            if (character == '\n' && preformatted) {
                endLine();
            } else if (isBlank(character)) {
                separate();
            } else {
                write(character);
            }
        }
    }
    // Words on either side stay apart.
    void separate() { blankPending = lineHasText; }
    // Returns whether a line ended, its newline being the last byte written.
    bool endLine() {
        blankPending = false;
        if (!lineHasText) return false;
        text += '\n';
        lineHasText = false;
        return true;
    }
    // Turns the line ends at `lineEnds` from `offset` on into blanks, taking
    // them off the list, so that what was written since `offset` is one line.
    void joinLines(std::vector<std::size_t>& lineEnds, std::size_t offset) {
        while (!lineEnds.empty() && lineEnds.back() >= offset) {
            std::size_t position = lineEnds.back();
            lineEnds.pop_back();
            if (position + 1 == text.size()) {
                text.pop_back();
                lineHasText = true;
                blankPending = true;
            } else {
                text[position] = ' ';
            }
        }
    }
    std::size_t size() const { return text.size(); }
    std::string take() {
        if (!text.empty() && text.back() == '\n') text.pop_back();
        return std::move(text);
    }

private:
    static bool isBlank(UChar32 character) {
        return character == ' ' || character == '\t' || character == '\n' || character == '\r' || character == '\f' ||
               character == '\v' || character == 0xA0;
    }
    void write(UChar32 character) {
        if (blankPending) text += ' ';
        blankPending = false;
        lineHasText = true;
        char bytes[U8_MAX_LENGTH];
        std::size_t length = 0;
        U8_APPEND_UNSAFE(bytes, length, character);
        text.append(bytes, length);
    }

    std::string text;
    bool lineHasText = false;
    bool blankPending = false;
};

// What one parse shares with its callbacks.
struct ParseState {
    const ImportContext& context;
    xmlParserCtxtPtr parser = nullptr;
    LineWriter lines;
    unsigned eventsSinceCheck = 0;
    bool stopped = false;

    explicit ParseState(const ImportContext& importContext) : context(importContext) {}

    void stop() {
        stopped = true;
        xmlStopParser(parser);
    }
    // Runs a callback's work; an exception (out of memory) must not cross
    // libxml2's C frames, so it stops the parse instead.
    template <typename Work>
    void guarded(Work&& work) {
        if (stopped) return;
        if (++eventsSinceCheck >= eventsBetweenCancelChecks) {
            eventsSinceCheck = 0;
            if (context.cancelled()) return stop();
        }
        try {
            work();
        } catch (const std::exception&) {
            stop();
        }
    }
};

// Messages libxml2 raises outside a parser (encoding and memory failures) go
// to its generic handler, which is kept per thread: silenced while a parse
// runs, then restored for whoever else uses libxml2.
class QuietLibxml {
public:
    QuietLibxml() : handler(xmlGenericError), handlerContext(xmlGenericErrorContext) {
        static const bool initialised = (xmlInitParser(), true);
        (void)initialised;
        xmlSetGenericErrorFunc(nullptr, ignoreMessage);
    }
    ~QuietLibxml() { xmlSetGenericErrorFunc(handlerContext, handler); }
    QuietLibxml(const QuietLibxml&) = delete;
    QuietLibxml& operator=(const QuietLibxml&) = delete;

private:
    static void ignoreMessage(void*, const char*, ...) {}

    xmlGenericErrorFunc handler;
    void* handlerContext;
};

void ignoreStructuredError(void*, xmlErrorPtr) {}

// Callbacks for the parser's own errors and nothing else; the caller adds
// the events it wants.
xmlSAXHandler quietHandler() {
    xmlSAXHandler handler;
    std::memset(&handler, 0, sizeof handler);
    handler.initialized = XML_SAX2_MAGIC;
    handler.serror = ignoreStructuredError;
    return handler;
}

template <typename State>
State& stateOf(void* userData) {
    return *static_cast<State*>(userData);
}

std::string_view charactersOf(const xmlChar* characters, int length) {
    return {reinterpret_cast<const char*>(characters), static_cast<std::size_t>(std::max(length, 0))};
}

// The text of the parse that `state` saw; none when it stopped early.
std::optional<std::string> textOf(ParseState& state) {
    if (state.stopped) return std::nullopt;
    return state.lines.take();
}

// Gives what `read` found as one page. Nothing escapes: running out of memory
// gives nothing, as a document that can't be read does.
template <typename Read>
void giveText(const ImportContext& context, Read&& read) {
    std::optional<ImportTextPages> pages;
    try {
        std::optional<std::string> text = read();
        if (text && !text->empty()) pages = onePage(std::move(*text));
    } catch (const std::exception&) {
        return;
    }
    if (pages && !context.cancelled()) context.result(std::move(pages), std::nullopt);
}

// ---- HTML

enum class HtmlRole { inlineText, block, cell, preformatted, title, head, leftOut };

HtmlRole htmlRoleOf(std::string_view name) {
    static constexpr auto roles = std::to_array<std::pair<std::string_view, HtmlRole>>({
        {"address", HtmlRole::block},
        {"applet", HtmlRole::leftOut},
        {"article", HtmlRole::block},
        {"aside", HtmlRole::block},
        {"blockquote", HtmlRole::block},
        {"body", HtmlRole::block},
        {"br", HtmlRole::block},
        {"caption", HtmlRole::block},
        {"center", HtmlRole::block},
        {"dd", HtmlRole::block},
        {"details", HtmlRole::block},
        {"dialog", HtmlRole::block},
        {"dir", HtmlRole::block},
        {"div", HtmlRole::block},
        {"dl", HtmlRole::block},
        {"dt", HtmlRole::block},
        {"fieldset", HtmlRole::block},
        {"figcaption", HtmlRole::block},
        {"figure", HtmlRole::block},
        {"footer", HtmlRole::block},
        {"form", HtmlRole::block},
        {"frameset", HtmlRole::block},
        {"h1", HtmlRole::block},
        {"h2", HtmlRole::block},
        {"h3", HtmlRole::block},
        {"h4", HtmlRole::block},
        {"h5", HtmlRole::block},
        {"h6", HtmlRole::block},
        {"head", HtmlRole::head},
        {"header", HtmlRole::block},
        {"hgroup", HtmlRole::block},
        {"hr", HtmlRole::block},
        {"html", HtmlRole::block},
        {"iframe", HtmlRole::leftOut},
        {"legend", HtmlRole::block},
        {"li", HtmlRole::block},
        {"listing", HtmlRole::preformatted},
        {"main", HtmlRole::block},
        {"menu", HtmlRole::block},
        {"nav", HtmlRole::block},
        {"noembed", HtmlRole::leftOut},
        {"noscript", HtmlRole::leftOut},
        {"ol", HtmlRole::block},
        {"option", HtmlRole::block},
        {"p", HtmlRole::block},
        {"plaintext", HtmlRole::preformatted},
        {"pre", HtmlRole::preformatted},
        {"script", HtmlRole::leftOut},
        {"section", HtmlRole::block},
        {"style", HtmlRole::leftOut},
        {"summary", HtmlRole::block},
        {"table", HtmlRole::block},
        {"tbody", HtmlRole::block},
        {"td", HtmlRole::cell},
        {"template", HtmlRole::leftOut},
        {"textarea", HtmlRole::preformatted},
        {"tfoot", HtmlRole::block},
        {"th", HtmlRole::cell},
        {"thead", HtmlRole::block},
        {"title", HtmlRole::title},
        {"tr", HtmlRole::block},
        {"ul", HtmlRole::block},
        {"xmp", HtmlRole::preformatted},
    });
    static_assert(std::is_sorted(roles.begin(), roles.end()));
    auto found = std::lower_bound(roles.begin(), roles.end(), name,
                                  [](const auto& entry, std::string_view key) { return entry.first < key; });
    return found != roles.end() && found->first == name ? found->second : HtmlRole::inlineText;
}

// The parser closes every element it opens, even in broken markup, so
// counters of open elements are enough to know where text belongs.
struct HtmlText : ParseState {
    using ParseState::ParseState;

    unsigned leftOut = 0;
    unsigned inHead = 0;
    unsigned inTitle = 0;
    unsigned preformatted = 0;

    void start(std::string_view name) {
        HtmlRole role = htmlRoleOf(name);
        if (leftOut > 0 || role == HtmlRole::leftOut) {
            ++leftOut;
            return;
        }
        if (inHead > 0 || role == HtmlRole::head) ++inHead;
        if (role == HtmlRole::title) ++inTitle;
        if (role == HtmlRole::preformatted) ++preformatted;
        markEdge(role);
    }
    void end(std::string_view name) {
        if (leftOut > 0) {
            --leftOut;
            return;
        }
        HtmlRole role = htmlRoleOf(name);
        if (inHead > 0) --inHead;
        if (role == HtmlRole::title && inTitle > 0) --inTitle;
        if (role == HtmlRole::preformatted && preformatted > 0) --preformatted;
        markEdge(role);
    }
    void text(std::string_view characters) {
        if (leftOut > 0 || (inHead > 0 && inTitle == 0)) return;
        lines.append(characters, preformatted > 0);
    }

private:
    void markEdge(HtmlRole role) {
        if (role == HtmlRole::cell) {
            lines.separate();
        } else if (role != HtmlRole::inlineText) {
            lines.endLine();
        }
    }
};

xmlSAXHandler htmlHandler() {
    xmlSAXHandler handler = quietHandler();
    handler.startElement = [](void* state, const xmlChar* name, const xmlChar**) {
        auto& html = stateOf<HtmlText>(state);
        html.guarded([&] { html.start(reinterpret_cast<const char*>(name)); });
    };
    handler.endElement = [](void* state, const xmlChar* name) {
        auto& html = stateOf<HtmlText>(state);
        html.guarded([&] { html.end(reinterpret_cast<const char*>(name)); });
    };
    handler.characters = [](void* state, const xmlChar* characters, int length) {
        auto& html = stateOf<HtmlText>(state);
        html.guarded([&] { html.text(charactersOf(characters, length)); });
    };
    handler.ignorableWhitespace = handler.characters;
    return handler;
}

bool startsWithIgnoringCase(std::string_view text, std::string_view lowercasePrefix) {
    return text.size() >= lowercasePrefix.size() &&
           std::equal(lowercasePrefix.begin(), lowercasePrefix.end(), text.begin(), [](char expected, char actual) {
               return std::tolower(static_cast<unsigned char>(actual)) == expected;
           });
}

std::size_t findIgnoringCase(std::string_view text, std::string_view lowercaseWord, std::size_t from) {
    for (std::size_t index = from; index < text.size(); ++index) {
        if (startsWithIgnoringCase(text.substr(index), lowercaseWord)) return index;
    }
    return std::string_view::npos;
}

// The name after "charset" in a <meta> tag, in either of its forms
// (charset="x", or content="text/html; charset=x").
std::optional<std::string> charsetInMetaTag(std::string_view tag) {
    std::size_t at = findIgnoringCase(tag, "charset", 0);
    if (at == std::string_view::npos) return std::nullopt;
    std::size_t index = at + std::strlen("charset");
    auto skip = [&](std::string_view characters) {
        while (index < tag.size() && characters.find(tag[index]) != std::string_view::npos) ++index;
    };
    skip(" \t\r\n");
    if (index >= tag.size() || tag[index] != '=') return std::nullopt;
    ++index;
    skip(" \t\r\n\"'");
    std::size_t nameStart = index;
    while (index < tag.size() && (std::isalnum(static_cast<unsigned char>(tag[index])) ||
                                  std::string_view("-_.:").find(tag[index]) != std::string_view::npos)) {
        ++index;
    }
    if (index == nameStart) return std::nullopt;
    return std::string(tag.substr(nameStart, index - nameStart));
}

// How a page's bytes decode: the encoding libxml2 is to use and how many
// bytes of byte-order mark to leave out.
struct PageEncoding {
    std::string name = "UTF-8";
    std::size_t markLength = 0;
};

PageEncoding pageEncoding(std::string_view page) {
    if (page.starts_with("\xEF\xBB\xBF")) return {"UTF-8", 3};
    if (page.starts_with("\xFF\xFE")) return {"UTF-16LE", 2};
    if (page.starts_with("\xFE\xFF")) return {"UTF-16BE", 2};
    std::string_view prefix = page.substr(0, encodingPrescanBytes);
    for (std::size_t at = findIgnoringCase(prefix, "<meta", 0); at != std::string_view::npos;
         at = findIgnoringCase(prefix, "<meta", at + 1)) {
        std::size_t tagEnd = prefix.find('>', at);
        auto charset = charsetInMetaTag(prefix.substr(at, tagEnd == std::string_view::npos ? tagEnd : tagEnd - at));
        if (!charset) continue;
        // A page whose meta tag could be read is not UTF-16, and Latin-1
        // labels mean windows-1252 on the web, whose 0x80-0x9F are printable.
        if (startsWithIgnoringCase(*charset, "utf-16")) return {};
        for (std::string_view latin : {"iso-8859-1", "iso8859-1", "latin1", "us-ascii", "ascii"}) {
            if (charset->size() == latin.size() && startsWithIgnoringCase(*charset, latin)) return {"windows-1252"};
        }
        return {*charset};
    }
    return {};
}

// ---- XML

struct XmlText : ParseState {
    using ParseState::ParseState;

    struct OpenElement {
        std::size_t textStart;
        bool hasOwnText;
    };
    std::vector<OpenElement> open;
    std::vector<std::size_t> lineEnds;
    xmlDocPtr entityHolder = nullptr;

    ~XmlText() {
        if (entityHolder != nullptr) xmlFreeDoc(entityHolder);
    }

    // Every entity reads as empty. A declared one is not expanded (an
    // external one would bring in a file), and an undeclared one must not be
    // an error: after the first error libxml2 drops every later reference,
    // "&amp;" included.
    xmlEntityPtr emptyEntity(const xmlChar* name, xmlEntityType type) {
        if (entityHolder == nullptr) {
            entityHolder = xmlNewDoc(BAD_CAST "1.0");
            if (entityHolder == nullptr) return nullptr;
            xmlCreateIntSubset(entityHolder, BAD_CAST "entities", nullptr, nullptr);
        }
        xmlEntityPtr known = type == XML_INTERNAL_PARAMETER_ENTITY ? xmlGetParameterEntity(entityHolder, name)
                                                                   : xmlGetDocEntity(entityHolder, name);
        if (known != nullptr) return known;
        return xmlAddDocEntity(entityHolder, name, type, nullptr, nullptr, BAD_CAST "");
    }

    void start() {
        markEdge();
        open.push_back({lines.size(), false});
    }
    void end() {
        if (open.empty()) return;
        OpenElement element = open.back();
        open.pop_back();
        if (element.hasOwnText) lines.joinLines(lineEnds, element.textStart);
        markEdge();
    }
    void text(std::string_view characters) {
        bool blank = std::all_of(characters.begin(), characters.end(), [](char byte) {
            return std::string_view(" \t\r\n").find(byte) != std::string_view::npos;
        });
        if (!blank && !open.empty()) open.back().hasOwnText = true;
        lines.append(characters, false);
    }

private:
    void markEdge() {
        if (lines.endLine()) lineEnds.push_back(lines.size() - 1);
    }
};

xmlSAXHandler xmlHandler() {
    xmlSAXHandler handler = quietHandler();
    handler.startElementNs = [](void* state, const xmlChar*, const xmlChar*, const xmlChar*, int, const xmlChar**, int,
                                int, const xmlChar**) {
        auto& xml = stateOf<XmlText>(state);
        xml.guarded([&] { xml.start(); });
    };
    handler.endElementNs = [](void* state, const xmlChar*, const xmlChar*, const xmlChar*) {
        auto& xml = stateOf<XmlText>(state);
        xml.guarded([&] { xml.end(); });
    };
    handler.characters = [](void* state, const xmlChar* characters, int length) {
        auto& xml = stateOf<XmlText>(state);
        xml.guarded([&] { xml.text(charactersOf(characters, length)); });
    };
    handler.ignorableWhitespace = handler.characters;
    handler.cdataBlock = handler.characters;
    handler.getEntity = [](void* state, const xmlChar* name) {
        return stateOf<XmlText>(state).emptyEntity(name, XML_INTERNAL_GENERAL_ENTITY);
    };
    handler.getParameterEntity = [](void* state, const xmlChar* name) {
        return stateOf<XmlText>(state).emptyEntity(name, XML_INTERNAL_PARAMETER_ENTITY);
    };
    return handler;
}

struct FreeParser {
    void operator()(xmlParserCtxtPtr parser) const { xmlFreeParserCtxt(parser); }
};
using Parser = std::unique_ptr<xmlParserCtxt, FreeParser>;

// Runs `read` on a new parser context whose events go to `state`.
template <typename Read>
void parseWith(Parser parser, const xmlSAXHandler& handler, ParseState& state, Read&& read) {
    if (parser == nullptr) return;
    *parser->sax = handler;
    parser->userData = &state;
    state.parser = parser.get();
    xmlDocPtr document = read(parser.get());
    if (document != nullptr) xmlFreeDoc(document);
}

std::optional<std::string> htmlText(const ImportContext& context) {
    auto page = context.file.readAll(maximumDocumentBytes);
    if (!page) return std::nullopt;
    QuietLibxml quiet;
    HtmlText state(context);
    PageEncoding encoding = pageEncoding(*page);
    std::string_view bytes = std::string_view(*page).substr(encoding.markLength);
    parseWith(Parser(htmlNewParserCtxt()), htmlHandler(), state, [&](htmlParserCtxtPtr parser) {
        return htmlCtxtReadMemory(parser, bytes.data(), static_cast<int>(bytes.size()), nullptr, encoding.name.c_str(),
                                  HTML_PARSE_RECOVER | HTML_PARSE_NONET | HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING |
                                      HTML_PARSE_NODEFDTD | HTML_PARSE_IGNORE_ENC);
    });
    return textOf(state);
}

std::optional<std::string> xmlText(const ImportContext& context) {
    auto document = context.file.readAll(maximumDocumentBytes);
    if (!document) return std::nullopt;
    QuietLibxml quiet;
    XmlText state(context);
    parseWith(Parser(xmlNewParserCtxt()), xmlHandler(), state, [&](xmlParserCtxtPtr parser) {
        return xmlCtxtReadMemory(parser, document->data(), static_cast<int>(document->size()), nullptr, nullptr,
                                 XML_PARSE_RECOVER | XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
    });
    return textOf(state);
}

}  // namespace

void HtmlReader::importHTML(const ImportContext& context) {
    giveText(context, [&] { return htmlText(context); });
}

void HtmlReader::importXML(const ImportContext& context) {
    giveText(context, [&] { return xmlText(context); });
}

}  // namespace quester
