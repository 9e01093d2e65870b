#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "support/Result.h"

namespace quester {

// A "quester:" URL, which asks for a search: the query items "q" (the query
// text) and "location" (a location's name), as in
// "quester:?q=budget%20.xlsx&location=Home". Plain value.
struct QuesterURL {
    std::optional<std::string> q;
    std::optional<std::string> location;

    // Items are decoded as a form's query is ("+" is a blank, "%2B" a plus);
    // unknown ones are ignored. Fails with `notFound` for text of another
    // scheme, and with `invalidArgument` for a "%" not followed by two hex digits.
    static Result<QuesterURL> parse(std::string_view text);
};

}  // namespace quester
