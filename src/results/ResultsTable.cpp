#include "results/ResultsTable.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <array>
#include <vector>

#include "language/UnicodeText.h"
#include "results/DisplayText.h"

namespace quester {

namespace {

enum ColumnIndex { nameColumn, folderColumn, sizeColumn, modifiedColumn, kindColumn, columnCount };

using Row = std::array<std::string, columnCount>;

constexpr std::size_t gap = 2;
// A found line stands under its file's name, indented by this much.
constexpr std::size_t foundLineIndent = 4;
constexpr std::size_t narrowest = 6;

bool isASCII(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// Wide and full-width characters take two columns, marks and format
// characters none.
std::size_t scalarWidth(UChar32 c) {
    const auto width = static_cast<UEastAsianWidth>(u_getIntPropertyValue(c, UCHAR_EAST_ASIAN_WIDTH));
    if (width == U_EA_WIDE || width == U_EA_FULLWIDTH) return 2;
    const auto category = u_charType(c);
    if (category == U_NON_SPACING_MARK || category == U_ENCLOSING_MARK || category == U_FORMAT_CHAR) return 0;
    return 1;
}

// A user-perceived character is as wide as its widest scalar: a letter with
// combining accents takes the letter's column.
std::size_t clusterWidth(std::string_view cluster) {
    std::size_t width = 0;
    const auto* bytes = reinterpret_cast<const uint8_t*>(cluster.data());
    const auto length = static_cast<int32_t>(cluster.size());
    for (int32_t i = 0; i < length;) {
        UChar32 c = 0;
        U8_NEXT(bytes, i, length, c);
        width = std::max(width, c < 0 ? std::size_t{1} : scalarWidth(c));
    }
    return width;
}

// The clusters from the front (or the back) of `clusters` that fit `width` columns, as bytes and columns.
template <typename Iterator>
std::pair<std::size_t, std::size_t> fittingClusters(Iterator begin, Iterator end, std::size_t width) {
    std::size_t bytes = 0, columns = 0;
    for (auto cluster = begin; cluster != end; ++cluster) {
        const std::size_t next = clusterWidth(*cluster);
        if (columns + next > width) break;
        columns += next;
        bytes += cluster->size();
    }
    return {bytes, columns};
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

// `text` cut at the end to `width` columns, "…" marking the cut.
std::string shortenedAtTheEnd(std::string_view text, std::size_t width) {
    if (ResultsTable::displayWidth(text) <= width) return std::string(text);
    if (width == 0) return "";
    const std::vector<std::string_view> clusters = graphemes(text);
    const std::size_t headBytes = fittingClusters(clusters.begin(), clusters.end(), width - 1).first;
    return std::string(text.substr(0, headBytes)) + "…";
}

// The lines found inside a row's file ("Line 2:  …the yearly total…").
std::vector<std::string> foundLinesOf(const UINode& node) {
    std::vector<std::string> lines;
    for (const auto& child : node.children()) {
        if (auto line = child->summaryLine()) lines.push_back(terminalSafeText(*line));
    }
    return lines;
}

// An item of a disk that is not connected is struck through.
const char* offlineStyle(const UINode& node) {
    return node.isOffline() ? "\033[9m" : "";
}

std::string styled(const std::string& line, const char* style, bool useEscapes) {
    if (!useEscapes || *style == '\0') return line + "\n";
    return style + line + "\033[0m\n";
}

}  // namespace

std::size_t ResultsTable::displayWidth(std::string_view text) {
    if (isASCII(text)) return text.size();
    std::size_t width = 0;
    for (std::string_view cluster : graphemes(text)) width += clusterWidth(cluster);
    return width;
}

std::string ResultsTable::shortenedInTheMiddle(std::string_view text, std::size_t width) {
    if (displayWidth(text) <= width) return std::string(text);
    if (width == 0) return "";
    const std::size_t kept = width - 1;  // "…" takes one column
    const std::vector<std::string_view> clusters = graphemes(text);
    const auto [headBytes, headColumns] = fittingClusters(clusters.begin(), clusters.end(), (kept + 1) / 2);
    const auto [tailBytes, tailColumns] = fittingClusters(clusters.rbegin(), clusters.rend(), kept - headColumns);
    return std::string(text.substr(0, headBytes)) + "…" + std::string(text.substr(text.size() - tailBytes));
}

std::string ResultsTable::render(const UINode::NodeList& rows, std::size_t terminalWidth, const ResultDateText& dates,
                                 bool useEscapes) {
    std::vector<Row> table{{"Name", "Folder", "Size", "Modified", "Kind"}};
    std::vector<std::vector<std::string>> foundLines{{}};
    for (const auto& node : rows) {
        foundLines.push_back(foundLinesOf(*node));
        const UINode::Changable changes = node->dynamic();
        table.push_back({terminalSafeText(node->displayName()), terminalSafeText(node->displayPath()),
                         changes.displayTotalSize, dates.dateToString(node->modificationDate),
                         terminalSafeText(changes.displayKind)});
    }
    std::array<std::size_t, columnCount> widths{};
    for (const auto& row : table) {
        for (std::size_t column = 0; column < columnCount; ++column) {
            widths[column] = std::max(widths[column], displayWidth(row[column]));
        }
    }
    fitWidths(widths, terminalWidth);
    std::string text;
    for (std::size_t index = 0; index < table.size(); ++index) {
        const Row& row = table[index];
        std::string line;
        for (std::size_t column = 0; column < columnCount; ++column) {
            if (column > 0) line += std::string(gap, ' ');
            const std::string cell = shortenedInTheMiddle(row[column], widths[column]);
            line += column == kindColumn ? cell : padded(cell, widths[column], column == sizeColumn);
        }
        text += styled(line, index == 0 ? "\033[1m" : offlineStyle(*rows[index - 1]), useEscapes);
        const std::size_t lineWidth = terminalWidth - std::min(terminalWidth, foundLineIndent);
        for (const auto& found : foundLines[index]) {
            text += std::string(foundLineIndent, ' ') + shortenedAtTheEnd(found, lineWidth) + "\n";
        }
    }
    return text;
}

}  // namespace quester
