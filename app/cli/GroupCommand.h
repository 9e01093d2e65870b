#pragma once

namespace CLI {
class App;
}

namespace quester::cli {

// Adds `group add NAME PATH…`, `group list` and `group remove NAME [PATH]`
// to `app`: named lists of files and folders that `search --location NAME`
// searches. `exitStatus` gets 0 when the command did its work, 1 for an empty
// list, 2 for an error.
void addGroupCommand(CLI::App& app, int& exitStatus);

}  // namespace quester::cli
