#include "import/WordTally.h"

#include <algorithm>

#include "import/ImportText.h"

namespace quester {

namespace {

WordCounts countWords(std::string_view text) {
    WordCounts counts;
    for (auto& word : ImportText::wordsFromText(text)) ++counts[std::move(word)];
    return counts;
}

std::string joinedByBlank(const ImportTextPages& pages) {
    std::string joined;
    for (const auto& page : pages) {
        if (!joined.empty()) joined += ' ';
        joined += page.text;
    }
    return joined;
}

void addCounts(WordCounts& total, const WordCounts& more) {
    for (const auto& [word, count] : more) total[word] += count;
}

WordCounts richerCounts(const ImportTextPage& text, const ImportTextPage& ocr) {
    WordCounts counts = countWords(text.text);
    for (const auto& [word, count] : countWords(ocr.text)) {
        auto& kept = counts[word];
        kept = std::max(kept, count);
    }
    return counts;
}

}  // namespace

void WordTally::add(const std::optional<ImportTextPages>& text, const std::optional<ImportTextPages>& ocrText) {
    if (text && ocrText && text->size() == ocrText->size()) {
        pairedPages = true;
        for (std::size_t i = 0; i < text->size(); ++i) addCounts(total, richerCounts((*text)[i], (*ocrText)[i]));
    } else if (!pairedPages && (text || ocrText)) {
        addCounts(total, countWords(joinedByBlank(text ? *text : *ocrText)));
    }
}

}  // namespace quester
