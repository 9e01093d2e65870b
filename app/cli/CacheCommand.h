#pragma once

namespace CLI {
class App;
}

namespace quester::cli {

// Adds the `cache` subcommand to `app`, with `add`, `list`, `update`, `info`
// and `remove`: the disk caches that keep folders and disks searchable, also
// while unplugged. `exitStatus` gets 0 when the command did its work, 2 on
// any error, 130 after Ctrl-C.
void addCacheCommand(CLI::App& app, int& exitStatus);

}  // namespace quester::cli
