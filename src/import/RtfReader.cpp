#include "import/RtfReader.h"

#include <unicode/ucnv.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <exception>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quester {
namespace {

constexpr std::size_t pieceBytes = 64u << 10;
constexpr std::size_t maximumGroupDepth = 1024;
constexpr std::size_t maximumFonts = 4096;
constexpr std::size_t maximumWordLength = 32;
// Code page bytes wait for the run to end so that a double-byte pair decodes
// whole; a run longer than this is decoded in parts.
constexpr std::size_t maximumPendingBytes = 4096;
constexpr std::size_t maximumOpenConverters = 64;
constexpr int maximumUnicodeSkip = 255;
constexpr int windowsLatin1 = 1252;
// A font whose character set says nothing of its own uses the document's
// code page.
constexpr int documentCodePage = 0;

// The file's bytes in order, a piece at a time. The end of the file, a read
// error and a cancelled import all read as the end; `failed` tells them apart.
class ByteSource {
public:
    static constexpr int end = -1;

    explicit ByteSource(const ImportContext& importContext) : context(importContext), buffer(pieceBytes) {
        auto size = context.file.size();
        fileSize = size ? *size : 0;
    }

    int next() { return available() ? static_cast<unsigned char>(buffer[position++]) : end; }
    int peek() { return available() ? static_cast<unsigned char>(buffer[position]) : end; }
    void skip(std::uint64_t count) {
        std::uint64_t buffered = filled - position;
        if (count <= buffered) {
            position += count;
            return;
        }
        position = filled;
        fileOffset += count - buffered;
    }
    bool failed() const { return readFailed || cancelled; }

private:
    bool available() { return position < filled || refill(); }
    bool refill() {
        if (atEnd) return false;
        if (context.cancelled()) cancelled = true;
        auto got = cancelled ? Result<std::size_t>(std::size_t{0}) : context.file.readAt(fileOffset, buffer);
        readFailed = !got;
        if (!got || *got == 0) {
            atEnd = true;
            return false;
        }
        fileOffset += *got;
        position = 0;
        filled = *got;
        if (fileSize > 0) context.reportProgress(std::min(100.0f, 100.0f * fileOffset / fileSize));
        return true;
    }

    const ImportContext& context;
    std::vector<char> buffer;
    std::size_t position = 0;
    std::size_t filled = 0;
    std::uint64_t fileOffset = 0;
    std::uint64_t fileSize = 0;
    bool atEnd = false;
    bool readFailed = false;
    bool cancelled = false;
};

// UTF-8 text that takes no more than a given number of characters.
class TextOutput {
public:
    explicit TextOutput(std::int64_t maxLength) : room(std::max<std::int64_t>(maxLength, 0)) {}

    bool full() const { return room == 0; }
    void append(char32_t codePoint) {
        if (full() || (codePoint < 0x20 && codePoint != '\t' && codePoint != '\n')) return;
        if (U_IS_SURROGATE(codePoint) || codePoint > 0x10FFFF) codePoint = 0xFFFD;
        char bytes[U8_MAX_LENGTH];
        std::int32_t length = 0;
        U8_APPEND_UNSAFE(bytes, length, codePoint);
        text.append(bytes, static_cast<std::size_t>(length));
        --room;
    }
    std::string take() { return std::move(text); }

private:
    std::string text;
    std::int64_t room;
};

// The code pages of Windows and the Mac that a document or its fonts name,
// decoded through ICU; a page ICU doesn't know is read as windows-1252.
class CodePages {
public:
    std::u16string_view decode(int codePage, std::string_view bytes) {
        UConverter* converter = converterFor(codePage);
        if (converter == nullptr) converter = converterFor(windowsLatin1);
        if (converter == nullptr) return {};
        units.resize(2 * bytes.size() + 2);
        UErrorCode status = U_ZERO_ERROR;
        std::int32_t length = ucnv_toUChars(converter, units.data(), static_cast<std::int32_t>(units.size()),
                                            bytes.data(), static_cast<std::int32_t>(bytes.size()), &status);
        if (U_FAILURE(status)) return {};
        return {units.data(), static_cast<std::size_t>(length)};
    }

private:
    struct CloseConverter {
        void operator()(UConverter* converter) const { ucnv_close(converter); }
    };
    using Converter = std::unique_ptr<UConverter, CloseConverter>;

