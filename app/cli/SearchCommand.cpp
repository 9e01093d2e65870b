#include "SearchCommand.h"

#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "commands/StandardCommandFactories.h"
#include "language/LanguageParse.h"
#include "query/QueryContainer.h"
#include "query/SearchLocation.h"
#include "query/SearchManager.h"
#include "query/SearchManagerDelegate.h"
#include "query/SearchResult.h"
#include "sources/FileSystemSearch.h"
#include "support/Locked.h"
#include "support/MainLoop.h"
#include "support/Result.h"

namespace quester::cli {
namespace {

constexpr int kUnusable = 1;
constexpr int kInterrupted = 130;

struct SearchOptions {
    std::string query;
    std::vector<std::string> locations;
    bool hidden = false;
    long limit = 0;
    std::string format = "paths";
    bool nulSeparated = false;
};

void complain(const std::string& message) { std::fprintf(stderr, "quester: %s\n", message.c_str()); }

// The folders to search as absolute paths, or what is wrong with one of them.
Result<std::vector<Url>> searchFolders(const std::vector<std::string>& given) {
    std::vector<std::string> paths = given.empty() ? std::vector<std::string>{userHomeFolder()} : given;
    std::vector<Url> folders;
    for (const auto& path : paths) {
        std::error_code error;
        auto absolute = std::filesystem::absolute(path, error).lexically_normal().string();
        while (absolute.size() > 1 && absolute.back() == '/') absolute.pop_back();
        if (error || !std::filesystem::is_directory(absolute, error)) {
            return makeError(ErrorCode::invalidArgument,
                             "cannot search in '" + path + "': " +
                                 (std::filesystem::exists(absolute, error) ? "not a folder" : "no such folder"));
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

// Shows "N folders, M results" on standard error while the search runs, when
// standard error is a terminal; clears the line before results are printed.
class TerminalProgress {
public:
    TerminalProgress() : enabled(::isatty(STDERR_FILENO) == 1) {}

    void show(const SearchManagerProgress& progress) {
        if (!enabled) return;
        std::fprintf(stderr, "\r\033[K%lld folders, %lld results", static_cast<long long>(progress.numberOfDirectoriesSearched),
                     static_cast<long long>(progress.numberOfResultsReturned));
        std::fflush(stderr);
        shown = true;
    }
    void clear() {
        if (!shown) return;
        std::fputs("\r\033[K", stderr);
        std::fflush(stderr);
        shown = false;
    }

private:
    const bool enabled;
    bool shown = false;
};

// Prints what the manager finds as it comes, and ends the main loop when the
// search is over. Runs on the main loop's thread.
class CommandLineDelegate final : public SearchManagerDelegate {
public:
    CommandLineDelegate(const SearchOptions& options, MainLoop& loop) : options(options), loop(loop) {}

    void setManager(std::weak_ptr<SearchManager> searchManager) { manager = std::move(searchManager); }
    bool wasQueryInvalid() const { return invalidQuery; }

    void searchManagerIsBeginingSearches(const QueryContainer&) override {}

    void searchManagerFoundItems(const std::vector<SearchResult>& items, const QueryContainer&) override {
        for (const auto& item : items) {
            if (limitReached()) return;
            progress.clear();
            print(item);
            ++printed;
            if (limitReached()) stopSearch();
        }
    }

    void searchManagerHasFinishedAllSearches(const QueryContainer&) override {
        progress.clear();
        std::fflush(stdout);
        loop.stop();
    }

    void searchManagerProgress(const SearchManagerProgress& counters) override { progress.show(counters); }
    void searchingInsideFile(const std::string&, bool, float) override {}

    void searchInvalidQuery() override {
        invalidQuery = true;
        stopSearch();
    }

private:
    bool limitReached() const { return options.limit > 0 && printed >= options.limit; }

    void stopSearch() {
        if (auto running = manager.lock()) running->stop();
    }

    void print(const SearchResult& item) {
        if (options.format == "json") {
            auto object = item.toJSONObject();
            object["path"] = item.url.path();
            std::string line = object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
            std::fprintf(stdout, "%s\n", line.c_str());
            return;
        }
        const std::string& path = item.url.path();
        std::fwrite(path.data(), 1, path.size(), stdout);
        std::fputc(options.nulSeparated ? '\0' : '\n', stdout);
    }

    const SearchOptions& options;
    MainLoop& loop;
    std::weak_ptr<SearchManager> manager;
    TerminalProgress progress;
    long printed = 0;
    bool invalidQuery = false;
};

// Turns Ctrl-C and SIGTERM into a clean stop: the signals are blocked in every
// thread (made after this object) and one thread waits for them and calls
// `onInterrupt` there. A second signal ends the process at once.
class InterruptWatcher {
public:
    explicit InterruptWatcher(std::function<void()> onInterrupt) {
        sigemptyset(&signals);
        for (int signal : {SIGINT, SIGTERM, SIGUSR1}) sigaddset(&signals, signal);
        pthread_sigmask(SIG_BLOCK, &signals, &previousMask);
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
        pthread_sigmask(SIG_SETMASK, &previousMask, nullptr);
    }

    InterruptWatcher(const InterruptWatcher&) = delete;
    InterruptWatcher& operator=(const InterruptWatcher&) = delete;

    bool wasInterrupted() const { return interrupted.load(); }

private:
    sigset_t signals{};
    sigset_t previousMask{};
    std::atomic<bool> interrupted{false};
    std::thread watcher;
};

int runSearch(const SearchOptions& options) {
    auto folders = searchFolders(options.locations);
    if (!folders) {
        complain(folders.error().message);
        return kUnusable;
    }
    LanguageParse parser(standardCommandFactories());
    QueryContainer query(options.query, parser, SearchLocation::fromURLs(*folders));
    if (auto reason = unusableQueryReason(query)) {
        complain(*reason);
        return kUnusable;
    }

    MainLoop& loop = MainLoop::shared();
    auto delegate = std::make_shared<CommandLineDelegate>(options, loop);
    Locked<std::weak_ptr<SearchManager>> running;
    InterruptWatcher interrupts([&running] {
        if (auto manager = running.value().lock()) manager->stop();
    });

    SearchManager::Environment environment;
    environment.fileSystemSearchDataSources = {std::make_shared<FileSystemSearch>()};
    environment.mainLoop = &loop;
    auto manager = SearchManager::create(std::move(query), options.hidden, delegate, std::move(environment));
    running.setValue(manager);
    delegate->setManager(manager);
    manager->search();
    loop.run();

    if (interrupts.wasInterrupted()) return kInterrupted;
    if (delegate->wasQueryInvalid()) {
        complain("a search source found the query unusable");
        return kUnusable;
    }
    return 0;
}

}  // namespace

void addSearchCommand(CLI::App& app, int& exitStatus) {
    auto options = std::make_shared<SearchOptions>();
    CLI::App* search = app.add_subcommand("search", "Search names (and criteria after a colon) and print what is found");
    search->add_option("query", options->query, "The query, as in 'budget .xlsx : modified today'")->required();
    search->add_option("--in", options->locations, "A folder to search; repeat for more (default: your home folder)");
    search->add_flag("--hidden", options->hidden, "Include hidden, system and in-package items");
    search->add_option("--limit", options->limit, "Stop after this many results")->check(CLI::PositiveNumber);
    search->add_option("--format", options->format, "Output: paths (one a line) or json (JSON Lines)")
        ->check(CLI::IsMember({"paths", "json"}));
    search->add_flag("-0,--null", options->nulSeparated, "Separate paths with NUL instead of newline");
    search->callback([options, &exitStatus] {
        if (options->nulSeparated && options->format != "paths") {
            complain("-0 prints paths; it can't be combined with --format json");
            exitStatus = kUnusable;
            return;
        }
        exitStatus = runSearch(*options);
    });
}

}  // namespace quester::cli
