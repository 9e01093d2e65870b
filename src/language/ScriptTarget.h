#pragma once

#include <string>

namespace quester {

// What a "~scriptName" word names: a script file in the scripts folder (any kind
// of script, by its path) or a shortcut (a stored command line, by its name).
struct ScriptTarget {
    enum class Kind { appleScript, shortcut };

    Kind kind = Kind::appleScript;
    std::string value;  // the script's path, or the shortcut's name

    bool operator==(const ScriptTarget&) const = default;
};

}  // namespace quester
