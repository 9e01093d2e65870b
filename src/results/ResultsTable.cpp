#include "results/ResultsTable.h"

#include <unicode/utf8.h>

#include <algorithm>
#include <array>
#include <vector>

namespace quester {

namespace {

enum ColumnIndex { nameColumn, folderColumn, sizeColumn, modifiedColumn, kindColumn, columnCount };

using Row = std::array<std::string, columnCount>;

constexpr std::size_t gap = 2;
constexpr std::size_t narrowest = 6;

// The byte offsets of each code point's start, and the end.
std::vector<std::size_t> characterStarts(std::string_view text) {
    std::vector<std::size_t> starts;
    const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
    const auto length = static_cast<int32_t>(text.size());
    for (int32_t i = 0; i < length;) {
        starts.push_back(static_cast<std::size_t>(i));
        UChar32 c = 0;
        U8_NEXT(bytes, i, length, c);
    }
    starts.push_back(text.size());
    return starts;
}

std::string padded(const std::string& text, std::size_t width, bool alignRight) {
    const std::size_t fill = width - std::min(width, ResultsTable::displayWidth(text));
    return alignRight ? std::string(fill, ' ') + text : text + std::string(fill, ' ');
}

// Narrows the folder and the name in turn, the wider one first, down to
// `narrowest`; then the kind, until the row fits.
void fitWidths(std::array<std::size_t, columnCount>& widths, std::size_t terminalWidth) {
    std::size_t total = gap * (columnCount - 1);
    for (std::size_t width : widths) total += width;
    std::size_t& folder = widths[folderColumn];
    std::size_t& name = widths[nameColumn];
    while (total > terminalWidth) {
        std::size_t& widest = folder >= name ? folder : name;
        if (widest <= narrowest) break;
        --widest;
        --total;
    }
    std::size_t& kind = widths[kindColumn];
    if (total > terminalWidth && kind > narrowest) kind -= std::min(total - terminalWidth, kind - narrowest);
}

}  // namespace

std::size_t ResultsTable::displayWidth(std::string_view text) { return characterStarts(text).size() - 1; }

std::string ResultsTable::shortenedInTheMiddle(std::string_view text, std::size_t width) {
    const std::vector<std::size_t> starts = characterStarts(text);
    const std::size_t characters = starts.size() - 1;
    if (characters <= width) return std::string(text);
    if (width == 0) return "";
    const std::size_t kept = width - 1;
    const std::size_t head = (kept + 1) / 2;
    const std::size_t tail = kept - head;
    return std::string(text.substr(0, starts[head])) + "…" + std::string(text.substr(starts[characters - tail]));
}

std::string ResultsTable::render(const UINode::NodeList& rows, std::size_t terminalWidth,
                                 const ResultDateText& dates) {
    std::vector<Row> table{{"Name", "Folder", "Size", "Modified", "Kind"}};
    for (const auto& node : rows) {
        const UINode::Changable changes = node->dynamic();
        table.push_back({node->displayName(), node->displayPath, changes.displayTotalSize,
                         dates.dateToString(node->modificationDate), changes.displayKind});
    }
    std::array<std::size_t, columnCount> widths{};
    for (const auto& row : table) {
        for (std::size_t column = 0; column < columnCount; ++column) {
            widths[column] = std::max(widths[column], displayWidth(row[column]));
        }
    }
    fitWidths(widths, terminalWidth);
    std::string text;
    for (const auto& row : table) {
        std::string line;
        for (std::size_t column = 0; column < columnCount; ++column) {
            if (column > 0) line += std::string(gap, ' ');
            const std::string cell = shortenedInTheMiddle(row[column], widths[column]);
            line += column == kindColumn ? cell : padded(cell, widths[column], column == sizeColumn);
        }
        text += line + "\n";
    }
    return text;
}

}  // namespace quester