    UConverter* converterFor(int codePage) {
        auto found = converters.find(codePage);
        if (found != converters.end()) return found->second.get();
        if (converters.size() >= maximumOpenConverters) converters.clear();
        std::string name = codePage == 10000 ? "macintosh" : "cp" + std::to_string(codePage);
        UErrorCode status = U_ZERO_ERROR;
        Converter converter(ucnv_open(name.c_str(), &status));
        if (U_FAILURE(status)) converter.reset();
        return converters.emplace(codePage, std::move(converter)).first->second.get();
    }

    std::map<int, Converter> converters;
    std::u16string units;
};

// The code page of a font's \fcharset.
int codePageOfCharset(int charset) {
    static constexpr std::array<std::pair<int, int>, 17> codePages{{
        {77, 10000},
        {128, 932},
        {129, 949},
        {130, 1361},
        {134, 936},
        {136, 950},
        {161, 1253},
        {162, 1254},
        {163, 1258},
        {177, 1255},
        {178, 1256},
        {186, 1257},
        {204, 1251},
        {222, 874},
        {238, 1250},
        {254, 437},
        {255, 850},
    }};
    for (auto [set, codePage] : codePages) {
        if (set == charset) return codePage;
    }
    return documentCodePage;
}

enum class Destination : std::uint8_t { text, fontTable, ansiAlternative, leftOut };

struct GroupState {
    Destination destination = Destination::text;
    bool hidden = false;
    int font = -1;
    int unicodeSkip = 1;
};

enum class Word : std::uint8_t {
    leftOutDestination,
    fontTable,
    ansiAlternative,
    unicodeAlternative,
    lineEnd,
    tab,
    cell,
    symbol,
    unicode,
    unicodeSkip,
    ansiCodePage,
    ansi,
    mac,
    pc,
    pca,
    font,
    defaultFont,
    fontCharset,
    fontCodePage,
    hidden,
    plain,
};

struct WordMeaning {
    std::string_view name;
    Word word;
    char32_t symbol = 0;
};

// Control words that matter to the text, sorted by name. Destinations whose
// text isn't the document's are left out with all they hold.
constexpr auto wordMeanings = std::to_array<WordMeaning>({
    {"aftncn", Word::leftOutDestination},
    {"aftnsep", Word::leftOutDestination},
    {"aftnsepc", Word::leftOutDestination},
    {"annotation", Word::leftOutDestination},
    {"ansi", Word::ansi},
    {"ansicpg", Word::ansiCodePage},
    {"atnauthor", Word::leftOutDestination},
    {"atndate", Word::leftOutDestination},
    {"atnid", Word::leftOutDestination},
    {"author", Word::leftOutDestination},
    {"bkmkend", Word::leftOutDestination},
    {"bkmkstart", Word::leftOutDestination},
    {"bullet", Word::symbol, U'\u2022'},
    {"buptim", Word::leftOutDestination},
    {"cell", Word::cell},
    {"colorschememapping", Word::leftOutDestination},
    {"colortbl", Word::leftOutDestination},
    {"comment", Word::leftOutDestination},
    {"company", Word::leftOutDestination},
    {"cpg", Word::fontCodePage},
    {"creatim", Word::leftOutDestination},
    {"datafield", Word::leftOutDestination},
    {"datastore", Word::leftOutDestination},
    {"deff", Word::defaultFont},
    {"doccomm", Word::leftOutDestination},
    {"docvar", Word::leftOutDestination},
    {"emdash", Word::symbol, U'\u2014'},
    {"emspace", Word::symbol, U'\u2003'},
    {"endash", Word::symbol, U'\u2013'},
    {"enspace", Word::symbol, U'\u2002'},
    {"expandedcolortbl", Word::leftOutDestination},
    {"f", Word::font},
    {"falt", Word::leftOutDestination},
    {"fcharset", Word::fontCharset},
    {"filetbl", Word::leftOutDestination},
    {"fldinst", Word::leftOutDestination},
    {"fonttbl", Word::fontTable},
    {"generator", Word::leftOutDestination},
    {"info", Word::leftOutDestination},
    {"keywords", Word::leftOutDestination},
    {"latentstyles", Word::leftOutDestination},
    {"ldblquote", Word::symbol, U'\u201C'},
    {"line", Word::lineEnd},
    {"listoverridetable", Word::leftOutDestination},
    {"listtable", Word::leftOutDestination},
    {"lquote", Word::symbol, U'\u2018'},
    {"mac", Word::mac},
    {"manager", Word::leftOutDestination},
    {"nestcell", Word::cell},
    {"nestrow", Word::lineEnd},
    {"nonshppict", Word::leftOutDestination},
    {"objclass", Word::leftOutDestination},
    {"objdata", Word::leftOutDestination},
    {"objname", Word::leftOutDestination},
    {"operator", Word::leftOutDestination},
    {"page", Word::lineEnd},
    {"par", Word::lineEnd},
    {"pc", Word::pc},
    {"pca", Word::pca},
    {"pgdsctbl", Word::leftOutDestination},
    {"pict", Word::leftOutDestination},
    {"plain", Word::plain},
    {"printim", Word::leftOutDestination},
    {"private", Word::leftOutDestination},
    {"qmspace", Word::symbol, U'\u2005'},
    {"rdblquote", Word::symbol, U'\u201D'},
    {"revtbl", Word::leftOutDestination},
    {"revtim", Word::leftOutDestination},
    {"row", Word::lineEnd},
    {"rquote", Word::symbol, U'\u2019'},
    {"rsidtbl", Word::leftOutDestination},
    {"sect", Word::lineEnd},
    {"stylesheet", Word::leftOutDestination},
    {"subject", Word::leftOutDestination},
    {"tab", Word::tab},
    {"tc", Word::leftOutDestination},
    {"template", Word::leftOutDestination},
    {"themedata", Word::leftOutDestination},
    {"title", Word::leftOutDestination},
    {"u", Word::unicode},
    {"uc", Word::unicodeSkip},
    {"ud", Word::unicodeAlternative},
    {"upr", Word::ansiAlternative},
    {"userprops", Word::leftOutDestination},
    {"v", Word::hidden},
    {"xe", Word::leftOutDestination},
    {"xmlnstbl", Word::leftOutDestination},
});

const WordMeaning* meaningOf(std::string_view name) {
    static_assert(std::is_sorted(wordMeanings.begin(), wordMeanings.end(),
                                 [](const WordMeaning& a, const WordMeaning& b) { return a.name < b.name; }));
    auto found = std::lower_bound(wordMeanings.begin(), wordMeanings.end(), name,
                                  [](const WordMeaning& meaning, std::string_view key) { return meaning.name < key; });
    return found != wordMeanings.end() && found->name == name ? &*found : nullptr;
}

bool isLetter(int byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
}
bool isDigit(int byte) {
    return byte >= '0' && byte <= '9';
}

int hexValue(int byte) {
    if (isDigit(byte)) return byte - '0';
    if (byte >= 'a' && byte <= 'f') return byte - 'a' + 10;
    if (byte >= 'A' && byte <= 'F') return byte - 'A' + 10;
    return -1;
}

class RtfParser {
public:
    explicit RtfParser(const ImportContext& context) : source(context), output(context.maxLength) {}

