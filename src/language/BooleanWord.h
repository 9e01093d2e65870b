#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "language/SentenceComponent.h"

namespace quester {

// How words meet names during one evaluation. Made per call, so evaluation can
// run from several threads at once.
struct BooleanEvalContext {
    bool caseSensitive = false;
    bool wholeWords = false;
    bool exactName = false;
    bool diacriticInsensitive = false;
    std::function<std::vector<std::string>(std::string_view)> wordSplitter;
    std::function<bool(int)> evaluateCommand;  // unset: every command leaf is true
};

// A search word of the boolean expression, with the forms that matching needs
// worked out once: lower case and folded for case, diacritics and width. Every
// form is composed (NFC), and so is a name before it is searched, so that a
// word and a name written with differently composed accents still meet.
struct BooleanWord {
    BooleanWord(std::string text, SentenceComponent::Wildcard wildcard);

    std::string textLowered;
    std::string textOriginalCase;
    SentenceComponent::Wildcard wildcard = SentenceComponent::Wildcard::none;
    std::string textFoldedCI;

    // Whether `name` (a path or a file name) holds this word, as the context says.
    bool matches(std::string_view name, const BooleanEvalContext& ctx) const;

    bool operator==(const BooleanWord&) const = default;
};

}  // namespace quester
