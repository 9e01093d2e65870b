#pragma once

#include <string>
#include <string_view>

namespace quester {

// The localised comparisons of result rows, through ICU collation in the
// default locale. A key is a byte string: two texts compare as their keys do
// in plain byte order, so a sort computes each key once per row instead of
// collating at every comparison. Thread-safe: each thread has its own
// collators.
class LocalizedCollation {
public:
    // Number-aware and ignoring case ("file2" before "File10"), as a file
    // browser orders names.
    static std::string standardKey(std::string_view text);
    // Ignoring case, digits read as text.
    static std::string caseInsensitiveKey(std::string_view text);

    // <0, 0 or >0 as `a` sorts before, with or after `b` under `standardKey`.
    static int localizedStandardCompare(std::string_view a, std::string_view b);
};

}  // namespace quester
