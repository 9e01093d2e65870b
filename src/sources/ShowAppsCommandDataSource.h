#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "commands/ShowAppsCommand.h"
#include "platform/DesktopEntry.h"
#include "query/SearchDataSource.h"
#include "query/SearchResult.h"
#include "support/Blocker.h"
#include "support/Locked.h"
#include "support/OperationQueue.h"

namespace quester {

class FSUtilities;

// The applications of the machine, read from the application folders. Linux
// has no system index of applications, so the folders are all there is: an
// application is a ".desktop" entry of type Application, neither NoDisplay nor
// Hidden, in an application folder or a sub-folder of one. The first folder
// that has an entry of a given id (its path inside the folder, "/" read as
// "-") decides for that id, so the user's own entry hides or replaces the
// system's.
//
// The result of an application is its desktop file: the path a person can
// open, rename or export, found by its file name as any file is. A result
// never stands for the program the entry starts.
//
// Two uses. Every ordinary search is offered the applications found at
// start-up, and the search's own filters and location decide on them. A
// "show apps" or "show games" query reads the folders anew and lists what
// they hold, wherever the query's location is.
//
// One shared object serves every search at once, each on its own thread:
// the lists sit in `Locked` holders, and a search stops by its own handler's
// `shouldStop`, never by a flag of this object.
class ShowAppsCommandDataSource final : public SearchDataSource {
public:
    // One application: the result searches hand out, and what its entry says.
    struct FoundApp {
        SearchResult result;
        DesktopEntry entry;
    };

    // `applicationFolders` in order of precedence. `fsUtilities` (the
    // process-wide one when null) must outlive the source.
    explicit ShowAppsCommandDataSource(std::vector<std::string> applicationFolders, FSUtilities* fsUtilities = nullptr);
    ShowAppsCommandDataSource(const ShowAppsCommandDataSource&) = delete;
    ShowAppsCommandDataSource& operator=(const ShowAppsCommandDataSource&) = delete;

    // Made on first use with the platform's application folders; it enters
    // itself as the source of `ShowAppsCommand`. Making it starts no thread,
    // so a program may make it before it sets up its signal handling.
    static std::shared_ptr<ShowAppsCommandDataSource> shared();

    // Reads the folders into `contentsOfAppsFolders` on a background
    // operation, whose thread starts here. Only the first call does anything;
    // the first search that is offered the list makes it if no one has. Any
    // thread.
    void startup();
    // Blocks until the start-up's list is there, beginning it if need be.
    void waitForStartup();

    std::string debugDescription() const override { return "ShowAppsCommandDataSource"; }
    SearchResultSupplier type() const override { return SearchResultSupplier::showAppsCmd; }
    // Nothing without a location. A query with a remembered folder gets
    // nothing; one with a ShowAppsCommand gets the list of applications or
    // games (by name when it has words and no other command); any other query
    // is offered the applications known so far, after the start-up if it is
    // still running.
    void search(const QueryContainer& query, SearchDataSourceDelegate& handler) override;
    // Each search stops by its own handler: a flag here would stop the others.
    void searchShouldStop() override {}

    // The file names, then the display names of the applications known so
    // far, each once, for name completion.
    std::vector<std::string> namesOfAllApps() const;

    // The listed applications of the folders, in order; stops early when
    // `shouldStop` says so. A folder that can't be read gives none, and an
    // entry that can't be read or parsed is left out.
    std::vector<FoundApp> appsInFolders(const std::function<bool()>& shouldStop = {}) const;

private:
    void searchFolderForApps(const std::string& folder, std::set<std::string>& decidedIds,
                             std::vector<FoundApp>& apps) const;
    void addEntry(const std::string& path, const std::string& id, std::set<std::string>& decidedIds,
                  std::vector<FoundApp>& apps) const;
    bool passesLocationTest(const std::string& path) const;
    void offerKnownApps(SearchDataSourceDelegate& handler);
    void listApps(const QueryContainer& query, ShowAppsCommand::Category category, SearchDataSourceDelegate& handler);

    const std::vector<std::string> applicationFolders;
    FSUtilities& fsUtilities;
    Locked<std::vector<FoundApp>> contentsOfAppsFolders;
    Locked<std::vector<FoundApp>> lastSearchResults;
    std::atomic<bool> startupBegun{false};
    Blocker startupFinished;
    // Declared last: destroyed first, waiting for the start-up that uses the rest.
    SerialQueue startupQueue;
};

}  // namespace quester
