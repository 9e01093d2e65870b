#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quester {

// True if every byte of `text` is below 0x80.
bool isASCII(std::string_view text);

// The length of the longest ASCII prefix of `text`.
std::size_t asciiPrefixLength(std::string_view text);

// True if `text` is well-formed UTF-8 (no overlong forms, surrogates or values
// past U+10FFFF).
bool isValidUTF8(std::string_view text);

// `text` with each ill-formed sequence replaced by U+FFFD, for names read from
// files that may hold any bytes.
std::string repairedUTF8(std::string_view text);

}  // namespace quester
