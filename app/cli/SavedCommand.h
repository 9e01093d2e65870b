#pragma once

namespace CLI {
class App;
}

namespace quester::cli {

// Adds `saved add|list|run|remove` to `app`: searches kept under a name with
// their query and location, and run again with the options of `search`.
// `exitStatus` gets what `search` gives for a run, and otherwise 0 when the
// command did its work, 1 for an empty list, 2 for an error.
void addSavedCommand(CLI::App& app, int& exitStatus);

}  // namespace quester::cli
