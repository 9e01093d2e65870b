#pragma once

namespace CLI {
class App;
}

namespace quester::cli {

// Adds the `search` subcommand to `app`. When it runs, `exitStatus` gets its
// outcome (ExitStatus): 0 when something was found, 1 when nothing was, 2 for
// an unusable query, location or export. Ctrl-C ends the process with 130.
void addSearchCommand(CLI::App& app, int& exitStatus);

}  // namespace quester::cli
