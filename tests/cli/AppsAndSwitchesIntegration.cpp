#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>

#include "support/PathText.h"
#include "testing/QuesterProcess.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using Paths = std::set<std::string>;

// The application folders the command adds to the desktop's own: they may
// hold real entries on the machine that runs the tests.
bool isSandboxedPackageEntry(const std::string& path) {
    return isStrictlyBelow(path, "/var/lib/flatpak/exports/share/applications") ||
           isStrictlyBelow(path, "/var/lib/snapd/desktop/applications");
}

std::string entry(const std::string& name, const std::string& extra = "") {
    return "[Desktop Entry]\nType=Application\nName=" + name + "\nExec=" + name + "\n" + extra;
}

// A machine in a folder: a home with the user's own applications below
// .local, a system data folder with more, and a tree of documents with
// invisible items. The command runs with the desktop's folder variables
// pointing there.
class AppsAndSwitchesTest : public ::testing::Test {
protected:
    AppsAndSwitchesTest() {
        machine.write("home/.local/share/applications/frobnicator.desktop", entry("Frobnicator"));
        machine.write("home/.local/share/applications/viewer.desktop", entry("Viewer", "Hidden=true\n"));
        machine.write("share/applications/viewer.desktop", entry("Viewer"));
        machine.write("share/applications/chess.desktop", entry("Chess", "Categories=Game;BoardGame;\n"));
        machine.write("share/applications/tools/calculator.desktop", entry("Calculator"));
        machine.write("share/applications/opener.desktop", entry("Opener", "NoDisplay=true\n"));
        machine.write("share/applications/broken.desktop", "[Desktop Entry\nType=Application\n");
        machine.write("share/applications/frobnicator-notes.txt");

        machine.write("home/docs/plan.txt");
        machine.write("home/docs/hidden-agenda.txt");
        machine.write("home/docs/.drafts/hidden-draft.txt");
        machine.write("home/docs/archive/2019/old.txt");
        machine.write("home/docs/.hidden-settings");
    }

    std::string at(const std::string& relative) const { return machine.str() + "/" + relative; }

    // `quester search QUERY --in FOLDER --format paths`; the paths it printed.
    Paths search(const std::string& query, const std::string& folder) const {
        using testing::QuesterProcess;
        const std::string environment = "XDG_DATA_HOME=" + QuesterProcess::quoted(at("home/.local/share")) +
                                        " XDG_DATA_DIRS=" + QuesterProcess::quoted(at("share") + ":" + at("nowhere")) +
                                        " ";
        auto run = QuesterProcess::run(QUESTER_BINARY, {"search", query, "--in", folder, "--format", "paths"}, scratch,
                                       environment);
        Paths found;
        std::istringstream lines(run.out);
        for (std::string line; std::getline(lines, line);) found.insert(line);
        EXPECT_EQ(run.status, found.empty() ? 1 : 0) << query << ": " << run.err;
        return found;
    }

    // What a listing of applications printed from the fixture; anything else
    // must be a real entry of the sandboxed package folders.
    Paths fixtureApps(const std::string& query) const {
        Paths fromFixture;
        for (const auto& path : search(query, at("home/docs"))) {
            if (isStrictlyBelow(path, machine.str())) {
                fromFixture.insert(path);
            } else {
                EXPECT_TRUE(isSandboxedPackageEntry(path)) << path;
            }
        }
        return fromFixture;
    }

    testing::TempDir machine;
    testing::TempDir scratch;
};

TEST_F(AppsAndSwitchesTest, ShowAppsAndGamesListTheApplicationsOfEveryFolderWhateverTheLocation) {
    EXPECT_EQ(fixtureApps(": show apps"),
              (Paths{at("home/.local/share/applications/frobnicator.desktop"), at("share/applications/chess.desktop"),
                     at("share/applications/tools/calculator.desktop")}));
    EXPECT_EQ(fixtureApps("calc : show apps"), (Paths{at("share/applications/tools/calculator.desktop")}));
    EXPECT_EQ(fixtureApps(": show games"), (Paths{at("share/applications/chess.desktop")}));
}

TEST_F(AppsAndSwitchesTest, AnOrdinaryQueryFindsAnApplicationByNameInsideItsLocation) {
    // The walk never enters .local; the application list brings the entry.
    EXPECT_EQ(search("frobnicator", at("home")), (Paths{at("home/.local/share/applications/frobnicator.desktop")}));
    // The system's folder lies outside the home: its text file isn't walked
    // and its application isn't offered there.
    EXPECT_EQ(search("chess", at("home")), Paths{});
    EXPECT_EQ(search("frobnicator", at("share")), (Paths{at("share/applications/frobnicator-notes.txt")}));
}

TEST_F(AppsAndSwitchesTest, ShowAllFilesListsTheWholeTreeAndShowInvisibleItemsAddsWhatIsHidden) {
    const Paths visible{at("home/docs/plan.txt"), at("home/docs/hidden-agenda.txt"), at("home/docs/archive"),
                        at("home/docs/archive/2019"), at("home/docs/archive/2019/old.txt")};
    EXPECT_EQ(search(": show all files", at("home/docs")), visible);

    Paths everything = visible;
    everything.insert(
        {at("home/docs/.drafts"), at("home/docs/.drafts/hidden-draft.txt"), at("home/docs/.hidden-settings")});
    EXPECT_EQ(search(": show all files show invisible items", at("home/docs")), everything);
    EXPECT_EQ(search("hidden : show invisible items", at("home/docs")),
              (Paths{at("home/docs/hidden-agenda.txt"), at("home/docs/.drafts/hidden-draft.txt"),
                     at("home/docs/.hidden-settings")}));
}

}  // namespace
}  // namespace quester
