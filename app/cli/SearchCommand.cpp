#include "SearchCommand.h"

#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <CLI/CLI.hpp>

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "commands/StandardCommandFactories.h"
#include "platform/FileSystem.h"
#include "language/LanguageParse.h"
#include "query/QueryContainer.h"
#include "query/SearchLocation.h"
#include "sources/ShowAppsCommandDataSource.h"
#include "support/Result.h"

#include "SessionSearch.h"

namespace quester::cli {
namespace {

constexpr int kUnusable = 1;
constexpr int kUnreadable = 2;
constexpr int kInterrupted = 130;

// The session's options, with the folders as typed until they are checked.
struct SearchOptions {
    SessionSearchOptions session;
    std::vector<std::string> locations;
};

void complain(const std::string& message) { std::fprintf(stderr, "quester: %s\n", message.c_str()); }

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
        auto absolute = std::filesystem::absolute(path, error).lexically_normal().string();
        while (absolute.size() > 1 && absolute.back() == '/') absolute.pop_back();
        const auto status =
            error ? Result<FileStatus>(makeError(ErrorCode::notFound, "")) : FileSystem::real().status(absolute);
        if (!status || !status->isDirectory()) {
            return makeError(ErrorCode::invalidArgument,
                             "cannot search in '" + path + "': " + (status ? "not a folder" : "no such folder"));
        }
        if (Status readable = canBeListed(absolute); !readable) {
            const bool denied = readable.error().code == ErrorCode::permissionDenied;
            return makeError(readable.error().code, "cannot search in '" + path + "': the folder can't be read (" +
                                                        (denied ? "permission denied" : readable.error().message) + ")");
        }
        folders.emplace_back(absolute, true);
    }
    return folders;
}

// What keeps a query from being searched, if anything.
std::optional<std::string> unusableQueryReason(const QueryContainer& query) {
    if (!query.invalidCommandAreaWords.empty()) {
        std::string words;
        for (const auto& part : query.invalidCommandAreaWords) words += (words.empty() ? "" : " ") + part.textOriginalCase;
        return "not understood after the colon: '" + words + "' (see 'quester explain')";
    }
    if (!query.isWordBasedSearch() && query.suppliedDataSources().empty()) {
        return "the query has nothing to search for: put a word before the colon";
    }
    return std::nullopt;
}

// Turns Ctrl-C and SIGTERM into a clean stop: the signals are blocked in every
// thread (made after this object) and one thread waits for them and calls
// `onInterrupt` there. A second signal ends the process at once.
// The signals stay blocked after the watcher has gone: unblocking them would
// let one that comes while the command is finishing kill the process by the
// default action instead of letting it exit with its own status.
class InterruptWatcher {
public:
    explicit InterruptWatcher(std::function<void()> onInterrupt) {
        sigemptyset(&signals);
        for (int signal : {SIGINT, SIGTERM, SIGUSR1}) sigaddset(&signals, signal);
        pthread_sigmask(SIG_BLOCK, &signals, nullptr);
        watcher = std::thread([this, onInterrupt = std::move(onInterrupt)] {
            for (;;) {
                int signal = 0;
                if (sigwait(&signals, &signal) != 0 || signal == SIGUSR1) return;
                if (interrupted.exchange(true)) ::_exit(kInterrupted);
                onInterrupt();
            }
        });
    }

    ~InterruptWatcher() {
        pthread_kill(watcher.native_handle(), SIGUSR1);
        watcher.join();
    }

    InterruptWatcher(const InterruptWatcher&) = delete;
    InterruptWatcher& operator=(const InterruptWatcher&) = delete;

    bool wasInterrupted() const { return interrupted.load(); }

private:
    sigset_t signals{};
    std::atomic<bool> interrupted{false};
    std::thread watcher;
};

int runSearch(const SearchOptions& options) {
    auto folders = searchFolders(options.locations);
    if (!folders) {
        complain(folders.error().message);
        return folders.error().code == ErrorCode::invalidArgument ? kUnusable : kUnreadable;
    }
    SessionSearchOptions sorted = options.session;
    sorted.folders = std::move(folders).value();
    if (auto problem = SessionSearch::prepare(sorted)) {
        complain(*problem);
        return kUnusable;
    }
    // What a "show apps" query supplies, which the check below asks for. Its
    // list is read by the first search that wants it, on a thread made after
    // the signals are blocked.
    (void)ShowAppsCommandDataSource::shared();
    LanguageParse parser(standardCommandFactories());
    QueryContainer query(sorted.query, parser, SearchLocation::fromURLs(sorted.folders), sorted.soundex);
    if (auto reason = unusableQueryReason(query)) {
        complain(*reason);
        return kUnusable;
    }

    SessionSearch search(std::move(sorted));
    InterruptWatcher interrupts([&search] { search.interrupt(); });
    const int status = search.run();
    return interrupts.wasInterrupted() ? kInterrupted : status;
}

}  // namespace

void addSearchCommand(CLI::App& app, int& exitStatus) {
    auto options = std::make_shared<SearchOptions>();
    CLI::App* search = app.add_subcommand("search", "Search names (and criteria after a colon) and print what is found");
    search->add_option("query", options->session.query,
                       "The query, as in 'budget .xlsx : modified today', or a quester: URL "
                       "('quester:?q=budget&location=home')")
        ->required();
    search->add_option("--in", options->locations, "A folder to search; repeat for more (default: your home folder)");
    search->add_flag("--hidden", options->session.hidden, "Include hidden, system and in-package items");
    search->add_flag("--sounds-like", options->session.soundex,
                     "Match names with a word that sounds like one of the query's (slower)");
    search->add_option("--limit", options->session.limit, "Print the first this many of the sorted results")
        ->check(CLI::PositiveNumber);
    search->add_option("--format", options->session.format,
                       "Output: table (the default on a terminal), paths (one a line), json (JSON Lines), csv or tsv")
        ->check(CLI::IsMember({"table", "paths", "json", "csv", "tsv"}));
    search->add_flag("-0,--null", options->session.nulSeparated, "Separate paths with NUL instead of newline");
    search->add_option("--sort", options->session.sortColumn,
                       "Sort by name, size, modDate, created, lastAccessDate, kind, inside, tags, path, rank or "
                       "image (as found)")
        ->check(CLI::IsMember({"image", "name", "size", "modDate", "created", "lastAccessDate", "kind", "inside",
                               "tags", "path", "rank"}));
    search->add_flag("--reverse", options->session.reverse, "Sort in descending order");
    search->add_option("--export", options->session.exportPath,
                       "Write the sorted results to a .csv file or a tab-delimited .tsv or .txt file");
    search->callback([options, &exitStatus] { exitStatus = runSearch(*options); });
}

}  // namespace quester::cli
