#pragma once

#include <string_view>

namespace quester {

// True if `text` is well-formed UTF-8 (no overlong forms, surrogates or values
// past U+10FFFF).
bool isValidUTF8(std::string_view text);

}  // namespace quester
