#include "language/BooleanWord.h"

#include <algorithm>

#include "language/UnicodeText.h"
#include "support/PathText.h"

namespace quester {

namespace {

std::vector<std::string> split(const BooleanEvalContext& ctx, std::string_view text) {
    if (ctx.wordSplitter) return ctx.wordSplitter(text);
    return {std::string(text)};
}

bool affixMatches(std::string_view candidate, std::string_view needle, SentenceComponent::Wildcard wildcard) {
    return wildcard == SentenceComponent::Wildcard::prefix ? candidate.starts_with(needle)
                                                           : candidate.ends_with(needle);
}

}  // namespace

BooleanWord::BooleanWord(std::string text, SentenceComponent::Wildcard wildcard)
    : textLowered(lowercased(text)),
      textOriginalCase(composed(text)),
      wildcard(wildcard),
      textFoldedCI(folded(textOriginalCase, true)) {}

bool BooleanWord::matches(std::string_view name, const BooleanEvalContext& ctx) const {
    // A walk tests every entry it meets: the lowered name goes into one
    // buffer per thread instead of a new string each time.
    thread_local std::string lowered;
    std::string foldedNeedle;
    std::string_view needle;
    std::string_view haystack;
    if (ctx.diacriticInsensitive) {
        if (ctx.caseSensitive) foldedNeedle = folded(textOriginalCase, false);
        needle = ctx.caseSensitive ? std::string_view(foldedNeedle) : std::string_view(textFoldedCI);
        lowered = folded(name, !ctx.caseSensitive);
        haystack = lowered;
    } else if (ctx.caseSensitive) {
        needle = textOriginalCase;
        haystack = composeInto(name, lowered);
    } else {
        needle = textLowered;
        lowercaseInto(name, lowered);
        haystack = lowered;
    }
    if (ctx.exactName) return lastPathComponentView(haystack) == needle;
    if (wildcard == SentenceComponent::Wildcard::none) {
        if (!ctx.wholeWords) return haystack.find(needle) != std::string_view::npos;
        const std::vector<std::string> pieces = split(ctx, haystack);
        return std::find(pieces.begin(), pieces.end(), needle) != pieces.end();
    }
    const std::string_view last = lastPathComponentView(haystack);
    if (affixMatches(last, needle, wildcard)) return true;
    const std::vector<std::string> pieces = split(ctx, last);
    return std::any_of(pieces.begin(), pieces.end(),
                       [&](const std::string& piece) { return affixMatches(piece, needle, wildcard); });
}

}  // namespace quester
