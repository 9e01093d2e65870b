#include "sources/ShowAppsCommandDataSource.h"

#include <deque>
#include <utility>

#include "commands/KnownDirectoriesCommand.h"
#include "platform/FSUtilities.h"
#include "platform/PlatformProfile.h"
#include "query/QueryContainer.h"
#include "query/SearchDataSourceDelegate.h"
#include "sources/DirectoryIterator.h"
#include "support/LogFunc.h"
#include "support/PathText.h"

namespace quester {
namespace {

constexpr std::string_view kEntryExtension = "desktop";

std::vector<SearchResult> resultsOf(const std::vector<ShowAppsCommandDataSource::FoundApp>& apps) {
    std::vector<SearchResult> results;
    results.reserve(apps.size());
    for (const auto& app : apps) results.push_back(app.result);
    return results;
}

bool hasLocationToSearch(const QueryContainer& query) {
    return query.whereLocation() && !query.whereLocation()->locationURLs().empty();
}

}  // namespace

ShowAppsCommandDataSource::ShowAppsCommandDataSource(std::vector<std::string> applicationFolders,
                                                     FSUtilities* fsUtilities)
    : applicationFolders(std::move(applicationFolders)),
      fsUtilities(fsUtilities ? *fsUtilities : FSUtilities::shared()) {}

std::shared_ptr<ShowAppsCommandDataSource> ShowAppsCommandDataSource::shared() {
    // Never destroyed: searches on other threads may still hold it at exit.
    static auto* instance = [] {
        auto* made = new std::shared_ptr<ShowAppsCommandDataSource>(
            std::make_shared<ShowAppsCommandDataSource>(PlatformProfile::current()->applicationFolders));
        ShowAppsCommand::setSharedDataSource(*made);
        return made;
    }();
    return *instance;
}

void ShowAppsCommandDataSource::startup() {
    if (startupBegun.exchange(true)) return;
    startupQueue.addOperation([this] {
        contentsOfAppsFolders.setValue(appsInFolders());
        LOG("applications found: " + std::to_string(contentsOfAppsFolders.value().size()));
        startupFinished.release();
    });
}

void ShowAppsCommandDataSource::waitForStartup() {
    startup();
    startupFinished.wait();
}

void ShowAppsCommandDataSource::search(const QueryContainer& query, SearchDataSourceDelegate& handler) {
    if (!hasLocationToSearch(query) || query.findCommand<KnownDirectoriesCommand>()) return;
    auto command = query.findCommand<ShowAppsCommand>();
    if (command) {
        listApps(query, command->category, handler);
    } else {
        offerKnownApps(handler);
    }
}

// The pipeline judges them like any candidate: name, commands and location.
void ShowAppsCommandDataSource::offerKnownApps(SearchDataSourceDelegate& handler) {
    waitForStartup();
    std::vector<SearchResult> offered = resultsOf(contentsOfAppsFolders.value());
    for (auto& result : resultsOf(lastSearchResults.value())) offered.push_back(std::move(result));
    handler.supplySearchResults(std::move(offered), *this);
}

// The list is of the machine: its results skip the query's location, since
// they passed the location test of applications here.
void ShowAppsCommandDataSource::listApps(const QueryContainer& query, ShowAppsCommand::Category category,
                                         SearchDataSourceDelegate& handler) {
    const bool isApps = category == ShowAppsCommand::Category::apps;
    if (isApps) lastSearchResults.setValue({});
    const bool testsName = query.commandsFoundInQueryForDisplay().size() == 1;
    std::vector<SearchResult> listed;
    for (auto& app : appsInFolders([&handler] { return handler.shouldStop(); })) {
        if (testsName &&
            !query.fsItemNameStringIncludesWordsFromQuery(lastPathComponent(app.result.url.path()), false)) {
            continue;
        }
        if (!isApps && !app.entry.isGame()) continue;
        SearchResult result = app.result;
        result.ignoreSearchLocation = true;
        listed.push_back(std::move(result));
        if (isApps) lastSearchResults.access([&](auto& last) { last.push_back(std::move(app)); });
    }
    if (!handler.shouldStop()) handler.supplySearchResults(std::move(listed), *this);
}

std::vector<ShowAppsCommandDataSource::FoundApp> ShowAppsCommandDataSource::appsInFolders(
    const std::function<bool()>& shouldStop) const {
    std::vector<FoundApp> apps;
    std::set<std::string> decidedIds;
    for (const auto& folder : applicationFolders) {
        if (shouldStop && shouldStop()) break;
        searchFolderForApps(folder, decidedIds, apps);
    }
    return apps;
}

// The folder and its visible sub-folders, breadth first; an entry of a
// sub-folder has the sub-folder's name and "-" in front of its id.
void ShowAppsCommandDataSource::searchFolderForApps(const std::string& folder, std::set<std::string>& decidedIds,
                                                    std::vector<FoundApp>& apps) const {
    std::deque<std::pair<std::string, std::string>> pending{{folder, ""}};
    while (!pending.empty()) {
        auto [path, idPrefix] = std::move(pending.front());
        pending.pop_front();
        // Desktop entries are often symbolic links (all of the sandboxed
        // packages' are), which this listing keeps, as files.
        auto contents = DirectoryIterator::urlContentsOfDirectory(path);
        for (const auto& file : contents.files) {
            std::string name = lastPathComponent(file);
            if (name.front() == '.' || pathExtension(name) != kEntryExtension) continue;
            addEntry(file, idPrefix + name, decidedIds, apps);
        }
        for (auto& directory : contents.directories) {
            std::string name = lastPathComponent(directory);
            if (name.front() != '.') pending.emplace_back(std::move(directory), idPrefix + name + "-");
        }
    }
}

// An entry that can be read decides its id, also when it isn't listed: a
// Hidden or NoDisplay entry of the user hides the system's entry of that id.
void ShowAppsCommandDataSource::addEntry(const std::string& path, const std::string& id,
                                         std::set<std::string>& decidedIds, std::vector<FoundApp>& apps) const {
    if (decidedIds.count(id)) return;
    auto entry = DesktopEntry::read(path);
    if (!entry) {
        LOG(entry.error().description());
        return;
    }
    decidedIds.insert(id);
    if (!entry->isListedApplication() || !passesLocationTest(path)) return;
    apps.push_back(FoundApp{SearchResult::forFile(SearchResultSupplier::showAppsCmd, path, false), std::move(*entry)});
}

// Every walked path lies in an application folder, never a system path, so
// only what lies below it can fail: a hidden or in-package part.
bool ShowAppsCommandDataSource::passesLocationTest(const std::string& path) const {
    return !fsUtilities.isInsideOSDirectory(path) && !fsUtilities.isInvisibleOrInsidePackage(path);
}

std::vector<std::string> ShowAppsCommandDataSource::namesOfAllApps() const {
    std::vector<FoundApp> apps = contentsOfAppsFolders.value();
    for (auto& app : lastSearchResults.value()) apps.push_back(std::move(app));
    std::vector<std::string> names;
    std::set<std::string> seen;
    auto add = [&](std::string name) {
        if (seen.insert(name).second) names.push_back(std::move(name));
    };
    for (const auto& app : apps) add(lastPathComponent(app.result.url.path()));
    for (const auto& app : apps) add(app.entry.name);
    return names;
}

}  // namespace quester
