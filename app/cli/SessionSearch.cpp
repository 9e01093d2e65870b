#include "SessionSearch.h"

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <functional>

#include "cache/ContentIndexSearch.h"
#include "commands/StandardCommandFactories.h"
#include "query/CommandRecogniser.h"
#include "query/QueryContainer.h"
#include "query/SearchLocation.h"
#include "results/Column.h"
#include "results/DisplayText.h"
#include "results/QuesterURL.h"
#include "results/ResultDateText.h"
#include "results/ResultRecord.h"
#include "results/ResultsExporter.h"
#include "results/ResultsTable.h"
#include "results/SearchSession.h"
#include "sources/FileSystemSearch.h"
#include "sources/ShowAppsCommandDataSource.h"
#include "stores/IgnoreItems.h"
#include "stores/Preferences.h"
#include "stores/QueryStatisticsController.h"
#include "support/PathText.h"

#include "Complain.h"
#include "ExitStatus.h"
#include "Terminal.h"

namespace quester::cli {

namespace {

std::optional<ResultsExporter::Format> exportFormatFor(const std::string& path) {
    std::string extension = pathExtension(path);
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (extension == "csv") return ResultsExporter::Format::csv;
    if (extension == "tsv" || extension == "txt") return ResultsExporter::Format::text;
    return std::nullopt;
}

// The user's preferences for matching and ordering, in a store of this run
// only: a search from the command line changes no setting.
void copySearchPreferences(Preferences& into) {
    const Preferences& user = Preferences::shared();
    for (const char* key : {"moveFoldersToTop", "moveItemsStartingWithQueryToTop", "diacriticInsensitiveSearch",
                            "showAppsFoundAnywhere"}) {
        (void)into.setValue(key, user.boolValue(key));
    }
}

// The ignore list as the user's preferences hold it when the search starts.
std::function<bool(const std::string&)> ignoreTest() {
    auto list = std::make_shared<const IgnoreItems>(Preferences::shared());
    return [list](const std::string& path) { return list->ignores(path); };
}

// Adds each source's duration to the statistics of the query's run, which
// begins now: the manager is made next.
std::function<void(SearchResultSupplier, Clock::Duration)> statisticsRecorder(const std::string& query) {
    return [query, started = SystemClock::shared().now()](SearchResultSupplier supplier, Clock::Duration took) {
        QueryStatisticsController::shared().add(started, query, static_cast<int>(supplier),
                                                std::chrono::duration_cast<std::chrono::seconds>(took).count());
    };
}

// "N folders, M results" on standard error while searching, on a terminal
// that takes cursor movement only.
class ProgressLine final : public SearchSessionObserver {
public:
    explicit ProgressLine(std::function<void()> onEnd) : onEnd(std::move(onEnd)) {}

    void showProgress(const SearchManagerProgress& progress) override {
        if (!enabled) return;
        std::fprintf(stderr, "\r\033[K%lld folders, %lld results",
                     static_cast<long long>(progress.numberOfDirectoriesSearched),
                     static_cast<long long>(progress.numberOfResultsReturned));
        std::fflush(stderr);
        shown = true;
    }
    void invalidQuery(int) override { invalid = true; }
    void searchEnded(bool) override {
        if (shown) std::fputs("\r\033[K", stderr);
        shown = false;
        onEnd();
    }
    bool wasQueryInvalid() const { return invalid; }

private:
    const bool enabled = Terminal::takesCursorMovement(STDERR_FILENO);
    bool shown = false;
    bool invalid = false;
    std::function<void()> onEnd;
};

// The command line has no selection; it answers for the query the rows were
// found for, which the ordering preferences ("folders first", "names that
// start with the query first") read.
class QueryOfTheSession final : public UINodeSelectionDelegate {
public:
    explicit QueryOfTheSession(const SearchSession& session) : session(session) {}

