#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "results/ResultDateText.h"
#include "results/UINode.h"

namespace quester {

// The results as a text table for a terminal: name, folder, size, modified
// and kind, one row an item under a header, columns aligned (sizes to the
// right) and two blanks apart. Rows wider than the terminal lose characters
// from the middle of the folder and the name, the wider one first, and then
// of the kind, shown as "…". Widths count terminal columns: a wide (East
// Asian) character takes two, a combining mark none. Control characters and
// bytes that aren't UTF-8 in names, folders and kinds show as "?". The lines
// found inside a file follow its row, indented, each cut at the end to fit.
class ResultsTable {
public:
    // `useEscapes` sets the header line in bold and strikes through the rows
    // of disks that are off line, with terminal escapes.
    static std::string render(const UINode::NodeList& rows, std::size_t terminalWidth, const ResultDateText& dates,
                              bool useEscapes = false);

    // `text` cut to at most `width` columns by replacing its middle with "…";
    // user-perceived characters are never split.
    static std::string shortenedInTheMiddle(std::string_view text, std::size_t width);
    // The terminal columns of UTF-8 text without control characters.
    static std::size_t displayWidth(std::string_view text);
};

}  // namespace quester
