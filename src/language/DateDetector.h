#pragma once

#include <string_view>
#include <vector>

#include "language/DateCommandWhen.h"

namespace quester {

// Reads dates written with numbers only ("3/4/21", "2024-03-05", "13.4."): no
// month names. Whether the day or the month comes first follows the locale's
// short date format; a number above 12 must be a day, one from 32 a year, and a
// two-digit year lies in 2000-2099. Each date is the local midnight of that day.
struct DateDetector {
    static std::vector<Date> simpleDatesInString(std::string_view text);
};

}  // namespace quester
