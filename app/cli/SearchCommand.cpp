#include "SearchCommand.h"

#include <unistd.h>

#include <CLI/CLI.hpp>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "commands/StandardCommandFactories.h"
#include "platform/FileSystem.h"
#include "query/CommandRecogniser.h"
#include "query/QueryContainer.h"
#include "query/SearchLocation.h"
#include "sources/ShowAppsCommandDataSource.h"
#include "stores/HistoryController.h"
#include "stores/Preferences.h"
#include "stores/RecentLocations.h"
#include "support/PathText.h"
#include "support/Result.h"

#include "Complain.h"
#include "ExitStatus.h"
#include "InterruptWatcher.h"
#include "NamedLocation.h"
#include "SessionSearch.h"
#include "Terminal.h"

namespace quester::cli {
namespace {

// Whether the folder opens and its first entries can be read.
Status canBeListed(const std::string& folder) {
    auto opened = FileSystem::real().openDirectory(folder);
    if (!opened) return opened.error();
    std::vector<std::byte> buffer(65536);
    std::vector<DirectoryEntry> entries;
    return FileSystem::real().readEntries(**opened, buffer, entries);
}

// The folders to search as absolute paths, or what is wrong with one of them.
Result<std::vector<Url>> searchFolders(const std::vector<std::string>& given) {
    std::vector<std::string> paths = given.empty() ? std::vector<std::string>{userHomeFolder()} : given;
    std::vector<Url> folders;
    for (const auto& path : paths) {
        std::error_code error;
        const std::string absolute(
            withoutTrailingSlash(std::filesystem::absolute(path, error).lexically_normal().string()));
        const auto status =
            error ? Result<FileStatus>(makeError(ErrorCode::notFound, "")) : FileSystem::real().status(absolute);
        if (!status || !status->isDirectory()) {
            return makeError(ErrorCode::invalidArgument,
                             "cannot search in '" + path + "': " + (status ? "not a folder" : "no such folder"));
        }
        if (Status readable = canBeListed(absolute); !readable) {
            const bool denied = readable.error().code == ErrorCode::permissionDenied;
            return makeError(readable.error().code, "cannot search in '" + path + "': the folder can't be read (" +
                                                        (denied ? "permission denied" : readable.error().message) +
                                                        ")");
        }
        folders.emplace_back(absolute, true);
    }
    return folders;
}

// Why the query holds a criterion that can't be run yet, if it does.
std::optional<std::string> unavailableCriterionReason(const QueryContainer& query) {
    const auto unavailable = query.unavailableCriteria();
    if (unavailable.empty()) return std::nullopt;
    const auto& first = unavailable.front();
    return "'" + first.wording + "' needs " + first.engine +
           ", which this version of Quester does not have yet; leave it out to search without it";
}

// What keeps a query from being searched, if anything.
std::optional<std::string> unusableQueryReason(const QueryContainer& query) {
    if (query.refusalReason()) return query.refusalReason();
    if (!query.invalidCommandAreaWords().empty()) {
        std::string words;
        for (const auto& part : query.invalidCommandAreaWords())
            words += (words.empty() ? "" : " ") + part.textOriginalCase;
        return "not understood after the colon: '" + words + "' (see 'quester explain')";
    }
    if (!query.isWordBasedSearch() && query.suppliedDataSources().empty()) {
        return "the query has nothing to search for: put a word before the colon";
    }
    return std::nullopt;
}

// Ends the command at Ctrl-C or SIGTERM, at once and by its own exit status.
// Nothing more is printed, whether the walk is under way or the list is being
// written, and the process doesn't wait for the walk's threads to finish
// their folders: `_exit` runs no destructor that those threads could still
// be using. An export file being written is left as far as it got.
void endAtInterrupt() {
    // The progress line would stay behind the shell's prompt.
    if (Terminal::takesCursorMovement(STDERR_FILENO)) (void)!::write(STDERR_FILENO, "\r\033[K", 4);
    ::_exit(ExitStatus::interrupted);
}

// The folders typed with --in and those of the names given with --location,
// which are recorded as recent locations.
Result<std::vector<std::string>> typedFolders(const SearchOptions& options) {
    std::vector<std::string> folders = options.locations;
    for (const auto& name : options.locationNames) {
        auto named = foldersOfLocationNamed(name);
        if (!named) return named.error();
        for (const auto& folder : *named) {
            if (Status recorded = RecentLocations().add(folder); !recorded)
                complain("cannot record the recent location: " + recorded.error().message);
        }
        folders.insert(folders.end(), named->begin(), named->end());
    }
    return folders;
}

// A search run from the command line is a query a person pressed Return on.
// With the history off nothing is recorded: a window would empty it at the
// next change of settings anyway.
void recordInHistory(const std::string& query) {
    if (!Preferences::shared().boolValue("historyEnabled")) return;
    if (Status added = HistoryController().addQuery(query); !added)
        complain("cannot record the search in the history: " + added.error().message);
}

}  // namespace

int runSearch(const SearchOptions& options) {
    auto typed = typedFolders(options);
    if (!typed) {
        complain(typed.error().message);
        return ExitStatus::failed;
    }
    auto folders = searchFolders(*typed);
    if (!folders) {
        complain(folders.error().message);
        return ExitStatus::failed;
    }
    SessionSearchOptions sorted = options.session;
    sorted.folders = std::move(folders).value();
    if (auto problem = SessionSearch::prepare(sorted)) {
        complain(*problem);
        return ExitStatus::failed;
    }
    // What a "show apps" query supplies, which the check below asks for. Its
    // list is read by the first search that wants it, on a thread made after
    // the signals are blocked.
    (void)ShowAppsCommandDataSource::shared();
    CommandRecogniser parser(standardCommandFactories());
    QueryContainer query(sorted.query, parser, SearchLocation::fromURLs(sorted.folders), sorted.soundex);
    if (auto reason = unavailableCriterionReason(query)) {
        complain(*reason);
        return ExitStatus::failed;
    }
    if (auto reason = unusableQueryReason(query)) {
        complain(*reason);
        return ExitStatus::failed;
    }

    const std::string text = sorted.query;
    SessionSearch search(std::move(sorted));
    InterruptWatcher interrupts(endAtInterrupt);
    const int status = search.run();
    if (status != ExitStatus::failed) recordInHistory(text);
    return status;
}

namespace {

// CLI11's own check prints the range of a double for 0. CLI11 puts the
// option's name before the message.
CLI::Validator positiveWholeNumber() {
    return CLI::Validator(
        [](std::string& text) {
            char* end = nullptr;
            errno = 0;
            const long long value = std::strtoll(text.c_str(), &end, 10);
            const bool whole = !text.empty() && end != nullptr && *end == '\0' && errno == 0;
            return whole && value > 0 ? std::string() : "must be a positive whole number, not '" + text + "'";
        },
        "POSITIVE");
}

}  // namespace

void addSearchCommand(CLI::App& app, int& exitStatus) {
    auto options = std::make_shared<SearchOptions>();
    CLI::App* search =
        app.add_subcommand("search", "Search names (and criteria after a colon) and print what is found");
    search->footer(exitStatusHelp);
    search
        ->add_option("query,--query", options->session.query,
                     "The query, as in 'budget .xlsx : modified today', or a quester: URL "
                     "('quester:?q=budget+report&location=home'); one that begins with a minus word may "
                     "stand anywhere, or after --")
        ->required();
    addSearchOptions(*search, *options);
    search->callback([options, &exitStatus] { exitStatus = runSearch(*options); });
}

void addSearchOptions(CLI::App& command, SearchOptions& options) {
    command.add_option("--in", options.locations, "A folder to search; repeat for more (default: your home folder)")
        ->allow_extra_args(false);
    command
        .add_option("--location", options.locationNames,
                    "Search a group, a favourite folder (by its keyword) or a preset: home, all, local, network, "
                    "external, backups; repeat for more")
        ->allow_extra_args(false);
    command.add_flag("--no-ignore", options.session.noIgnore,
                     "Show what the ignore list leaves out (see 'quester ignore list')");
    command.add_flag("--hidden", options.session.hidden, "Include hidden, system and in-package items");
    command.add_flag("--sounds-like", options.session.soundex,
                     "Match names with a word that sounds like one of the query's (slower)");
    command.add_option("--limit", options.session.limit, "Print the first this many of the sorted results")
        ->check(positiveWholeNumber());
    command
        .add_option("--format", options.session.format,
                    "Output: table (the default on a terminal), paths (one a line), json (one record a line, "
                    "see doc/json-output.md), csv or tsv. On a terminal, control characters and bytes that "
                    "aren't UTF-8 in names show as '?'")
        ->transform(CLI::IsMember({"table", "paths", "json", "csv", "tsv"}, CLI::ignore_case));
    command.add_flag("-0,--null", options.session.nulSeparated, "Separate paths with NUL instead of newline");
    command
        .add_option("--sort", options.session.sortColumn,
                    "Sort by name, size, modDate, created, lastAccessDate, kind, inside, tags, path, rank or "
                    "image (as found)")
        ->transform(CLI::IsMember(
            {"image", "name", "size", "modDate", "created", "lastAccessDate", "kind", "inside", "tags", "path", "rank"},
            CLI::ignore_case));
    command.add_flag("--reverse", options.session.reverse, "Sort in descending order");
    Terminal::addColorOption(command, options.session.color);
    command.add_option("--export", options.session.exportPath,
                       "Write the sorted results to a .csv file or a tab-delimited .tsv or .txt file (the header "
                       "alone when nothing is found)");
}

}  // namespace quester::cli
