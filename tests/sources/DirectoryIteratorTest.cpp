#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <string>

#include "sources/DirectoryIterator.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

namespace fs = std::filesystem;

std::set<std::string> namesOf(const DirectoryIterator::Listing& listing) {
    std::set<std::string> names;
    for (const auto& item : listing.items) names.insert(item.name);
    return names;
}

const FSItemAndAttrs& itemNamed(const DirectoryIterator::Listing& listing, const std::string& name) {
    auto found = std::find_if(listing.items.begin(), listing.items.end(),
                              [&](const FSItemAndAttrs& item) { return item.name == name; });
    EXPECT_NE(found, listing.items.end()) << name;
    return *found;
}

TEST(DirectoryIterator, EmptyMissingAndEmptyPathsListNothing) {
    testing::TempDir dir;
    DirectoryIterator iterator;
    dir.mkdir("empty");
    dir.write("plain.txt", "x");
    auto empty = iterator.contentsOfDirectoryAtPath(dir.str() + "/empty");
    EXPECT_FALSE(empty.openError || empty.readError);
    auto missing = iterator.contentsOfDirectoryAtPath(dir.str() + "/no such folder");
    EXPECT_TRUE(missing.openError && missing.openError->code == ErrorCode::notFound);
    for (const std::string& path :
         {dir.str() + "/empty", dir.str() + "/no such folder", std::string(), dir.str() + "/plain.txt"}) {
        EXPECT_TRUE(iterator.contentsOfDirectoryAtPath(path).items.empty()) << path;
    }
}

TEST(DirectoryIterator, ReportsFilesAndFoldersWithTheirAttributes) {
    testing::TempDir dir;
    dir.write("report.txt", std::string(1234, 'r'));
    dir.mkdir("Sub Folder");
    dir.write("Sub Folder/inner.txt", "not listed: one level only");

    auto listing = DirectoryIterator().contentsOfDirectoryAtPath(dir.str());
    EXPECT_EQ(namesOf(listing), (std::set<std::string>{"report.txt", "Sub Folder"}));

    const auto& file = itemNamed(listing, "report.txt");
    struct stat status;
    ASSERT_EQ(::stat(file.fullPath.c_str(), &status), 0);
    EXPECT_FALSE(file.isDirectory);
    EXPECT_EQ(file.fileSize, 1234u);
    EXPECT_EQ(file.modifyTime.seconds, status.st_mtim.tv_sec);
    EXPECT_EQ(file.modifyTime.nanoseconds, static_cast<std::uint32_t>(status.st_mtim.tv_nsec));
    EXPECT_EQ(file.accessTime.seconds, status.st_atim.tv_sec);
    EXPECT_GT(file.createTime.seconds, 0);
    EXPECT_EQ(file.object, status.st_ino);
    ASSERT_TRUE(file.fileSystem.has_value());
    EXPECT_EQ(file.fileSystem->major, major(status.st_dev));
    EXPECT_EQ(file.fileSystem->minor, minor(status.st_dev));
    EXPECT_TRUE(itemNamed(listing, "Sub Folder").isDirectory);
}

TEST(DirectoryIterator, DropsSymbolicLinksAndSpecialFilesButUrlFormKeepsLinksAsFiles) {
    testing::TempDir dir;
    dir.write("target.txt", "t");
    dir.mkdir("folder");
    fs::create_symlink(dir.path() / "target.txt", dir.path() / "link-to-file");
    fs::create_directory_symlink(dir.path() / "folder", dir.path() / "link-to-folder");
    fs::create_symlink(dir.path() / "nowhere", dir.path() / "dangling");
    ASSERT_EQ(::mkfifo((dir.path() / "pipe").c_str(), 0600), 0);

    auto listing = DirectoryIterator().contentsOfDirectoryAtPath(dir.str());
    EXPECT_EQ(namesOf(listing), (std::set<std::string>{"target.txt", "folder"}));

    auto contents = DirectoryIterator::urlContentsOfDirectory(dir.str());
    EXPECT_EQ(contents.directories, std::vector<std::string>{dir.str() + "/folder"});
    std::set<std::string> files(contents.files.begin(), contents.files.end());
    for (const char* name : {"target.txt", "link-to-file", "link-to-folder", "dangling", "pipe"}) {
        EXPECT_TRUE(files.count(dir.str() + "/" + name)) << name;
    }
}

TEST(DirectoryIterator, FullPathsHaveOneSlashWhateverTheFolderEndsIn) {
    testing::TempDir dir;
    dir.write("a.txt");
    dir.mkdir("b");
    for (const std::string& folder : {dir.str(), dir.str() + "/"}) {
        std::set<std::string> paths;
        for (const auto& item : DirectoryIterator().contentsOfDirectoryAtPath(folder).items)
            paths.insert(item.fullPath);
        EXPECT_EQ(paths, (std::set<std::string>{dir.str() + "/a.txt", dir.str() + "/b"})) << folder;
    }
    EXPECT_EQ(itemNamed(DirectoryIterator().contentsOfDirectoryAtPath("/"), "tmp").fullPath, "/tmp");
}

TEST(DirectoryIterator, ListsDirectoriesLargerThanOneBufferAndReusesTheBuffer) {
    testing::TempDir dir;
    // Each record takes about 220 bytes, so 1500 of them need several reads.
    const std::string padding(180, 'p');
    for (int i = 0; i < 1500; ++i) dir.write(std::to_string(i) + padding);
    DirectoryIterator iterator;
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(namesOf(iterator.contentsOfDirectoryAtPath(dir.str())).size(), 1500u);
    }
}

TEST(DirectoryIterator, FilterDecidesWhichEntriesGetAttributesAndTurnedDownFilesAreLeftOut) {
    testing::TempDir dir;
    dir.write("wanted.txt", "12345");
    dir.write("other.txt", "123");
    dir.mkdir("sub");
    std::set<std::string> asked;
    auto listing = DirectoryIterator().contentsOfDirectoryAtPath(dir.str(), [&](std::string_view path, bool) {
        asked.insert(fs::path(path).filename().string());
        return path.find("wanted") != std::string::npos;
    });
    EXPECT_EQ(asked, (std::set<std::string>{"wanted.txt", "other.txt", "sub"}));
    EXPECT_EQ(namesOf(listing), (std::set<std::string>{"wanted.txt", "sub"}));
    EXPECT_EQ(itemNamed(listing, "wanted.txt").fileSize, 5u);
    EXPECT_TRUE(itemNamed(listing, "wanted.txt").wanted);
    EXPECT_FALSE(itemNamed(listing, "sub").attributesRead);
    EXPECT_FALSE(itemNamed(listing, "sub").wanted);

    DirectoryIterator namesOnly;
    namesOnly.setReadsAttributes(false);
    auto bare = namesOnly.contentsOfDirectoryAtPath(
        dir.str(), [](std::string_view path, bool) { return path.find("wanted") != std::string::npos; });
    EXPECT_EQ(namesOf(bare), (std::set<std::string>{"wanted.txt", "sub"}));
    EXPECT_TRUE(itemNamed(bare, "wanted.txt").wanted);
    EXPECT_FALSE(itemNamed(bare, "wanted.txt").attributesRead);
    EXPECT_EQ(itemNamed(bare, "wanted.txt").fileSize, 0u);
}

}  // namespace
}  // namespace quester
