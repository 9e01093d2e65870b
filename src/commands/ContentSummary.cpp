#include "commands/ContentSummary.h"

#include <algorithm>

#include <unicode/uchar.h>

namespace quester {

namespace {

constexpr std::size_t kMaximumSnippets = 1000;
constexpr std::size_t kCharactersBefore = 75;
constexpr std::size_t kCharactersBehind = 100;

bool isWhiteSpace(char32_t c) {
    return u_isUWhiteSpace(static_cast<UChar32>(c)) || c == U'\n' || c == U'\r';
}

bool isPieceBreak(char32_t c) {
    return c == U'\n' || c == U'\t' || c == U' ';
}

std::u32string collapsedBlanks(std::u32string_view span) {
    std::u32string joined;
    bool pendingBlank = false;
    for (char32_t c : span) {
        if (isPieceBreak(c)) {
            pendingBlank = !joined.empty();
            continue;
        }
        if (pendingBlank) joined += U' ';
        pendingBlank = false;
        joined += c;
    }
    return joined;
}

std::u32string trimmed(std::u32string_view text) {
    const auto first = std::find_if_not(text.begin(), text.end(), isWhiteSpace);
    const auto last = std::find_if_not(text.rbegin(), text.rend(), isWhiteSpace).base();
    return first < last ? std::u32string(first, last) : std::u32string();
}

std::string snippetAround(const std::u32string& text, const TextRange& range) {
    const std::size_t start = range.end > kCharactersBefore ? range.end - kCharactersBefore : 0;
    const std::size_t end = std::min(text.size(), range.end + kCharactersBehind);
    std::u32string joined = collapsedBlanks(std::u32string_view(text).substr(start, end - start));
    const auto firstSpace = std::find_if(joined.begin(), joined.end(), isWhiteSpace);
    if (firstSpace != joined.end()) joined.erase(joined.begin(), firstSpace);
    return "\u2026" + FoldedText::encode(trimmed(joined)) + "\u2026";
}

}  // namespace

std::vector<ContentSummary> ContentSummary::of(const std::u32string& text, const std::vector<TextRange>& ranges) {
    std::vector<ContentSummary> summaries;
    if (text.empty()) return summaries;
    for (const TextRange& range : ranges) {
        if (summaries.size() > kMaximumSnippets) continue;
        if (range.end == text.size()) continue;
        summaries.push_back({range, snippetAround(text, range)});
    }
    return summaries;
}

}  // namespace quester
