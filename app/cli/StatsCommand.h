#pragma once

namespace CLI {
class App;
}

namespace quester::cli {

// Adds `stats [--format table|json]` and `stats clear` to `app`: how long
// each search source took, by query and run. `exitStatus` gets 0 when the
// command did its work, 1 when there is nothing recorded, 2 for an error.
void addStatsCommand(CLI::App& app, int& exitStatus);

}  // namespace quester::cli
