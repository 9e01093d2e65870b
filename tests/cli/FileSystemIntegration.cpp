#include <dirent.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "testing/DeepFolders.h"
#include "testing/QuesterProcess.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> all;
    std::size_t start = 0;
    for (std::size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
        all.push_back(text.substr(start, end - start));
    }
    return all;
}

class FileSystemTest : public ::testing::Test {
protected:
    testing::QuesterProcess search(const std::string& query, const std::string& folder,
                                   std::vector<std::string> extra = {}) const {
        std::vector<std::string> arguments{"search", query, "--in", folder, "--format", "paths"};
        arguments.insert(arguments.end(), extra.begin(), extra.end());
        return testing::QuesterProcess::run(QUESTER_BINARY, arguments, scratch);
    }

    testing::TempDir tree;
    testing::TempDir scratch;
};

TEST_F(FileSystemTest, FoldersDeeperThanAPathReachesAreSearchedToTheBottom) {
    const int depth = 2000;
    testing::makeDeepFolders(tree.str(), depth, "d", "needle.txt");
    const auto run = search("needle", tree.str());
    testing::removeDeepFolders(tree.str(), "d", "needle.txt");
    EXPECT_EQ(run.status, 0) << run.err;
    const auto found = lines(run.out);
    ASSERT_EQ(found.size(), 1u) << run.err;
    const std::string root = tree.str();
    EXPECT_EQ(std::count(found[0].begin(), found[0].end(), '/') - std::count(root.begin(), root.end(), '/'), depth + 1);
    EXPECT_TRUE(found[0].ends_with("/d/needle.txt"));
}

TEST_F(FileSystemTest, AFolderInASystemOrHiddenPlaceIsSearchedWhenNamed) {
    const auto system = lines(search("passwd", "/etc").out);
    EXPECT_NE(std::find(system.begin(), system.end(), "/etc/passwd"), system.end());
    tree.write(".config/app/settings-zq.txt", "x");
    const auto named = search("settings-zq", tree.str() + "/.config");
    EXPECT_EQ(lines(named.out), std::vector<std::string>{tree.str() + "/.config/app/settings-zq.txt"}) << named.err;
    // Below the named folder the rules still hold.
    EXPECT_TRUE(lines(search("settings-zq", tree.str()).out).empty());
}

// A folder that root can't read either, else one made unreadable for a user.
std::string unreadableFolder(const testing::TempDir& tree) {
    if (::geteuid() != 0) {
        const auto locked = tree.mkdir("locked");
        ::chmod(locked.c_str(), 0);
        return locked.string();
    }
    DIR* listing = ::opendir("/proc/1/map_files");
    if (listing == nullptr) return "/proc/1/map_files";
    errno = 0;
    while (::readdir(listing) != nullptr) {
    }
    const bool readable = errno == 0;
    ::closedir(listing);
    return readable ? std::string() : std::string("/proc/1/map_files");
}

TEST_F(FileSystemTest, AFolderThatCantBeReadIsAnErrorNotAnEmptySearch) {
    const std::string folder = unreadableFolder(tree);
    if (folder.empty()) GTEST_SKIP() << "every folder is readable to this user";
    const auto run = search("anything", folder);
    if (::geteuid() != 0) ::chmod(folder.c_str(), 0755);
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.err.find("can't be read"), std::string::npos) << run.err;
    EXPECT_TRUE(run.out.empty());
}

TEST_F(FileSystemTest, ExecutableIsJudgedByPermissionAndSignatureNotByName) {
    auto make = [&](const char* name, const std::string& contents, mode_t mode) {
        ::chmod(tree.write(name, contents).c_str(), mode);
    };
    make("data.bin", std::string(4096, '\0'), 0644);
    make("program", testing::readFile("/bin/true"), 0755);
    make("run-me", "#!/bin/sh\necho hi\n", 0755);
    make("notes.sh", "#!/bin/sh\n", 0644);
    const auto run = search(": is executable", tree.str());
    EXPECT_EQ(run.status, 0) << run.err;
    const auto found = lines(run.out);
    EXPECT_EQ(std::set<std::string>(found.begin(), found.end()),
              (std::set<std::string>{tree.str() + "/program", tree.str() + "/run-me"}));
}

TEST_F(FileSystemTest, ASearchLeavesQuesterHomeEmpty) {
    tree.write("report.txt", "x");
    testing::TempDir home;
    const auto run = testing::QuesterProcess::run(QUESTER_BINARY, {"search", "report", "--in", tree.str()}, scratch,
                                                  "QUESTER_HOME=" + testing::QuesterProcess::quoted(home.str()) + " ");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(fs::directory_iterator(home.path()), fs::directory_iterator()) << "a search stores nothing";
}

}  // namespace
}  // namespace quester
