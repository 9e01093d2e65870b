#pragma once

#include "import/ImportContext.h"

namespace quester {

// The text of a rich text (RTF) document, read by our own small parser. The
// file is read a piece at a time and never held whole; groups keep their
// state on a stack of bounded depth (groups nested deeper than that are left
// out), so no file can exhaust the stack or grow memory beyond the text.
//
// What the text holds: the characters of the body, header and footer
// (paragraph and line ends as newlines, tabs and table cells as tabs, a row
// as a newline); "\'hh" bytes decoded through the code page of the current
// font's character set or the document's (\ansicpg, windows-1252 when none
// is named); "\uN" characters with their \ucN fallbacks skipped; pictures,
// "\binN" data, hidden text, the font, colour and style tables, document
// information and every "{\*\...}" destination left out.
class RtfReader {
public:
    // One page, cut at `maxLength` characters. A file that doesn't begin with
    // "{\rtf", can't be read, or whose import is cancelled gives nothing; a
    // file cut short gives the text before the cut.
    static void importText(const ImportContext& context);
};

}  // namespace quester
