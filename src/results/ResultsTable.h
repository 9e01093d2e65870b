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
// of the kind, shown as "…". Widths count characters, not bytes.
class ResultsTable {
public:
    static std::string render(const UINode::NodeList& rows, std::size_t terminalWidth, const ResultDateText& dates);

    // `text` cut to `width` characters by replacing its middle with "…".
    static std::string shortenedInTheMiddle(std::string_view text, std::size_t width);
    // Characters (code points) in UTF-8 text.
    static std::size_t displayWidth(std::string_view text);
};

}  // namespace quester
