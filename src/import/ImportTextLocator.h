#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "import/ImportTextResult.h"

namespace quester {

// Answers `ImportTextResult::locator` for many offsets of one text: the page
// starts and line breaks are found once, so each answer is a binary search
// instead of a walk from the start (a document with a thousand hits would
// otherwise be walked a thousand times).
class ImportTextLocator {
public:
    ImportTextLocator(const ImportTextResult& result, bool useOCR);

    // "Line 3" in a one-page text, "Page 2, line 1" in a longer one, empty
    // with no pages; offsets count code points of `allText`.
    std::string at(std::size_t characterOffset) const;

private:
    // Where each page starts in `allText`, in code points.
    std::vector<std::size_t> pageStarts;
    // For each page, the code point positions of its line breaks.
    std::vector<std::vector<std::size_t>> lineBreaks;
};

}  // namespace quester
