#pragma once

namespace CLI {
class App;
}

namespace quester::cli {

// Adds `ignore add folder NAME`, `ignore add extension EXT`, `ignore list`
// and `ignore remove folder NAME | extension EXT` to `app`: what searches
// never show (unless `search --no-ignore`). `exitStatus` gets 0 when the
// command did its work, 1 for an empty list or nothing to remove, 2 for an error.
void addIgnoreCommand(CLI::App& app, int& exitStatus);

}  // namespace quester::cli
