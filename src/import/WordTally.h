#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

#include "import/ImportTextResult.h"

namespace quester {

// How often each word occurs in a document.
using WordCounts = std::unordered_map<std::string, std::uint32_t>;

// Counts the words of the pages a reader hands in, call by call. A reader that
// gives text and OCR pages side by side is counted page by page, a word taking
// the larger of its two counts on a page (recognition reads the same words the
// text has); once that has happened, lone lists are ignored. Otherwise every
// call's pages add to the total: a PDF hands in a page a call, a raw file a
// piece, and each of them counts.
class WordTally {
public:
    void add(const std::optional<ImportTextPages>& text, const std::optional<ImportTextPages>& ocrText);
    WordCounts takeCounts() { return std::move(total); }

private:
    WordCounts total;
    bool pairedPages = false;
};

}  // namespace quester
