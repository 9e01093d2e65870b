#pragma once

namespace CLI {
class App;
}

namespace quester::cli {

// Adds `history [--limit N] [--format table|json]` and `history clear` to
// `app`: the searches run lately, newest first, and emptying the list.
// `exitStatus` gets 0 when the command did its work, 1 for an empty history,
// 2 for an error.
void addHistoryCommand(CLI::App& app, int& exitStatus);

}  // namespace quester::cli
