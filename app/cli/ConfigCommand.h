#pragma once

namespace CLI {
class App;
}

namespace quester::cli {

// Adds `config list|get|set|reset` to `app`: the settings with their values
// and defaults, each read, changed (typed: a value of the wrong type is
// refused with the type the setting takes) or set back to its default.
// `exitStatus` gets 0 when the command did its work and 2 otherwise.
void addConfigCommand(CLI::App& app, int& exitStatus);

}  // namespace quester::cli
