#pragma once

#include <string>
#include <vector>

#include "commands/FoldedText.h"

namespace quester {

// The snippet of text around one hit that a found line shows:
// "…the yearly total was…".
struct ContentSummary {
    TextRange range;
    std::string snippet;

    // Snippets for `ranges` of `text`, in their order: from 75 characters
    // before a hit's end to 100 behind it, runs of blanks, tabs and line breaks
    // made one blank, the first word dropped as it is likely cut, and "…" at
    // both ends. A hit that ends where the text ends gets none, and after
    // 1,001 snippets the rest get none.
    static std::vector<ContentSummary> of(const std::u32string& text, const std::vector<TextRange>& ranges);
};

}  // namespace quester
