#include "SavedCommand.h"

#include <CLI/CLI.hpp>

#include <unistd.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "results/DisplayText.h"
#include "stores/SavedSearches.h"
#include "support/Uuid.h"

#include "Complain.h"
#include "ExitStatus.h"
#include "SearchCommand.h"
#include "Terminal.h"
#include "TypedPath.h"

namespace quester::cli {
namespace {

struct SavedOptions {
    std::string name;
    std::string query;
    std::vector<std::string> folders;
    std::string location;
    bool hidden = false;
    std::string format = "table";
    SearchOptions search;
};

int addSaved(const SavedOptions& options) {
    SavedSearches saved;
    if (saved.itemNamed(options.name)) {
        complain("a saved search is named '" + options.name + "' already; remove it first or choose another name");
        return ExitStatus::failed;
    }
    SavedSearchItem item;
    item.id = Uuid::random().toString();
    item.displayName = options.name;
    item.queryString = options.query;
    item.searchHiddenLocations = options.hidden;
    item.location = options.location;
    for (const auto& folder : options.folders) item.paths.push_back(absoluteTypedPath(folder));
    if (Status stored = saved.save(item); !stored) {
        complain("cannot save the search: " + stored.error().message);
        return ExitStatus::failed;
    }
    return ExitStatus::found;
}

std::string whereText(const SavedSearchItem& item) {
    if (!item.paths.empty()) {
        std::string folders;
        for (const auto& path : item.paths) folders += (folders.empty() ? "" : ", ") + path;
        return "in " + folders;
    }
    return item.location.empty() ? "in home" : "at " + item.location;
}

int listSaved(const SavedOptions& options) {
    const auto items = SavedSearches().sortedByName();
    const bool onTerminal = Terminal::isTerminal(STDOUT_FILENO);
    for (const auto& item : items) {
        std::string line;
        if (options.format == "json") {
            line = item.toStored().dump();
        } else {
            line = fmt::format("{}: {}  ({}{})", item.displayName, item.queryString, whereText(item),
                               item.searchHiddenLocations ? ", hidden items too" : "");
            if (onTerminal) line = terminalSafeText(line);
        }
        std::printf("%s\n", line.c_str());
    }
    return items.empty() ? ExitStatus::nothingFound : ExitStatus::found;
}

// The saved query, location and hidden switch, under the options given now;
// folders or locations given now replace the saved ones.
int runSaved(const SavedOptions& options) {
    const auto item = SavedSearches().itemNamed(options.name);
    if (!item) {
        complain("no saved search named '" + options.name + "' (see 'quester saved list')");
        return ExitStatus::failed;
    }
    SearchOptions search = options.search;
    search.session.query = item->queryString;
    search.session.hidden = search.session.hidden || item->searchHiddenLocations;
    if (search.locations.empty() && search.locationNames.empty()) {
        search.locations = item->paths;
        if (item->paths.empty() && !item->location.empty()) search.locationNames.push_back(item->location);
    }
    return runSearch(search);
}

int removeSaved(const SavedOptions& options) {
    SavedSearches saved;
    const auto item = saved.itemNamed(options.name);
    if (!item) {
        complain("no saved search named '" + options.name + "' (see 'quester saved list')");
        return ExitStatus::failed;
    }
    auto removed = saved.remove(item->id);
    if (!removed) {
        complain("cannot remove the saved search: " + removed.error().message);
        return ExitStatus::failed;
    }
    return ExitStatus::found;
}

}  // namespace

void addSavedCommand(CLI::App& app, int& exitStatus) {
    auto options = std::make_shared<SavedOptions>();
    CLI::App* saved = app.add_subcommand("saved", "Searches kept under a name");
    saved->require_subcommand(1);

    CLI::App* add = saved->add_subcommand("add", "Keep a search under a name");
    add->add_option("name", options->name, "The name")->required();
    add->add_option("query", options->query, "The query, as for 'quester search'")->required();
    auto* in =
        add->add_option("--in", options->folders, "A folder it searches; repeat for more")->allow_extra_args(false);
    add->add_option("--location", options->location, "A group, favourite folder or preset it searches")->excludes(in);
    add->add_flag("--hidden", options->hidden, "Include hidden, system and in-package items");
    add->callback([options, &exitStatus] { exitStatus = addSaved(*options); });

    CLI::App* list = saved->add_subcommand("list", "The saved searches by name");
    list->add_option("--format", options->format, "Output: table or json (one record a line)")
        ->transform(CLI::IsMember({"table", "json"}, CLI::ignore_case));
    list->callback([options, &exitStatus] { exitStatus = listSaved(*options); });

    CLI::App* run = saved->add_subcommand("run", "Run a saved search; takes the options of 'quester search'");
    run->footer(exitStatusHelp);
    run->add_option("name", options->name, "The saved search's name")->required();
    addSearchOptions(*run, options->search);
    run->callback([options, &exitStatus] { exitStatus = runSaved(*options); });

    CLI::App* remove = saved->add_subcommand("remove", "Forget a saved search");
    remove->add_option("name", options->name, "The saved search's name")->required();
    remove->callback([options, &exitStatus] { exitStatus = removeSaved(*options); });
}

}  // namespace quester::cli
