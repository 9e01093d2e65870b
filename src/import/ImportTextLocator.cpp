#include "import/ImportTextLocator.h"

#include <algorithm>
#include <string_view>

#include "support/Utf8Text.h"

namespace quester {

namespace {

bool isContinuationByte(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// Counts the page's code points and notes where its lines break. In a run of
// ASCII a byte is a character, so the breaks there are found by memchr.
void addPage(std::string_view text, std::vector<std::size_t>& breaks, std::size_t& length) {
    length = 0;
    for (std::size_t at = 0; at < text.size();) {
        const std::string_view ascii = text.substr(at, asciiPrefixLength(text.substr(at)));
        for (auto newline = ascii.find('\n'); newline != std::string_view::npos;
             newline = ascii.find('\n', newline + 1)) {
            breaks.push_back(length + newline);
        }
        length += ascii.size();
        at += ascii.size();
        if (at == text.size()) break;
        if (!isContinuationByte(text[at])) ++length;
        ++at;
    }
}

}  // namespace

ImportTextLocator::ImportTextLocator(const ImportTextResult& result, bool useOCR) {
    std::size_t start = 0;
    auto add = [&](const ImportTextPages& pages) {
        for (const auto& page : pages) {
            pageStarts.push_back(start);
            std::size_t length = 0;
            addPage(page.text, lineBreaks.emplace_back(), length);
            start += length + 1;  // the newline that joins the pages
        }
    };
    if (result.text) add(*result.text);
    if (useOCR && result.ocrText) add(*result.ocrText);
}

std::string ImportTextLocator::at(std::size_t characterOffset) const {
    if (pageStarts.empty()) return {};
    auto after = std::upper_bound(pageStarts.begin(), pageStarts.end(), characterOffset);
    std::size_t page = after == pageStarts.begin() ? 0 : static_cast<std::size_t>(after - pageStarts.begin()) - 1;
    std::size_t into = characterOffset > pageStarts[page] ? characterOffset - pageStarts[page] : 0;
    const auto& breaks = lineBreaks[page];
    auto line = static_cast<std::size_t>(std::lower_bound(breaks.begin(), breaks.end(), into) - breaks.begin()) + 1;
    if (pageStarts.size() == 1) return "Line " + std::to_string(line);
    return "Page " + std::to_string(page + 1) + ", line " + std::to_string(line);
}

}  // namespace quester
