#pragma once

#include <optional>
#include <string_view>

namespace quester {

// Options of a content search. The template flags of "textContent" name them by
// these exact identifiers; "~contentSearchFlags" reads the trailing phrases
// "whole words", "all words", "all files", "use OCR", "case sensitive".
enum class ContentSearchFlag { without, allFiles, wholeWords, allWords, useOCR, caseSensitive };

// By identifier: "without", "allFiles", "wholeWords", "allWords", "useOCR", "caseSensitive".
std::optional<ContentSearchFlag> contentSearchFlagFromName(std::string_view name);

}  // namespace quester
