#include <gtest/gtest.h>

#include <set>
#include <string>

#include "commands/StandardCommandFactories.h"
#include "platform/FaultInjectingFileSystem.h"
#include "query/CollectingSearchDataSourceDelegate.h"
#include "query/CommandRecogniser.h"
#include "query/QueryContainer.h"
#include "query/SearchLocation.h"
#include "sources/FileSystemSearch.h"
#include "support/ActivityController.h"
#include "support/MainLoop.h"
#include "support/NotificationCenter.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using Paths = std::set<std::string>;

// A walk over a small tree through the fault-injecting file system.
class WalkFaultsTest : public ::testing::Test {
protected:
    WalkFaultsTest() {
        for (const char* file : {"a/match-1.txt", "a/match-gone.txt", "b/inner/match-2.txt", "b/match-3.txt",
                                 "c/match-4.txt", "c/other.txt"}) {
            tree.write(file, "x");
        }
    }

    // What a walk for `text` finds, relative to the tree, with hidden items shown.
    Paths walk(const std::string& text) { return walk(text, faulty, collector); }
    Paths walk(const std::string& text, FaultInjectingFileSystem& fileSystem,
               CollectingSearchDataSourceDelegate& into) {
        static const CommandRecogniser parser(standardCommandFactories());
        auto search = std::make_shared<FileSystemSearch>(&activities, nullptr, &fileSystem);
        search->search(QueryContainer(text, parser, SearchLocation::fromURLs({Url(tree.str(), true)})), into);
        Paths found;
        for (const auto& result : into.results()) found.insert(result.url.path().substr(tree.str().size() + 1));
        return found;
    }

    std::string at(const std::string& relative) const { return tree.str() + "/" + relative; }

    MainLoop loop;
    NotificationCenter center{loop};
    ActivityController activities{loop, center};
    testing::TempDir tree;
    FaultInjectingFileSystem faulty;
    CollectingSearchDataSourceDelegate collector{true};
};

// A file that vanishes between listing and status is no match; a folder that
// turns unreadable, fails mid-listing or whose disk goes away is skipped and
// counted, and the walk goes on.
TEST_F(WalkFaultsTest, FaultsSkipWhatTheyHitAndTheWalkGoesOn) {
    struct Case {
        std::function<void(FaultInjectingFileSystem&, const std::string& root)> inject;
        Paths found;
        int skipped;
    };
    const std::vector<Case> cases{
        {[](auto& fs, const std::string& root) { fs.makeVanish(root + "/a/match-gone.txt"); },
         {"a/match-1.txt", "b/inner/match-2.txt", "b/match-3.txt", "c/match-4.txt"},
         0},
        {[](auto& fs, const std::string& root) {
             fs.makeUnreadable(root + "/b");
             fs.breakListing(root + "/c");
         },
         {"a/match-1.txt", "a/match-gone.txt"},
         2},
        {[](auto& fs, const std::string& root) { fs.removeDisk(root); }, {}, 1},
    };
    for (std::size_t i = 0; i < cases.size(); ++i) {
        FaultInjectingFileSystem fileSystem;
        CollectingSearchDataSourceDelegate into{true};
        cases[i].inject(fileSystem, tree.str());
        EXPECT_EQ(walk("match", fileSystem, into), cases[i].found) << "case " << i;
        EXPECT_EQ(into.skippedDirectories(), cases[i].skipped) << "case " << i;
    }
}

TEST_F(WalkFaultsTest, PseudoFileSystemsAreNeverWalkedAndOtherDisksOnlyAsTheirOwn) {
    tree.write("proc/match-pseudo.txt", "x");
    tree.write("run-user/match-runtime.txt", "x");
    tree.write("disk2/match-disk.txt", "x");
    faulty.setMountTable(
        MountTable({MountEntry{1, 0, "/", "/dev/vda", "ext4", "rw"}, MountEntry{2, 1, at("proc"), "proc", "proc", "rw"},
                    MountEntry{3, 1, at("run-user"), "none", "overlay", "rw"},
                    MountEntry{4, 1, at("disk2"), "/dev/sdb1", "ext4", "rw"}}));
    const Paths found = walk("match");
    EXPECT_EQ(found, (Paths{"a/match-1.txt", "a/match-gone.txt", "b/inner/match-2.txt", "b/match-3.txt",
                            "c/match-4.txt", "disk2/match-disk.txt"}));
    EXPECT_EQ(collector.results().size(), found.size()) << "each item once";
}

TEST_F(WalkFaultsTest, FoldersBeyondTheDescriptorsHeldOpenAreOpenedByPath) {
    const int folders = FileSystemSearch::maxHeldFolders + 100;
    for (int i = 0; i < folders; ++i) tree.write("wide/f" + std::to_string(i) + "/sub/needle", "x");
    EXPECT_EQ(walk("needle").size(), static_cast<std::size_t>(folders));
}

}  // namespace
}  // namespace quester
