#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "commands/StandardCommandFactories.h"
#include "platform/FSUtilities.h"
#include "query/CollectingSearchDataSourceDelegate.h"
#include "query/CommandRecogniser.h"
#include "query/QueryContainer.h"
#include "sources/ShowAppsCommandDataSource.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

constexpr const char* kUser = "home/.local/share/applications";
constexpr const char* kSystem = "usr/share/applications";

std::string entry(const std::string& name, const std::string& extra = "") {
    return "[Desktop Entry]\nType=Application\nName=" + name + "\nExec=" + name + "\n" + extra;
}

// A user's folder below a dot folder, as ~/.local/share/applications is,
// before a folder that doesn't exist and a system folder.
class ShowAppsCommandDataSourceTest : public ::testing::Test {
protected:
    ShowAppsCommandDataSourceTest() {
        write(kUser, "editor.desktop", entry("My Editor"));
        write(kUser, "viewer.desktop", entry("Viewer", "Hidden=true\n"));
        write(kUser, "terminal.desktop", "[Desktop Entry]\nName=Terminal\n");
        write(kUser, ".draft.desktop", entry("Draft"));

        write(kSystem, "editor.desktop", entry("System Editor"));
        write(kSystem, "viewer.desktop", entry("Viewer"));
        write(kSystem, "terminal.desktop", entry("Terminal"));
        write(kSystem, "chess.desktop", entry("Chess", "Categories=Game;BoardGame;\n"));
        write(kSystem, "opener.desktop", entry("Opener", "NoDisplay=true\n"));
        write(kSystem, "website.desktop", "[Desktop Entry]\nType=Link\nName=Site\nURL=https://example.org\n");
        write(kSystem, "readme.txt", entry("Not an entry"));
        write(kSystem, "kde/calculator.desktop", entry("Calculator", "Categories=Utility;\n"));
        write(kSystem, ".cache/stale.desktop", entry("Stale"));
        std::filesystem::create_symlink(machine.write("opt/snake.entry", entry("Snake", "Categories=Game;\n")),
                                        at(kSystem, "snake.desktop"));
    }

    void write(const char* folder, const std::string& name, const std::string& contents) {
        (void)machine.write(std::string(folder) + "/" + name, contents);
    }
    std::string at(const char* folder, const std::string& name) const {
        return machine.str() + "/" + folder + "/" + name;
    }
    std::vector<std::string> folders() const {
        return {machine.str() + "/" + kUser, machine.str() + "/nowhere/applications", machine.str() + "/" + kSystem};
    }

    std::shared_ptr<ShowAppsCommandDataSource> makeSource() {
        PlatformProfile profile = PlatformProfile::linux();
        profile.applicationFolders = folders();
        utilities = std::make_unique<FSUtilities>(profile);
        return std::make_shared<ShowAppsCommandDataSource>(folders(), utilities.get());
    }

    static std::vector<SearchResult> search(ShowAppsCommandDataSource& source, const std::string& text,
                                            std::optional<std::string> location = std::string("/"),
                                            std::function<bool()> stop = {}) {
        CommandRecogniser parser(standardCommandFactories());
        std::optional<SearchLocation> where;
        if (location) where = SearchLocation::fromURLs({Url(*location, true)});
        QueryContainer query(text, parser, where);
        CollectingSearchDataSourceDelegate handler(false, std::move(stop));
        source.search(query, handler);
        return handler.results();
    }

    static std::set<std::string> pathsOf(const std::vector<SearchResult>& results) {
        std::set<std::string> paths;
        for (const auto& result : results) paths.insert(result.url.path());
        return paths;
    }

    std::set<std::string> allApps() const {
        return {at(kUser, "editor.desktop"), at(kSystem, "terminal.desktop"), at(kSystem, "chess.desktop"),
                at(kSystem, "kde/calculator.desktop"), at(kSystem, "snake.desktop")};
    }

    testing::TempDir machine;
    std::unique_ptr<FSUtilities> utilities;
};

