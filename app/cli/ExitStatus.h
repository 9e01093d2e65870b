#pragma once

namespace quester::cli {

// What `quester` tells the shell, as grep-like tools do, so that scripts can
// branch on it. `--help` and the README list them.
enum ExitStatus : int {
    found = 0,          // something was found, or the command did its work
    nothingFound = 1,   // a search found nothing
    failed = 2,         // any error, a mistake on the command line included
    interrupted = 130,  // stopped by Ctrl-C (or SIGTERM)
};

// The statuses, for the end of `--help`.
inline constexpr const char* exitStatusHelp =
    "Exit status: 0 something was found (or the command did its work), 1 a search found nothing,\n"
    "2 an error (a mistake on the command line included), 130 stopped by Ctrl-C.";

}  // namespace quester::cli