    // The text up to the end of the outermost group, or of the file when it
    // is cut short; none when the file couldn't be read or the import was
    // cancelled.
    std::optional<std::string> read() {
        while (!finished && !output.full()) {
            int byte = source.next();
            if (byte == ByteSource::end) break;
            if (byte == '{') {
                openGroup();
            } else if (byte == '}') {
                closeGroup();
            } else if (byte == '\\') {
                controlSequence();
            } else if (byte != '\r' && byte != '\n' && !skippedAsFallback()) {
                textByte(byte);
            }
        }
        flushBytes();
        if (source.failed()) return std::nullopt;
        return output.take();
    }

private:
    GroupState& state() { return groups.back(); }
    bool takesText() const {
        return groupsTooDeep == 0 && groups.back().destination == Destination::text && !groups.back().hidden;
    }

    void openGroup() {
        endRun();
        if (groupsTooDeep > 0 || groups.size() > maximumGroupDepth) {
            ++groupsTooDeep;
        } else {
            groups.push_back(groups.back());
        }
    }
    void closeGroup() {
        endRun();
        if (groupsTooDeep > 0) {
            --groupsTooDeep;
        } else {
            groups.pop_back();
            finished = groups.size() == 1;
        }
    }
    // A group's edge ends a \u fallback, a \* mark and a run of code page bytes.
    void endRun() {
        flushBytes();
        fallbackToSkip = 0;
        starred = false;
    }

