#pragma once

#include <cstddef>
#include <string>

namespace CLI {
class App;
}

namespace quester::cli {

// What the command may do on the terminal it writes to: colour, cursor
// movement, its width. Reads the environment (NO_COLOR, TERM, COLUMNS) and
// asks the system whether a descriptor is a terminal; holds no state.
class Terminal {
public:
    // Adds "--color auto|always|never" to `command`, stored in `choice`.
    static void addColorOption(CLI::App& command, std::string& choice);

    static bool isTerminal(int fd);
    // A terminal that takes cursor movement: not TERM=dumb.
    static bool takesCursorMovement(int fd);
    // "always"; "never"; else ("auto") a terminal that isn't dumb, with no
    // NO_COLOR set to a non-empty value.
    static bool wantsColour(const std::string& choice, int fd);
    // The columns of the terminal on standard output (COLUMNS when the system
    // doesn't say, else 80); no limit when standard output isn't a terminal,
    // so that a table piped to a file or a pager is never cut.
    static std::size_t outputWidth();
};

}  // namespace quester::cli
