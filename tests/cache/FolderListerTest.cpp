#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

#include "cache/FolderLister.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using testing::TempDir;

class FolderListerTest : public ::testing::Test {
protected:
    FolderListerTest() {
        for (int folder = 0; folder < 100; ++folder)
            for (int file = 0; file < 3; ++file)
                tree.write("d" + std::to_string(folder) + "/f" + std::to_string(file) + ".txt", "abc");
        tree.write("d0/bad:name.txt");
        tree.mkdir("d0/sub");
    }
    static std::set<std::string> names(const FolderLister::Listing& listing) {
        std::set<std::string> found;
        for (const FSItemAndAttrs& item : listing) found.insert(item.name);
        return found;
    }
    std::string folder(int number) const { return tree.str() + "/d" + std::to_string(number); }
    FileSystemId rootDevice() const { return FileSystem::real().status(tree.str())->device; }

    TempDir tree;
};

TEST_F(FolderListerTest, AListingMadeAheadEqualsOneMadeOnTheSpotAndStatsFilesOnlyWhenAsked) {
    FolderLister lister(FileSystem::real(), rootDevice());
    lister.prefetch(folder(0), true);
    FolderLister::Listing ahead = lister.list(folder(0), true);
    FolderLister::Listing onTheSpot = lister.list(folder(0), true);
    EXPECT_EQ(names(ahead), names(onTheSpot));
    EXPECT_EQ(names(ahead), (std::set<std::string>{"f0.txt", "f1.txt", "f2.txt", "sub"}));
    auto file = std::find_if(ahead.begin(), ahead.end(), [](const auto& item) { return item.name == "f1.txt"; });
    EXPECT_TRUE(file->attributesRead);
    EXPECT_EQ(file->fileSize, 3u);
    EXPECT_EQ(file->fullPath, folder(0) + "/f1.txt");

    FolderLister::Listing namesOnly = lister.list(folder(0), false);
    auto bare =
        std::find_if(namesOnly.begin(), namesOnly.end(), [](const auto& item) { return item.name == "f1.txt"; });
    auto sub = std::find_if(namesOnly.begin(), namesOnly.end(), [](const auto& item) { return item.name == "sub"; });
    EXPECT_FALSE(bare->attributesRead);
    EXPECT_TRUE(sub->isDirectory && sub->attributesRead);  // folders are always statted
}

// More folders asked for ahead than the lister keeps, taken in the order a
// build pops them, with some asked for with the other attribute choice: each
// comes back whole, and nothing waits for ever.
TEST_F(FolderListerTest, EveryFolderAskedForAheadComesBackWhateverTheOrder) {
    FolderLister lister(FileSystem::real(), rootDevice());
    for (int number = 0; number < 100; ++number) lister.prefetch(folder(number), number % 2 == 0);
    for (int number = 99; number >= 0; --number) {
        bool attributes = number % 7 == 0 ? number % 2 != 0 : number % 2 == 0;
        FolderLister::Listing listing = lister.list(folder(number), attributes);
        EXPECT_GE(listing.size(), 3u) << number;
    }
}

TEST_F(FolderListerTest, AFolderThatCannotBeReadListsAsEmpty) {
    FolderLister lister(FileSystem::real(), rootDevice());
    lister.prefetch(tree.str() + "/absent", true);
    EXPECT_TRUE(lister.list(tree.str() + "/absent", true).empty());
}

}  // namespace
}  // namespace quester
