#pragma once

#include <string>
#include <vector>

#include "SessionSearch.h"

namespace CLI {
class App;
}

namespace quester::cli {

// The options of a search, with the folders and location names as typed
// until they are checked.
struct SearchOptions {
    SessionSearchOptions session;
    std::vector<std::string> locations;
    std::vector<std::string> locationNames;
};

// Adds the `search` subcommand to `app`. When it runs, `exitStatus` gets its
// outcome (ExitStatus): 0 when something was found, 1 when nothing was, 2 for
// an unusable query, location or export. Ctrl-C ends the process with 130.
// A search that runs is recorded in the history.
void addSearchCommand(CLI::App& app, int& exitStatus);

// The options that shape a search, after the query: where, how to sort and
// what to print. Shared by the commands that run searches.
void addSearchOptions(CLI::App& command, SearchOptions& options);

// Runs the search the options describe and records it in the history; an ExitStatus.
int runSearch(const SearchOptions& options);

}  // namespace quester::cli
