#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quester {

// A "quester:" URL, which asks for a search: the query items "q" (the query
// text) and "location" (a location's name), as in
// "quester:?q=budget%20.xlsx&location=Home". Plain value.
struct QuesterURL {
    std::optional<std::string> q;
    std::optional<std::string> location;

    // None for text of another scheme; items are percent-decoded, unknown ones ignored.
    static std::optional<QuesterURL> parse(std::string_view text);
};

}  // namespace quester
