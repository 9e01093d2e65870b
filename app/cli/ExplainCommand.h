#pragma once

namespace CLI {
class App;
}

namespace quester::cli {

// Adds the `explain` subcommand to `app`: it prints how a query was understood
// (search words, commands in their canonical wording, unrecognised words, the
// boolean expression, the location), for a person or, with --json, for a
// script. `exitStatus` gets 0, or 2 for a query too long to be read.
void addExplainCommand(CLI::App& app, int& exitStatus);

}  // namespace quester::cli
