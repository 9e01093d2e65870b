#include <dirent.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <nlohmann/json.hpp>

#include "testing/DeepFolders.h"
#include "testing/QuesterProcess.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

testing::QuesterProcess runQuester(const std::vector<std::string>& arguments, const testing::TempDir& scratch) {
    return testing::QuesterProcess::run(QUESTER_BINARY, arguments, scratch);
}

std::multiset<std::string> split(const std::string& text, char separator) {
    std::multiset<std::string> parts;
    std::string part;
    std::istringstream in(text);
    while (std::getline(in, part, separator)) parts.insert(part);
    return parts;
}

class SearchCommandTest : public ::testing::Test {
protected:
    SearchCommandTest() {
        tree.write("docs/budget-2024.xlsx", "12345");
        tree.write("docs/report.pdf");
        tree.write("budget/notes.txt");
        tree.write(".private/budget-secret.txt");
        tree.write("other/budget line\nbreak.txt");
    }

    std::string at(const std::string& relative) const { return tree.str() + "/" + relative; }

    // The paths `quester search QUERY --in FOLDER` prints, one a line.
    std::multiset<std::string> paths(const std::string& query, const std::string& folder) const {
        return split(runQuester({"search", query, "--in", folder, "--format", "paths"}, scratch).out, '\n');
    }

    testing::TempDir tree;
    testing::TempDir scratch;
};

TEST_F(SearchCommandTest, PrintsPathsLeavesHiddenItemsOutUnlessAskedAndStopsAtTheLimit) {
    auto plain = runQuester({"search", "budget", "--in", tree.str()}, scratch);
    EXPECT_EQ(plain.status, 0) << plain.err;
    EXPECT_EQ(split(plain.out, '\n'), (std::multiset<std::string>{at("docs/budget-2024.xlsx"), at("budget"),
                                                                  at("other/budget line"), "break.txt"}));

    auto nul = runQuester({"search", "budget", "--in", tree.str(), "--hidden", "-0"}, scratch);
    EXPECT_EQ(nul.status, 0) << nul.err;
    EXPECT_EQ(split(nul.out, '\0'),
              (std::multiset<std::string>{at("docs/budget-2024.xlsx"), at("budget"), at(".private/budget-secret.txt"),
                                          at("other/budget line\nbreak.txt")}));

    auto limited = runQuester({"search", "budget", "--in", tree.str(), "--hidden", "--limit", "2", "-0"}, scratch);
    EXPECT_EQ(limited.status, 0) << limited.err;
    EXPECT_EQ(split(limited.out, '\0').size(), 2u);
}

TEST_F(SearchCommandTest, TheUsersOrderingPreferencesPutFoldersAndQueryPrefixesFirst) {
    tree.write("a-notes.txt");
    tree.mkdir("x-notes");
    const std::vector<std::string> arguments{"search", "notes", "--in", tree.str(), "--format", "paths"};
    auto ordered = [&](const std::string& preferences) {
        const std::string home = scratch.str() + "/home";
        std::filesystem::create_directories(home + "/config");
        std::ofstream(home + "/config/preferences.json") << preferences;
        auto run = testing::QuesterProcess::run(QUESTER_BINARY, arguments, scratch, "QUESTER_HOME=" + home + " ");
        EXPECT_EQ(run.status, 0) << run.err;
        return run.out;
    };
    const std::string folder = at("x-notes") + "\n", prefixed = at("budget/notes.txt") + "\n",
                      other = at("a-notes.txt") + "\n";
    EXPECT_EQ(ordered("{}"), other + prefixed + folder);
    EXPECT_EQ(ordered(R"({"moveFoldersToTop": true})"), folder + other + prefixed);
    EXPECT_EQ(ordered(R"({"moveItemsStartingWithQueryToTop": true})"), prefixed + other + folder);
}

