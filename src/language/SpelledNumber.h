#pragma once

#include <optional>
#include <string_view>

namespace quester {

// Reads a whole text as a number: decimal digits ("12", "-3", "1.5") directly,
// and words through an English spell-out formatter ("twenty", "twenty five",
// "one hundred"). A text that only begins with a number is none.
std::optional<double> spelledNumber(std::string_view text);

}  // namespace quester
