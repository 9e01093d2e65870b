#pragma once

#include <string>
#include <string_view>

#include "query/CommandApplyResult.h"

namespace quester {

// Whether a length test sets an upper or a lower bound.
enum class LengthChoice { max, min };

// Both bounds are strict: a maximum of 10 rejects a length of exactly 10.
// `text` is measured in user-perceived characters.
CommandApplyResult judgeLength(std::string_view text, LengthChoice choice, int count);

// "max <what> length " or "min <what> length ", then the count; with `example`
// the count stands between "**" marks.
std::string lengthCommandText(std::string_view what, LengthChoice choice, int count, bool example);

}  // namespace quester
