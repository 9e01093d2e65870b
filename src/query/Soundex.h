#pragma once

#include <string>
#include <string_view>

namespace quester {

// American Soundex of a word: its first letter and three digits ("Robert" is
// "R163"); empty for fewer than two characters.
struct Soundex {
    static std::string value(std::string_view text);
};

}  // namespace quester
