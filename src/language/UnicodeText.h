#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quester {

// The Unicode operations the query language needs, all on UTF-8 text and all
// through ICU. Text that isn't valid UTF-8 is read with U+FFFD for bad bytes;
// nothing here fails or throws.

// The text cut into user-perceived characters (extended grapheme clusters). The
// views point into `text`.
std::vector<std::string_view> graphemes(std::string_view text);

// How many user-perceived characters `text` has.
int graphemeCount(std::string_view text);

// Lower case by the root locale, so that no user locale changes a keyword, and
// composed (NFC), so that canonically equal texts lower to the same bytes.
std::string lowercased(std::string_view text);
// The same into `out`, whose room is reused: for a caller that lowers one
// name after another, such as a walk testing every entry.
void lowercaseInto(std::string_view text, std::string& out);

// Composed (NFC), case kept. ASCII text is returned as it is.
std::string composed(std::string_view text);
// The same as a view: `text` itself when it is ASCII, else the composed form
// written into `scratch`, whose room is reused. The name test of a walk runs
// it on every entry, so an ASCII name costs no copy.
std::string_view composeInto(std::string_view text, std::string& scratch);

// Folded for diacritics and width (compatibility decomposition, marks removed)
// and, with `foldCase`, for case too.
std::string folded(std::string_view text, bool foldCase);

// Whether the first scalar of `character` is white space or a line break.
bool beginsWithWhiteSpace(std::string_view character);

}  // namespace quester