    // \u is followed by characters that stand in for it in older readers;
    // each character, \'hh or control word counts as one.
    bool skippedAsFallback() {
        if (fallbackToSkip == 0) return false;
        --fallbackToSkip;
        return true;
    }

    void controlSequence() {
        int first = source.next();
        if (first == ByteSource::end) return;
        if (!isLetter(first)) return controlSymbol(first);
        std::string word(1, static_cast<char>(first));
        while (isLetter(source.peek())) {
            char letter = static_cast<char>(source.next());
            if (word.size() < maximumWordLength) word += letter;
        }
        std::optional<int> parameter;
        bool negative = source.peek() == '-';
        if (negative) source.next();
        if (isDigit(source.peek())) {
            std::int64_t value = 0;
            while (isDigit(source.peek()))
                value = std::min<std::int64_t>(value * 10 + (source.next() - '0'), INT32_MAX);
            parameter = static_cast<int>(negative ? -value : value);
        }
        if (source.peek() == ' ') source.next();
        controlWord(word, parameter);
    }

    void controlSymbol(int symbol) {
        if (symbol == '\'') {
            int high = hexDigit();
            int low = high < 0 ? -1 : hexDigit();
            if (skippedAsFallback() || low < 0) return;
            return codePageByte(static_cast<char>(high * 16 + low));
        }
        flushBytes();
        if (symbol == '*') {
            starred = true;
            return;
        }
        if (skippedAsFallback()) return;
        switch (symbol) {
            case '\\':
            case '{':
            case '}':
                return character(static_cast<char32_t>(symbol));
            case '~':
                return character(U'\u00A0');
            case '_':
                return character('-');
            case '\n':
            case '\r':
                return lineEnd();
            default:
                return;
        }
    }

    // The next byte's value as a hex digit, read only when it is one.
    int hexDigit() {
        int value = hexValue(source.peek());
        if (value >= 0) source.next();
        return value;
    }

    void controlWord(std::string_view name, std::optional<int> parameter) {
        flushBytes();
        if (name == "bin") {
            // Binary data never reads as text, wherever it stands.
            skippedAsFallback();
            source.skip(static_cast<std::uint64_t>(std::max(parameter.value_or(0), 0)));
            return;
        }
        if (groupsTooDeep > 0) return;
        const WordMeaning* meaning = meaningOf(name);
        if (std::exchange(starred, false) && (meaning == nullptr || meaning->word != Word::unicodeAlternative)) {
            state().destination = Destination::leftOut;
            return;
        }
        if (meaning == nullptr || skippedAsFallback()) return;
        apply(*meaning, parameter);
    }

    void apply(const WordMeaning& meaning, std::optional<int> parameter) {
        switch (meaning.word) {
            case Word::leftOutDestination:
                state().destination = Destination::leftOut;
                return;
            case Word::fontTable:
                state().destination = Destination::fontTable;
                return;
            case Word::ansiAlternative:
                state().destination = Destination::ansiAlternative;
                return;
            case Word::unicodeAlternative:
                if (state().destination == Destination::ansiAlternative) state().destination = Destination::text;
                return;
            case Word::lineEnd:
                return lineEnd();
            case Word::tab:
                return character('\t');
            case Word::cell:
                cellPending = takesText();
                return;
            case Word::symbol:
                return character(meaning.symbol);
            case Word::unicode:
                return unicode(parameter.value_or(0));
            case Word::unicodeSkip:
                state().unicodeSkip = std::clamp(parameter.value_or(1), 0, maximumUnicodeSkip);
                return;
            case Word::ansiCodePage:
                if (parameter.value_or(0) > 0) documentPage = *parameter;
                return;
            case Word::ansi:
                documentPage = windowsLatin1;
                return;
            case Word::mac:
                documentPage = 10000;
                return;
            case Word::pc:
                documentPage = 437;
                return;
            case Word::pca:
                documentPage = 850;
                return;
            case Word::font:
                return selectFont(parameter.value_or(0));
            case Word::defaultFont:
                state().font = parameter.value_or(0);
                return;
            case Word::fontCharset:
                return setFontCodePage(codePageOfCharset(parameter.value_or(0)));
            case Word::fontCodePage:
                return setFontCodePage(parameter.value_or(documentCodePage));
            case Word::hidden:
                state().hidden = parameter.value_or(1) != 0;
                return;
            case Word::plain:
                state().hidden = false;
                return;
        }
    }

