#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quester {

// Which date of an item a date criterion tests.
enum class DateCommandWhat { modificationDate, creationDate, accessDate };

// "modified", "changed", "edited" → modificationDate; "created", "made" → creationDate.
std::optional<DateCommandWhat> dateCommandWhatFromWord(std::string_view word);

// The canonical word: "modified", "created", "accessed".
std::string toString(DateCommandWhat what);

}  // namespace quester
