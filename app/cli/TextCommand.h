#pragma once

namespace CLI {
class App;
}

namespace quester::cli {

// Adds the `text` subcommand to `app`: it prints the text of documents (or,
// with --words, their counted words) as the import helper reads them.
// `exitStatus` gets 0 when a document gave text, 1 when the readable ones gave
// none, 2 when a file couldn't be read.
void addTextCommand(CLI::App& app, int& exitStatus);

}  // namespace quester::cli
