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

#include "cache/CachedLocation.h"
#include "cache/ContentIndexBuild.h"
#include "cache/ContentIndexSearch.h"
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

#include "CacheManagerLoading.h"
#include "CacheUpdateRun.h"
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

// What --in, --location and --only-caches ask to search.
struct TypedLocations {
    std::vector<std::string> folders;
    std::vector<SearchTarget> cacheTargets;
};

SearchTarget cacheTarget(const ContentIndex& cache, bool isExplicit = true) {
    return SearchTarget::offline(std::make_shared<CachedLocation>(cache), isExplicit);
}

// The folders typed with --in and those of the names given with --location,
// which are recorded as recent locations, and the caches named with
// --location. With --only-caches and no location, every cache.
Result<TypedLocations> typedLocations(const SearchOptions& options, const std::vector<ContentIndex*>& caches) {
    TypedLocations typed{options.locations, {}};
    for (const auto& name : options.locationNames) {
        auto named = locationNamed(name, caches);
        if (!named) return named.error();
        for (const auto& [cache, isExplicit] : named->caches)
            typed.cacheTargets.push_back(cacheTarget(*cache, isExplicit));
        for (const auto& folder : named->folders) {
            if (Status recorded = RecentLocations().add(folder); !recorded)
                complain("cannot record the recent location: " + recorded.error().message);
        }
        typed.folders.insert(typed.folders.end(), named->folders.begin(), named->folders.end());
    }
    if (options.session.onlyCaches && typed.folders.empty() && typed.cacheTargets.empty())
        for (const ContentIndex* cache : caches) typed.cacheTargets.push_back(cacheTarget(*cache));
    return typed;
}

// The disk caches while caching is on; none when it is off (a search then
// doesn't touch their files) or there is no data folder.
std::unique_ptr<ContentIndexManager> loadCachesIfOn() {
    if (!Preferences::shared().boolValue("diskCatalogCaching")) return nullptr;
    auto manager = loadCacheManager();
    return manager ? std::move(*manager) : nullptr;
}

std::vector<ContentIndex*> cacheList(const ContentIndexManager* manager) {
    std::vector<ContentIndex*> caches;
    if (manager)
        for (const auto& cache : manager->indexes()) caches.push_back(cache.get());
    return caches;
}

// The session's options with the locations checked: folders (the home
// folder when nothing was named) and caches.
Result<SessionSearchOptions> sessionOptions(const SearchOptions& options, const std::vector<ContentIndex*>& caches) {
    auto typed = typedLocations(options, caches);
    if (!typed) return typed.error();
    SessionSearchOptions session = options.session;
    session.caches = caches;
    session.cacheTargets = typed->cacheTargets;
    if (typed->folders.empty() && !typed->cacheTargets.empty()) return session;
    auto folders = searchFolders(typed->folders);
    if (!folders) return folders.error();
    session.folders = std::move(folders).value();
    return session;
}

// A search that read a cache whose time for an update has come brings it up
// to date once the results are printed, if the preference
// "fileContentCachingTimeUpdatesEnabled" allows: otherwise a search from
// the command line leaves the caches as they are.
void updateDueCaches(ContentIndexManager& manager, const std::vector<ContentIndex*>& searched) {
    if (!Preferences::shared().boolValue("fileContentCachingTimeUpdatesEnabled")) return;
    std::vector<ContentIndex*> due;
    for (ContentIndex* cache : searched)
        if (manager.isDue(*cache) && ContentIndexBuild::isTargetMounted(*cache)) due.push_back(cache);
    if (!due.empty()) (void)CacheUpdateRun(manager, false).run(due, false);
}

// Runs the search with Ctrl-C ending the process; the watcher is gone when
// this returns, so that a cache update afterwards stops cleanly instead.
int runSession(SessionSearchOptions options) {
    SessionSearch search(std::move(options));
    InterruptWatcher interrupts(endAtInterrupt);
    return search.run();
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
    std::unique_ptr<ContentIndexManager> caches = loadCachesIfOn();
    if (options.session.onlyCaches && !caches) {
        complain("the disk caches are off; turn them on with 'quester config set diskCatalogCaching true'");
        return ExitStatus::failed;
    }
    const std::vector<ContentIndex*> known = cacheList(caches.get());
    auto sorted = sessionOptions(options, known);
    if (!sorted) {
        complain(sorted.error().message);
        return ExitStatus::failed;
    }
    if (auto problem = SessionSearch::prepare(*sorted)) {
        complain(*problem);
        return ExitStatus::failed;
    }
    // What a "show apps" query supplies, which the check below asks for. Its
    // list is read by the first search that wants it, on a thread made after
    // the signals are blocked.
    (void)ShowAppsCommandDataSource::shared();
    CommandRecogniser parser(standardCommandFactories());
    QueryContainer query(sorted->query, parser, SessionSearch::location(*sorted), sorted->soundex);
    if (auto reason = unavailableCriterionReason(query)) {
        complain(*reason);
        return ExitStatus::failed;
    }
    if (auto reason = unusableQueryReason(query)) {
        complain(*reason);
        return ExitStatus::failed;
    }

    const std::string text = sorted->query;
    const int status = runSession(std::move(*sorted));
    if (status != ExitStatus::failed) recordInHistory(text);
    if (caches) updateDueCaches(*caches, ContentIndexSearch(known).cachesForLocations(query));
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
                    "Search a group, a favourite folder (by its keyword), a disk cache (by its name, also while "
                    "its disk is unplugged) or a preset: home, all, local, network, external, backups; repeat for "
                    "more")
        ->allow_extra_args(false);
    command.add_flag("--only-caches", options.session.onlyCaches,
                     "Answer from the disk caches alone, without walking the disks (see 'quester cache list'); "
                     "without --in or --location every cache");
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