TEST_F(ShowAppsCommandDataSourceTest, TheFirstFolderDecidesAnIdAndOnlyListedApplicationsCount) {
    auto source = makeSource();
    auto apps = source->appsInFolders();
    std::set<std::string> paths;
    for (const auto& app : apps) {
        paths.insert(app.result.url.path());
        EXPECT_GT(app.result.size, 0u) << "read through the link: " << app.result.url.path();
    }
    // The user's editor replaces the system's and the user's Hidden viewer
    // removes it; the user's broken terminal decides nothing, so the system's
    // counts. NoDisplay, Link, non-entries and dot items are left out.
    EXPECT_EQ(paths, allApps());
    EXPECT_EQ(apps.front().entry.name, "My Editor");
}

TEST_F(ShowAppsCommandDataSourceTest, OrdinarySearchesAreOfferedTheStartupListWithinTheirLocation) {
    auto source = makeSource();
    source->startup();
    auto offered = search(*source, "anything");
    EXPECT_EQ(pathsOf(offered), allApps());
    for (const auto& result : offered) EXPECT_FALSE(result.ignoreSearchLocation) << "the pipeline judges the location";

    // A folder written after start-up shows only in a fresh listing.
    write(kSystem, "late.desktop", entry("Late"));
    EXPECT_EQ(pathsOf(search(*source, "late")).count(at(kSystem, "late.desktop")), 0u);
    EXPECT_EQ(pathsOf(search(*source, ": show apps")).count(at(kSystem, "late.desktop")), 1u);
    // ...and then among what ordinary searches are offered.
    EXPECT_EQ(pathsOf(search(*source, "late")).count(at(kSystem, "late.desktop")), 1u);

    EXPECT_TRUE(search(*source, "anything", std::nullopt).empty()) << "no location, nothing";
}

// The listings themselves are checked end to end through the command line.
TEST_F(ShowAppsCommandDataSourceTest, ListingsSkipTheLocationAndTestNamesOnlyWhenAlone) {
    auto source = makeSource();
    auto apps = search(*source, ": show apps", "/nowhere/else");
    EXPECT_EQ(pathsOf(apps), allApps());
    for (const auto& result : apps) EXPECT_TRUE(result.ignoreSearchLocation);

    EXPECT_TRUE(search(*source, "calc : show games").empty());
    // With a second command the words are the pipeline's business.
    EXPECT_EQ(pathsOf(search(*source, "calc : show apps is file")), allApps());
}

TEST_F(ShowAppsCommandDataSourceTest, ShowAppsCommandsSupplyTheSharedList) {
    auto shared = ShowAppsCommandDataSource::shared();
    CommandRecogniser parser(standardCommandFactories());
    auto supplied = QueryContainer("chess : show games", parser).suppliedDataSources();
    EXPECT_EQ(supplied, decltype(supplied){shared});
}

TEST_F(ShowAppsCommandDataSourceTest, NamesForCompletionAreFileNamesThenDisplayNamesOnce) {
    auto source = makeSource();
    source->waitForStartup();
    (void)search(*source, "chess : show apps");
    auto names = source->namesOfAllApps();
    std::set<std::string> unique(names.begin(), names.end());
    EXPECT_EQ(unique.size(), names.size()) << "each name once";
    EXPECT_EQ(unique,
              (std::set<std::string>{"editor.desktop", "terminal.desktop", "chess.desktop", "calculator.desktop",
                                     "snake.desktop", "My Editor", "Terminal", "Chess", "Calculator", "Snake"}));
    EXPECT_EQ(names.front(), "editor.desktop");
}

TEST_F(ShowAppsCommandDataSourceTest, AStoppedSearchSuppliesNothing) {
    auto source = makeSource();
    EXPECT_TRUE(search(*source, ": show apps", "/", [] { return true; }).empty());
    source->searchShouldStop();
    EXPECT_EQ(pathsOf(search(*source, ": show apps")), allApps()) << "stopping one search stops no other";
}

}  // namespace
}  // namespace quester
