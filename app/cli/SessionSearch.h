#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cache/ContentIndex.h"
#include "platform/Url.h"
#include "query/SearchLocation.h"

namespace quester::cli {

// What `quester search` asks of one sorted search.
struct SessionSearchOptions {
    std::string query;  // or a "quester:" URL
    std::vector<Url> folders;
    // Caches named as locations: searched also while their disks are off line.
    std::vector<SearchTarget> cacheTargets;
    // Every disk cache there is; none while caching is off. They must
    // outlive the search.
    std::vector<ContentIndex*> caches;
    bool onlyCaches = false;  // answer from the caches alone, without walking the disks
    bool hidden = false;
    bool noIgnore = false;      // the ignore list leaves nothing out
    bool soundex = false;       // words match names that sound alike
    long limit = 0;             // 0: every result
    std::string format;         // table, paths, json, csv or tsv; empty: table on a terminal, else paths
    bool nulSeparated = false;  // paths apart by NUL
    std::string sortColumn = "name";
    bool reverse = false;
    std::optional<std::string> exportPath;  // .csv, .tsv or .txt, in any case
    std::string color = "auto";             // auto, always or never
};

// Runs one query through a search session and its results model, as a query
// window would, and prints the sorted list when the search has ended: as a
// table fitted to the terminal, as paths, JSON Lines, CSV or tab-delimited
// text, or into an export file. Progress goes to standard error on a terminal
// that takes cursor movement. Names shown on a terminal have their control
// characters and bytes that aren't UTF-8 as "?"; paths piped are written as
// they are.
class SessionSearch {
public:
    explicit SessionSearch(SessionSearchOptions options);
    ~SessionSearch();
    SessionSearch(const SessionSearch&) = delete;
    SessionSearch& operator=(const SessionSearch&) = delete;

    // Reads a "quester:" URL given as the query ("quester:?q=budget&location=home")
    // into the query text and the preset location's folders, makes line
    // breaks in the query blanks, and checks the options. The message says
    // what is wrong.
    static std::optional<std::string> prepare(SessionSearchOptions& options);
    // The folders, then the caches named as locations.
    static SearchLocation location(const SessionSearchOptions& options);

    // Runs the main loop until the list is ready and prints it. An ExitStatus:
    // found, nothingFound, or failed for an unusable query or an export that failed.
    int run();

private:
    struct State;
    std::unique_ptr<State> state;
};

}  // namespace quester::cli