    void selectFont(int font) {
        if (state().destination == Destination::fontTable) {
            definingFont = font;
        } else {
            state().font = font;
        }
    }
    void setFontCodePage(int codePage) {
        if (state().destination != Destination::fontTable || !definingFont) return;
        if (fontCodePages.size() < maximumFonts || fontCodePages.contains(*definingFont)) {
            fontCodePages[*definingFont] = codePage;
        }
    }
    int codePage() const {
        auto found = fontCodePages.find(groups.back().font);
        return found != fontCodePages.end() && found->second != documentCodePage ? found->second : documentPage;
    }

    void unicode(int value) {
        char32_t unit = static_cast<char32_t>(value < 0 ? value + 65536 : value);
        fallbackToSkip = state().unicodeSkip;
        if (U16_IS_LEAD(unit)) {
            leadSurrogate = unit;
            return;
        }
        if (U16_IS_TRAIL(unit) && leadSurrogate != 0) unit = U16_GET_SUPPLEMENTARY(leadSurrogate, unit);
        leadSurrogate = 0;
        character(unit);
    }

    void textByte(int byte) {
        if (byte >= 0x80) return codePageByte(static_cast<char>(byte));
        flushBytes();
        if (byte == '\t' || byte >= 0x20) character(static_cast<char32_t>(byte));
    }
    void codePageByte(char byte) {
        if (!takesText()) return;
        pendingBytes += byte;
        if (pendingBytes.size() >= maximumPendingBytes) flushBytes();
    }
    void flushBytes() {
        if (pendingBytes.empty()) return;
        std::u16string_view units = codePages.decode(codePage(), pendingBytes);
        pendingBytes.clear();
        for (std::size_t index = 0; index < units.size();) {
            char32_t codePoint;
            U16_NEXT(units.data(), index, units.size(), codePoint);
            emit(codePoint);
        }
    }

    void lineEnd() {
        if (!takesText()) return;
        cellPending = false;
        emit('\n');
    }
    void character(char32_t codePoint) {
        if (!takesText()) return;
        flushBytes();
        emit(codePoint);
    }
    // A cell's tab is written only when more of its row follows, so a row
    // ends without a trailing tab.
    void emit(char32_t codePoint) {
        if (std::exchange(cellPending, false)) output.append('\t');
        output.append(codePoint);
    }

    ByteSource source;
    TextOutput output;
    CodePages codePages;
    // The bottom entry stands below the document's outermost group.
    std::vector<GroupState> groups{GroupState{}};
    std::size_t groupsTooDeep = 0;
    std::map<int, int> fontCodePages;
    std::optional<int> definingFont;
    int documentPage = windowsLatin1;
    int fallbackToSkip = 0;
    char32_t leadSurrogate = 0;
    std::string pendingBytes;
    bool starred = false;
    bool cellPending = false;
    bool finished = false;
};

bool beginsAsRtf(const ReadableFile& file) {
    constexpr std::string_view signature = "{\\rtf";
    std::array<char, signature.size()> start{};
    auto got = file.readAt(0, start);
    return got && *got == start.size() && std::string_view(start.data(), start.size()) == signature;
}

}  // namespace

void RtfReader::importText(const ImportContext& context) {
    std::optional<ImportTextPages> pages;
    try {
        if (!beginsAsRtf(context.file)) return;
        std::optional<std::string> text = RtfParser(context).read();
        if (text && !text->empty()) pages = onePage(std::move(*text));
    } catch (const std::exception&) {
        return;
    }
    if (pages && !context.cancelled()) context.result(std::move(pages), std::nullopt);
}

}  // namespace quester
