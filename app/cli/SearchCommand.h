#pragma once

namespace CLI {
class App;
}

namespace quester::cli {

// Adds the `search` subcommand to `app`. When it runs, `exitStatus` gets its
// outcome: 0 after a search (stopped by --limit too), 1 for an unusable query
// or location, 130 when interrupted.
void addSearchCommand(CLI::App& app, int& exitStatus);

}  // namespace quester::cli
