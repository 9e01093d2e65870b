#pragma once

#include <cstddef>

namespace quester {

// How much one query may hold. A query may come from another machine, so its
// size must not decide how long the parse takes or how deep the expression
// nests; a query beyond these is refused with a message, not read in part.
struct QueryLimits {
    // Bytes of the typed text, checked before anything is parsed.
    static constexpr std::size_t maximumTextBytes = 20000;
    // Words, parentheses and operators counted alike.
    static constexpr std::size_t maximumWords = 2000;
    // Parentheses and NOTs inside one another.
    static constexpr int maximumNesting = 100;
};

}  // namespace quester
