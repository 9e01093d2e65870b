#pragma once

#include <optional>
#include <string>

namespace quester {

// A command that names a folder as the place to search. The query container
// takes the first one whose folder exists as its location.
class CommandWithScope {
public:
    virtual ~CommandWithScope() = default;
    // The folder as an absolute path with links resolved; none for a relative name.
    virtual std::optional<std::string> scopePath() const = 0;
};

}  // namespace quester