TEST_F(SearchCommandTest, UnusableQueriesAndLocationsExitWithTwoAndSayWhy) {
    auto missing = runQuester({"search", "budget", "--in", tree.str() + "/nowhere"}, scratch);
    EXPECT_EQ(missing.status, 2);
    EXPECT_NE(missing.err.find("no such folder"), std::string::npos) << missing.err;

    auto file = runQuester({"search", "budget", "--in", at("docs/report.pdf")}, scratch);
    EXPECT_EQ(file.status, 2);
    EXPECT_NE(file.err.find("not a folder"), std::string::npos) << file.err;

    auto nothing = runQuester({"search", ": case sensitive", "--in", tree.str()}, scratch);
    EXPECT_EQ(nothing.status, 2);
    EXPECT_TRUE(nothing.out.empty());
}

TEST_F(SearchCommandTest, FoldersDeeperThanAPathReachesAreSearchedToTheBottom) {
    const int depth = 2000;
    testing::makeDeepFolders(tree.str(), depth, "d", "needle.txt");
    const auto found = paths("needle", tree.str());
    testing::removeDeepFolders(tree.str(), "d", "needle.txt");
    ASSERT_EQ(found.size(), 1u);
    const std::string& path = *found.begin();
    const std::string root = tree.str();
    EXPECT_EQ(std::count(path.begin(), path.end(), '/') - std::count(root.begin(), root.end(), '/'), depth + 1);
    EXPECT_TRUE(path.ends_with("/d/needle.txt"));
}

TEST_F(SearchCommandTest, AFolderInASystemOrHiddenPlaceIsSearchedWhenNamed) {
    EXPECT_TRUE(paths("passwd", "/etc").contains("/etc/passwd"));
    tree.write(".config/app/settings-zq.txt", "x");
    EXPECT_EQ(paths("settings-zq", at(".config")), std::multiset<std::string>{at(".config/app/settings-zq.txt")});
    // Below the named folder the rules still hold.
    EXPECT_TRUE(paths("settings-zq", tree.str()).empty());
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

TEST_F(SearchCommandTest, AFolderThatCantBeReadIsAnErrorNotAnEmptySearch) {
    const std::string folder = unreadableFolder(tree);
    if (folder.empty()) GTEST_SKIP() << "every folder is readable to this user";
    const auto run = runQuester({"search", "anything", "--in", folder}, scratch);
    if (::geteuid() != 0) ::chmod(folder.c_str(), 0755);
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.err.find("can't be read"), std::string::npos) << run.err;
    EXPECT_TRUE(run.out.empty());
}

TEST_F(SearchCommandTest, ExecutableIsJudgedByPermissionAndSignatureNotByName) {
    auto make = [&](const char* name, const std::string& contents, mode_t mode) {
        ::chmod(tree.write(name, contents).c_str(), mode);
    };
    make("data.bin", std::string(4096, '\0'), 0644);
    make("program", testing::readFile("/bin/true"), 0755);
    make("run-me", "#!/bin/sh\necho hi\n", 0755);
    make("notes.sh", "#!/bin/sh\n", 0644);
    EXPECT_EQ(paths(": is executable", tree.str()), (std::multiset<std::string>{at("program"), at("run-me")}));
}

TEST_F(SearchCommandTest, ASearchStoresItsHistoryEntryAndStatisticsAndNothingElse) {
    testing::TempDir home;
    const auto run = testing::QuesterProcess::run(QUESTER_BINARY, {"search", "budget", "--in", tree.str()}, scratch,
                                                  "QUESTER_HOME=" + testing::QuesterProcess::quoted(home.str()) + " ");
    EXPECT_EQ(run.status, 0) << run.err;
    std::set<std::string> stored;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(home.path())) {
        if (entry.is_regular_file()) stored.insert(std::filesystem::relative(entry.path(), home.path()).string());
    }
    EXPECT_EQ(stored, (std::set<std::string>{"config/preferences.json", "config/preferences.json.lock",
                                             "data/QueryStatistics.json", "data/QueryStatistics.json.lock"}));
    const auto preferences = nlohmann::json::parse(testing::readFile(home.path() / "config/preferences.json"));
    EXPECT_EQ(preferences.size(), 1u) << preferences.dump();
    EXPECT_EQ(preferences["history"][0]["queryString"], "budget");
}

