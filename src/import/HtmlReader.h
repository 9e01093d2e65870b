#pragma once

#include "import/ImportContext.h"

namespace quester {

// Web pages and XML documents as text, through libxml2's event parsers (no
// tree is built, so memory grows with the text, not with the markup). Both
// give one page of lines: runs of blanks become one blank, lines carry no
// leading or trailing blanks and no line is empty. Neither touches the
// network nor any file but the one handed over; both keep libxml2's error
// reports off standard error on the calling thread only. `maxLength` does
// not apply. A file that can't be read or parsed, or a cancelled import,
// gives nothing.
class HtmlReader {
public:
    // The page's title as the first line, then the text of its body (of the
    // whole document when there is none), without scripts, styles, templates,
    // frames and what only the head holds. Block elements (paragraphs, list
    // items, headings, table rows, line breaks...) end a line; table cells
    // are set apart by a blank; inside <pre> a newline ends a line. The
    // encoding is the one a byte-order mark or a <meta> charset names, else
    // UTF-8 (a byte that isn't UTF-8 is taken as Latin-1).
    static void importHTML(const ImportContext& context);

    // The character data of all elements (CDATA included; attributes,
    // comments and processing instructions left out). An element that holds
    // text of its own beside child elements is running text, such as a
    // paragraph with emphasis, and stays on one line with all it contains;
    // anywhere else each element's text stands on its own line. No DTD is
    // read and no entity but the five predefined ones and character
    // references is expanded, so an external entity never brings in a file.
    static void importXML(const ImportContext& context);
};

}  // namespace quester