    UINode::NodeList relevantItems() override { return {}; }
    void refreshSelection() override {}
    void selectionSizeCalculated(std::int64_t, std::uint64_t) override {}
    const QueryContainer* currentQuery() const override {
        const auto& query = session.currentQuery();
        return query ? &*query : nullptr;
    }
    void setUIUpdateIndicator(bool) override {}

private:
    const SearchSession& session;
};

// Prints what `appendLine(row, text)` appends for each row, in pieces of
// about a megabyte: a hundred thousand rows cost a hundred thousand locked
// stdio calls one by one, and a million of them a second copy of every line
// in one piece.
void printRows(const UINode::NodeList& rows, const std::function<void(const UINode&, std::string&)>& appendLine) {
    constexpr std::size_t pieceSize = 1 << 20;
    std::string text;
    text.reserve(pieceSize);
    for (const auto& row : rows) {
        appendLine(*row, text);
        if (text.size() < pieceSize) continue;
        std::fwrite(text.data(), 1, text.size(), stdout);
        text.clear();
    }
    std::fwrite(text.data(), 1, text.size(), stdout);
}

void printJSONLines(const UINode::NodeList& rows) {
    printRows(rows, [](const UINode& row, std::string& text) { text += ResultRecord::jsonLine(row) + "\n"; });
}

// A terminal gets the paths shown safely.
void printPaths(const UINode::NodeList& rows, char separator, bool forTerminal) {
    printRows(rows, [separator, forTerminal](const UINode& row, std::string& text) {
        const std::string path = row.fileURL().path();
        text += forTerminal ? terminalSafeText(path) : path;
        text += separator;
    });
}

// The caches first: they answer before the walk has gone far, and a path
// that both supply comes once, from the cache.
SearchManager::DataSources diskSources(const SessionSearchOptions& options) {
    SearchManager::DataSources sources;
    if (!options.caches.empty()) sources.push_back(std::make_shared<ContentIndexSearch>(options.caches));
    if (!options.onlyCaches) sources.push_back(std::make_shared<FileSystemSearch>());
    return sources;
}

bool printsPathsOnly(const SessionSearchOptions& options) {
    const bool onTerminal = Terminal::isTerminal(STDOUT_FILENO);
    const bool printsPaths =
        options.format == "paths" || (options.format.empty() && (options.nulSeparated || !onTerminal));
    return printsPaths && !options.exportPath;
}

// Paths alone, in an order of names or paths, show nothing of what a status
// call gives, and no source needs to make one for each result.
bool showsItemAttributes(const SessionSearchOptions& options) {
    const std::optional<Column> sort = columnFromIdentifier(options.sortColumn);
    const bool sortsByName = sort == Column::name || sort == Column::path;
    return !printsPathsOnly(options) || !sortsByName;
}

}  // namespace

struct SessionSearch::State {
    SessionSearchOptions options;
    MainLoop& loop = MainLoop::shared();
    MainLoopTimerScheduler scheduler{loop};
    Preferences preferences{""};
    CommandRecogniser parser{standardCommandFactories()};
    std::shared_ptr<ProgressLine> progress;
    std::shared_ptr<SearchSession> session;
    std::shared_ptr<QueryOfTheSession> selection;
};

SessionSearch::SessionSearch(SessionSearchOptions options) : state(std::make_unique<State>()) {
    // A search of a million results grows and frees arrays of megabytes (sort
    // orders, key tables, batches). glibc raises its mapping threshold each
    // time one is freed, so that the next ones come from the heap and leave
    // holes there that rows can't fill; a fixed threshold maps them apart and
    // gives them back when freed. A fixed threshold also fixes the trim
    // threshold at 128 KiB, and then every document a content search reads
    // and frees costs the kernel a madvise and the pages again: trimming
    // waits for the end of the search instead.
    ::mallopt(M_MMAP_THRESHOLD, 1 << 20);
    ::mallopt(M_TRIM_THRESHOLD, 16 << 20);
    state->options = std::move(options);
    copySearchPreferences(state->preferences);
    (void)state->preferences.setValue("searchInsideSystemAndApps", state->options.hidden);
    (void)state->preferences.setValue("sizeIsVisible", false);
    SearchSession::Environment environment;
    environment.parser = &state->parser;
    environment.location = [location = location(state->options)](const std::optional<std::string>&) {
        return std::optional<SearchLocation>(location);
    };
    environment.managerEnvironment = [loop = &state->loop, options = &state->options] {
        SearchManager::Environment managerEnvironment;
        managerEnvironment.fileSystemSearchDataSources = diskSources(*options);
        managerEnvironment.commandBasedDataSources = {ShowAppsCommandDataSource::shared()};
        managerEnvironment.mainLoop = loop;
        if (!options->noIgnore) managerEnvironment.isIgnored = ignoreTest();
        managerEnvironment.sourceDidFinish = statisticsRecorder(options->query);
        managerEnvironment.showsItemAttributes = showsItemAttributes(*options);
        managerEnvironment.showsFoundLines = !printsPathsOnly(*options);
        return managerEnvironment;
    };
    environment.mainLoop = &state->loop;
    environment.scheduler = &state->scheduler;
    environment.preferences = &state->preferences;
    state->session = SearchSession::create(std::move(environment));
    State* current = state.get();
    state->progress = std::make_shared<ProgressLine>([current] {
        // The walk's threads have freed what they held for the results in
        // flight, but the allocator keeps it mapped; the sort that comes
        // now is when memory peaks.
        ::malloc_trim(0);
        const auto& model = current->session->uiNodeModel();
        model->setSortingDeferred(false);
        model->afterPendingWork([current] { current->loop.stop(); });
    });
    state->session->setObserver(state->progress);
    state->selection = std::make_shared<QueryOfTheSession>(*state->session);
    state->session->uiNodeModel()->setSelectionDelegate(state->selection);
}

// The finished session stays until the process ends, and its memory goes
// back to the system with the process: freeing a hundred thousand rows one by
// one takes longer than sorting them did. It stays reachable from here, so a
// leak checker doesn't count it; a command makes one session.
SessionSearch::~SessionSearch() {
    static auto* const keptUntilExit = new std::vector<std::unique_ptr<State>>();
    keptUntilExit->push_back(std::move(state));
}

std::optional<std::string> SessionSearch::prepare(SessionSearchOptions& options) {
    const auto url = QuesterURL::parse(options.query);
    if (!url && !url.isNotFound()) return url.error().message;
    if (url) {
        if (!url->q) return "the quester: URL has no q item with the query";
        options.query = *url->q;
        if (url->location) {
            const auto preset = searchLocationURLSetFromName(*url->location);
            if (!preset) return "unknown location '" + *url->location + "' in the quester: URL";
            options.folders = SearchLocation::preset(*preset, url->location).locationURLs();
        }
    }
    // A query field keeps only its first line; on the command line a line
    // break is one more blank, as it is to the shell.
    std::replace_if(
        options.query.begin(), options.query.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
    if (!columnFromIdentifier(options.sortColumn)) return "unknown sort column '" + options.sortColumn + "'";
    if (options.exportPath && !exportFormatFor(*options.exportPath)) {
        return "--export writes .csv, .tsv or .txt files, not '" + *options.exportPath + "'";
    }
    if (options.nulSeparated && !options.format.empty() && options.format != "paths") {
        return "-0 prints paths; it can't be combined with --format " + options.format;
    }
    return std::nullopt;
}

SearchLocation SessionSearch::location(const SessionSearchOptions& options) {
    std::vector<SearchTarget> targets;
    for (const Url& folder : options.folders) targets.push_back(SearchTarget::url(folder));
    targets.insert(targets.end(), options.cacheTargets.begin(), options.cacheTargets.end());
    return SearchLocation(std::move(targets));
}

int SessionSearch::run() {
    const SessionSearchOptions& options = state->options;
    const auto model = state->session->uiNodeModel();
    model->setCurrentColumn(*columnFromIdentifier(options.sortColumn));
    model->setCurrentColumnReversed(options.reverse);
    // Nothing is shown before the end, so the list is sorted once, then.
    model->setSortingDeferred(true);
    state->session->setSoundex(options.soundex);
    state->session->controlTextDidChange(options.query);
    state->session->doSearch();
    if (!state->session->currentSearchManager()) {
        complain("the query has nothing to search for: put a word before the colon");
        return ExitStatus::failed;
    }
    state->loop.run();
    (void)QueryStatisticsController::shared().save();
    if (state->progress->wasQueryInvalid()) {
        complain("a search source found the query unusable");
        return ExitStatus::failed;
    }

    const auto skipped = state->session->currentSearchManager()->progress().numberOfDirectoriesSkipped;
    if (skipped > 0 && ::isatty(STDERR_FILENO) == 1) {
        complain(std::to_string(skipped) + " folders couldn't be read and were skipped");
    }
    const UINode::NodeList& shown = model->displayItems();
    const bool limited = options.limit > 0 && shown.size() > static_cast<std::size_t>(options.limit);
    // The list of a million rows isn't copied for the sake of a limit that doesn't cut it.
    const UINode::NodeList firstRows =
        limited ? UINode::NodeList(shown.begin(), shown.begin() + options.limit) : UINode::NodeList();
    const UINode::NodeList& rows = limited ? firstRows : shown;
    // Made only for output that shows dates: its formatters take longer to
    // make than a selective search takes to run.
    std::optional<ResultDateText> dateText;
    const auto dates = [&dateText]() -> const ResultDateText& { return dateText ? *dateText : dateText.emplace(); };
    if (options.exportPath) {
        const Status written =
            ResultsExporter::exportResults(*exportFormatFor(*options.exportPath), rows, *options.exportPath, dates());
        if (!written) {
            complain(written.error().message);
            return ExitStatus::failed;
        }
        if (options.format.empty()) return rows.empty() ? ExitStatus::nothingFound : ExitStatus::found;
    }
    const bool onTerminal = Terminal::isTerminal(STDOUT_FILENO);
    if (rows.empty() && Terminal::isTerminal(STDERR_FILENO)) std::fputs("No results\n", stderr);
    std::string format = options.format;
    if (format.empty()) format = (onTerminal && !options.nulSeparated) ? "table" : "paths";
    if (format == "table") {
        if (rows.empty()) return ExitStatus::nothingFound;
        const std::string table = ResultsTable::render(rows, Terminal::outputWidth(), dates(),
                                                       Terminal::wantsColour(options.color, STDOUT_FILENO));
        std::fputs(table.c_str(), stdout);
    } else if (format == "json") {
        printJSONLines(rows);
    } else if (format == "csv" || format == "tsv") {
        const auto exportFormat = format == "csv" ? ResultsExporter::Format::csv : ResultsExporter::Format::text;
        std::fputs(ResultsExporter::exportedText(exportFormat, rows, dates()).c_str(), stdout);
    } else {
        printPaths(rows, options.nulSeparated ? '\0' : '\n', onTerminal && !options.nulSeparated);
    }
    std::fflush(stdout);
    return rows.empty() ? ExitStatus::nothingFound : ExitStatus::found;
}

}  // namespace quester::cli