// Whether `pid` has blocked SIGINT, which the command does just before its search starts.
bool blocksInterrupts(pid_t pid) {
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind("SigBlk:", 0) == 0) return (std::stoull(line.substr(7), nullptr, 16) >> (SIGINT - 1)) & 1;
    }
    return false;
}

// Starts `quester search item --in folder` with standard output on a pipe; returns the pid and the read end.
std::pair<pid_t, int> startSearch(const std::string& folder) {
    int output[2];
    if (::pipe(output) != 0) return {-1, -1};
    pid_t child = ::fork();
    if (child == 0) {
        ::dup2(output[1], STDOUT_FILENO);
        ::close(output[0]);
        ::execl(QUESTER_BINARY, QUESTER_BINARY, "search", "item", "--in", folder.c_str(), "--format", "paths", nullptr);
        ::_exit(127);
    }
    ::close(output[1]);
    return {child, output[0]};
}

// Reads `fd` to its end and answers what came.
std::string drain(int fd) {
    std::string text;
    std::array<char, 4096> buffer;
    for (ssize_t count; (count = ::read(fd, buffer.data(), buffer.size())) > 0;) text.append(buffer.data(), count);
    ::close(fd);
    return text;
}

// The wait status of `child` if it ends within `limit`; otherwise kills it and answers -1.
int waitAtMost(pid_t child, std::chrono::milliseconds limit) {
    const auto giveUp = std::chrono::steady_clock::now() + limit;
    int status = 0;
    while (::waitpid(child, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() >= giveUp) {
            ::kill(child, SIGKILL);
            ::waitpid(child, &status, 0);
            return -1;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return status;
}

// A tree whose walk and list take long enough to be interrupted, made once.
class InterruptTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        big = new testing::TempDir();
        for (int d = 0; d < 600; ++d) {
            for (int f = 0; f < 10; ++f) {
                big->write("d" + std::to_string(d % 11) + "/sub" + std::to_string(d) + "/item" + std::to_string(f));
            }
        }
    }
    static void TearDownTestSuite() {
        delete big;
        big = nullptr;
    }
    static testing::TempDir* big;
};

testing::TempDir* InterruptTest::big = nullptr;

// Ctrl-C once took many seconds and printed every row found so far. The
// command must end by its own exit (never by the signal) within a second.
TEST_F(InterruptTest, InterruptDuringTheWalkEndsAtOnceAndPrintsNothing) {
    auto [child, output] = startSearch(big->str());
    ASSERT_GE(child, 0);
    auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!blocksInterrupts(child) && std::chrono::steady_clock::now() < giveUp) {
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    ::kill(child, SIGINT);
    const int status = waitAtMost(child, std::chrono::seconds(1));
    const std::string printed = drain(output);
    ASSERT_NE(status, -1) << "still running a second after the interrupt";
    ASSERT_TRUE(WIFEXITED(status)) << "ended by a signal, not by its own exit";
    // Interrupted, or finished just before the signal came.
    if (WEXITSTATUS(status) == 130) {
        EXPECT_EQ(printed, "");
    } else {
        EXPECT_EQ(WEXITSTATUS(status), 0);
    }
}

// Writing the list to a reader that has stopped reading blocks; Ctrl-C must
// still end the command.
TEST_F(InterruptTest, InterruptWhileTheListIsWrittenDoesNotWaitForTheReader) {
    auto [child, output] = startSearch(big->str());
    ASSERT_GE(child, 0);
    char first = 0;
    ASSERT_EQ(::read(output, &first, 1), 1);
    ::kill(child, SIGINT);
    const int status = waitAtMost(child, std::chrono::seconds(1));
    ::close(output);
    ASSERT_NE(status, -1) << "still running a second after the interrupt";
    ASSERT_TRUE(WIFEXITED(status)) << "ended by a signal, not by its own exit";
    EXPECT_EQ(WEXITSTATUS(status), 130);
}

}  // namespace
}  // namespace quester
