// Prints how long a name search takes to bring its first result to the
// search manager's delegate, in seconds: the time a person waits before the
// list begins to fill. The disk caches are those of $QUESTER_HOME.
//
//   first-result FOLDER WORD walk|caches|both
//
// "walk" walks FOLDER alone, "caches" reads the caches that hold FOLDER or lie
// in it, "both" runs the two side by side as a search does.
#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <string>

#include "cache/ContentIndexManager.h"
#include "cache/ContentIndexSearch.h"
#include "commands/StandardCommandFactories.h"
#include "query/CommandRecogniser.h"
#include "query/SearchManager.h"
#include "sources/FileSystemSearch.h"
#include "stores/Preferences.h"
#include "support/AppDirectories.h"

namespace {

using namespace quester;
using Clock = std::chrono::steady_clock;

// Notes the moment of the first result, and the end of the search.
class FirstResultDelegate final : public SearchManagerDelegate {
public:
    void searchManagerIsBeginingSearches(const QueryContainer&) override { started = Clock::now(); }
    void searchManagerFoundItems(const std::vector<SearchResult>&, const QueryContainer&) override {
        if (!firstResult) firstResult = Clock::now();
    }
    void searchManagerHasFinishedAllSearches(const QueryContainer&) override { finished = true; }
    void searchManagerProgress(const SearchManagerProgress&) override {}
    void searchingInsideFile(const std::string&, bool, float) override {}
    void searchInvalidQuery() override {}

    bool hasFirstResult() const { return firstResult.has_value(); }
    bool hasFinished() const { return finished; }
    // Seconds to the first result; -1 when nothing was found.
    double seconds() const { return firstResult ? std::chrono::duration<double>(*firstResult - started).count() : -1; }

private:
    Clock::time_point started;
    bool finished = false;
    std::optional<Clock::time_point> firstResult;
};

SearchManager::DataSources sourcesFor(const std::string& mode, const ContentIndexManager& caches,
                                      const Preferences& preferences) {
    SearchManager::DataSources sources;
    std::vector<ContentIndex*> known;
    for (const auto& cache : caches.indexes()) known.push_back(cache.get());
    if (mode != "walk") sources.push_back(std::make_shared<ContentIndexSearch>(known, &preferences));
    if (mode != "caches") sources.push_back(std::make_shared<FileSystemSearch>());
    return sources;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4 || (std::strcmp(argv[3], "walk") && std::strcmp(argv[3], "caches") && std::strcmp(argv[3], "both"))) {
        std::fprintf(stderr, "usage: first-result FOLDER WORD walk|caches|both\n");
        return 2;
    }
    Result<std::string> folder = AppDirectories::applicationSupportDirectory();
    if (!folder) return 2;
    ContentIndexManager caches(Preferences::shared(), *folder);
    caches.load();
    Preferences preferences("");
    (void)preferences.setValue("diskCatalogCaching", true);
    CommandRecogniser parser(standardCommandFactories());
    QueryContainer query(argv[2], parser, SearchLocation::fromURLs({Url(argv[1], true)}));
    MainLoop& loop = MainLoop::shared();
    auto delegate = std::make_shared<FirstResultDelegate>();
    SearchManager::Environment environment;
    environment.fileSystemSearchDataSources = sourcesFor(argv[3], caches, preferences);
    environment.mainLoop = &loop;
    auto manager = SearchManager::create(query, true, delegate, std::move(environment));
    manager->search();
    (void)loop.runUntil([&] { return delegate->hasFirstResult() || delegate->hasFinished(); }, std::chrono::minutes(5));
    // The rest of the search isn't wanted; its threads end before the process does.
    manager->stop();
    (void)loop.runUntil([&] { return delegate->hasFinished(); }, std::chrono::minutes(1));
    std::printf("%.3f\n", delegate->seconds());
    return delegate->seconds() < 0 ? 1 : 0;
}
