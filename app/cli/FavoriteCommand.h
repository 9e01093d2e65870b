#pragma once

namespace CLI {
class App;
}

namespace quester::cli {

// Adds `favorite add PATH [--name NAME]`, `favorite list` and
// `favorite remove NAME` to `app`: folders kept under a keyword, which
// `search --location NAME` and the query's "~keyword" find. `exitStatus` gets
// 0 when the command did its work, 1 for an empty list, 2 for an error.
void addFavoriteCommand(CLI::App& app, int& exitStatus);

}  // namespace quester::cli
