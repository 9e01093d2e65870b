#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <thread>

#include <nlohmann/json.hpp>

#include "testing/QuesterProcess.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

namespace fs = std::filesystem;
using testing::QuesterProcess;
using testing::TempDir;

class CacheCommandIntegration : public ::testing::Test {
protected:
    QuesterProcess quester(const std::vector<std::string>& arguments) {
        return QuesterProcess::run(QUESTER_BINARY, arguments, scratch,
                                   "QUESTER_HOME=" + QuesterProcess::quoted(home.str()) + " ");
    }
    // The `cache list --format json` records, by name.
    std::map<std::string, nlohmann::json> listed() {
        auto list = quester({"cache", "list", "--format", "json"});
        EXPECT_EQ(list.status, 0) << list.err;
        std::map<std::string, nlohmann::json> rows;
        std::istringstream lines(list.out);
        for (std::string line; std::getline(lines, line);) {
            auto row = nlohmann::json::parse(line);
            rows[row["name"].get<std::string>()] = row;
        }
        return rows;
    }
    // The `search --format json` records of a search, by path.
    std::map<std::string, nlohmann::json> found(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "search");
        arguments.insert(arguments.end(), {"--format", "json"});
        auto search = quester(arguments);
        EXPECT_LT(search.status, 2) << search.err;
        std::map<std::string, nlohmann::json> rows;
        std::istringstream lines(search.out);
        for (std::string line; std::getline(lines, line);) {
            auto row = nlohmann::json::parse(line);
            EXPECT_EQ(rows.count(row["path"].get<std::string>()), 0u) << "each path once: " << line;
            rows[row["path"].get<std::string>()] = row;
        }
        return rows;
    }
    TempDir home;
    TempDir tree;
    TempDir scratch;
};

TEST_F(CacheCommandIntegration, AddListUpdateInfoAndRemove) {
    for (int i = 0; i < 30; ++i) tree.write("photos/p" + std::to_string(i) + ".jpg", "x");
    tree.write("photos/old/a.jpg", "x");
    auto added = quester({"cache", "add", tree.str() + "/photos", "--every", "week"});
    ASSERT_EQ(added.status, 0) << added.err;
    auto rows = listed();
    ASSERT_EQ(rows.count("photos"), 1u);
    EXPECT_EQ(rows["photos"]["items"], 31);
    EXPECT_EQ(rows["photos"]["online"], true);
    EXPECT_EQ(rows["photos"]["state"], "ready");
    EXPECT_EQ(rows["photos"]["every"], "week");
    EXPECT_TRUE(fs::exists(home.path() / "data/photos.qscache"));

    auto again = quester({"cache", "add", tree.str() + "/photos"});
    EXPECT_EQ(again.status, 2);
    auto second = quester({"cache", "add", tree.str() + "/photos", "--name", "More"});
    EXPECT_EQ(second.status, 0) << second.err;

    fs::remove(tree.path() / "photos/p0.jpg");
    fs::remove_all(tree.path() / "photos/old");
    tree.write("photos/new.jpg", "x");
    auto updated = quester({"cache", "update", "photos"});
    ASSERT_EQ(updated.status, 0) << updated.err;
    EXPECT_EQ(updated.err, "") << "no progress line when not on a terminal";
    EXPECT_EQ(listed()["photos"]["items"], 30);

    auto info = quester({"cache", "info", "photos"});
    EXPECT_EQ(info.status, 0);
    EXPECT_NE(info.out.find("items:       30"), std::string::npos) << info.out;
    EXPECT_EQ(quester({"cache", "info", "nothing"}).status, 2);

    EXPECT_EQ(quester({"cache", "remove", "photos"}).status, 0);
    EXPECT_FALSE(fs::exists(home.path() / "data/photos.qscache"));
    EXPECT_EQ(listed().count("photos"), 0u);
    EXPECT_EQ(listed().count("More"), 1u);
}

TEST_F(CacheCommandIntegration, DueUpdatesOnlyWhatItsTimingAsksFor) {
    tree.write("a/x.txt", "x");
    tree.write("b/y.txt", "y");
    ASSERT_EQ(quester({"cache", "add", tree.str() + "/a", "--every", "never"}).status, 0);
    ASSERT_EQ(quester({"cache", "add", tree.str() + "/b", "--every", "restart"}).status, 0);
    tree.write("a/x2.txt", "x");
    tree.write("b/y2.txt", "y");
    auto due = quester({"cache", "update", "--due"});
    ASSERT_EQ(due.status, 0) << due.err;
    auto rows = listed();
    EXPECT_EQ(rows["a"]["items"], 1);
    EXPECT_EQ(rows["b"]["items"], 2);
    EXPECT_EQ(quester({"cache", "update", "--due", "a"}).status, 2);
    EXPECT_EQ(quester({"cache", "add", tree.str() + "/a", "--every", "hourly"}).status, 2);
}

TEST_F(CacheCommandIntegration, ACacheFileMadeElsewhereIsAdoptedAndLeftToItsOwner) {
    tree.write("docs/x.txt", "x");
    ASSERT_EQ(quester({"cache", "add", tree.str() + "/docs"}).status, 0);
    fs::copy_file(home.path() / "data/docs.qscache", scratch.path() / "Shared.qscache");
    auto adopted = quester({"cache", "add", scratch.str() + "/Shared.qscache"});
    ASSERT_EQ(adopted.status, 0) << adopted.err;
    auto rows = listed();
    ASSERT_EQ(rows.count("Shared"), 1u);
    EXPECT_EQ(rows["Shared"]["state"], "adopted");
    EXPECT_EQ(rows["Shared"]["items"], 1);
    EXPECT_EQ(rows["Shared"]["every"], "never");
    auto garbage = scratch.write("Junk.qscache", std::string(10000, 'j'));
    EXPECT_EQ(quester({"cache", "add", garbage.string()}).status, 2);
}

TEST_F(CacheCommandIntegration, CtrlCStopsAnUpdateCleanlyAndTheNextOneCompletesIt) {
    constexpr int documents = 2000;
    for (int i = 0; i < documents; ++i)
        tree.write("docs/d" + std::to_string(i / 20) + "/n" + std::to_string(i) + ".txt", "some words here");
    std::string command = "QUESTER_HOME=" + QuesterProcess::quoted(home.str()) + " exec " +
                          QuesterProcess::quoted(QUESTER_BINARY) + " cache add --content text " +
                          QuesterProcess::quoted(tree.str() + "/docs") + " >/dev/null 2>&1";
    pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        execl("/bin/sh", "sh", "-c", command.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    // Once the file is there the build is under way.
    for (int wait = 0; wait < 500 && !fs::exists(home.path() / "data/docs.qscache"); ++wait)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
    kill(child, SIGINT);
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 130);
    auto rows = listed();
    ASSERT_EQ(rows.count("docs"), 1u);
    auto finished = quester({"cache", "update", "docs"});
    ASSERT_EQ(finished.status, 0) << finished.err;
    EXPECT_EQ(listed()["docs"]["items"], documents);
}

// A cache answers for its folder after the folder has gone (as a disk does
// when unplugged): by the cache's name, with the recorded sizes, marked off
// line, for names and for words inside documents, and it is left as it was.
TEST_F(CacheCommandIntegration, ACacheOfAFolderThatHasGoneAnswersByItsNameOffLine) {
    tree.write("trip/beach-1.jpg", "12345");
    tree.write("trip/day2/beach-2.jpg", "1234567");
    tree.write("trip/notes-beach.txt", "a sunny day by the sea");
    tree.write("trip/other.png", "x");
    ASSERT_EQ(quester({"cache", "add", tree.str() + "/trip", "--name", "Trip", "--content", "text"}).status, 0);
    ASSERT_EQ(listed()["Trip"]["items"], 4);
    fs::rename(tree.path() / "trip", scratch.path() / "moved");

    auto rows = found({"beach", "--location", "Trip"});
    const std::string trip = tree.str() + "/trip";
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[trip + "/beach-1.jpg"]["size"], 5);
    EXPECT_EQ(rows[trip + "/day2/beach-2.jpg"]["size"], 7);
    for (const auto& [path, row] : rows) EXPECT_EQ(row["online"], false) << path;
    auto content = found({"beach : content sunny", "--location", "Trip"});
    ASSERT_EQ(content.size(), 1u);
    EXPECT_EQ(content.begin()->first, trip + "/notes-beach.txt");
    EXPECT_EQ(content.begin()->second["online"], false);
    EXPECT_TRUE(found({"beach : content rain", "--location", "Trip"}).empty());
    EXPECT_EQ(found({"beach", "--only-caches"}).size(), 3u);
    EXPECT_EQ(quester({"search", "beach", "--in", scratch.str(), "--only-caches"}).status, 1);

    auto after = listed();
    EXPECT_EQ(after["Trip"]["items"], 4);
    EXPECT_EQ(after["Trip"]["state"], "off line");
}

// A group's member that has gone is searched through the cache covering it,
// beside the members still there; a cache added as a member answers too, and
// the ignore list holds for what the caches supply.
TEST_F(CacheCommandIntegration, AGroupAnswersForAMemberThatHasGoneThroughItsCache) {
    tree.write("trip/beach-1.jpg", "12345");
    tree.write("trip/beach-2.png", "x");
    tree.write("here/beach-3.jpg", "x");
    tree.write("elsewhere/beach-4.jpg", "x");
    ASSERT_EQ(quester({"cache", "add", tree.str() + "/trip", "--name", "Trip"}).status, 0);
    ASSERT_EQ(quester({"cache", "add", tree.str() + "/elsewhere", "--name", "Far"}).status, 0);
    ASSERT_EQ(quester({"group", "add", "Holiday", tree.str() + "/trip", tree.str() + "/here"}).status, 0);
    ASSERT_EQ(quester({"group", "add", "Holiday", "--cache", "Far"}).status, 0);
    EXPECT_EQ(quester({"group", "add", "Holiday", "--cache", "Nowhere"}).status, 2);
    auto list = quester({"group", "list"});
    EXPECT_NE(list.out.find("  cache Far"), std::string::npos) << list.out;

    fs::rename(tree.path() / "trip", scratch.path() / "moved");
    fs::rename(tree.path() / "elsewhere", scratch.path() / "moved-too");
    auto rows = found({"beach", "--location", "Holiday"});
    ASSERT_EQ(rows.size(), 4u);
    EXPECT_EQ(rows[tree.str() + "/trip/beach-1.jpg"]["online"], false);
    EXPECT_EQ(rows[tree.str() + "/trip/beach-1.jpg"]["size"], 5);
    EXPECT_EQ(rows[tree.str() + "/elsewhere/beach-4.jpg"]["online"], false);
    EXPECT_EQ(rows[tree.str() + "/here/beach-3.jpg"]["online"], true);

    ASSERT_EQ(quester({"ignore", "add", "extension", "png"}).status, 0);
    ASSERT_EQ(quester({"ignore", "add", "folder", "elsewhere"}).status, 0);
    rows = found({"beach", "--location", "Holiday"});
    EXPECT_EQ(rows.count(tree.str() + "/trip/beach-2.png"), 0u);
    EXPECT_EQ(rows.count(tree.str() + "/elsewhere/beach-4.jpg"), 0u) << "an ignored folder's files from a cache";
    rows = found({"beach", "--location", "Holiday", "--no-ignore"});
    EXPECT_EQ(rows.count(tree.str() + "/trip/beach-2.png"), 1u);
    EXPECT_EQ(rows.count(tree.str() + "/elsewhere/beach-4.jpg"), 1u);
    ASSERT_EQ(quester({"ignore", "remove", "folder", "elsewhere"}).status, 0);
    ASSERT_EQ(quester({"group", "remove", "Holiday", "--cache", "Far"}).status, 0);
    EXPECT_EQ(found({"beach", "--location", "Holiday"}).size(), 2u);
}

// The walk and the cache supply the same files; each comes once, and a
// folder searched inside the cached one is answered by the cache alone when
// asked. A search updates a cache that is due only when the setting allows.
TEST_F(CacheCommandIntegration, AFolderInsideACacheIsAnsweredByItAndDueCachesUpdateWhenAllowed) {
    tree.write("docs/plan-a.txt", "x");
    tree.write("docs/old/plan-b.txt", "x");
    ASSERT_EQ(quester({"cache", "add", tree.str() + "/docs", "--every", "restart"}).status, 0);
    tree.write("docs/old/plan-c.txt", "x");
    EXPECT_EQ(found({"plan", "--in", tree.str() + "/docs"}).size(), 3u);
    auto inside = found({"plan", "--in", tree.str() + "/docs/old", "--only-caches"});
    ASSERT_EQ(inside.size(), 1u);
    EXPECT_EQ(inside.begin()->first, tree.str() + "/docs/old/plan-b.txt");
    EXPECT_EQ(inside.begin()->second["online"], true);
    EXPECT_EQ(listed()["docs"]["items"], 2) << "no update without the setting";

    ASSERT_EQ(quester({"config", "set", "fileContentCachingTimeUpdatesEnabled", "true"}).status, 0);
    EXPECT_EQ(found({"plan", "--in", tree.str() + "/docs/old", "--only-caches"}).size(), 1u);
    EXPECT_EQ(listed()["docs"]["items"], 3);
    EXPECT_EQ(found({"plan", "--in", tree.str() + "/docs/old", "--only-caches"}).size(), 2u);
}

// A cache file cut short is set aside at the first use and comes back empty,
// to be rebuilt; the other caches answer meanwhile.
TEST_F(CacheCommandIntegration, ATruncatedCacheIsSetAsideOnceAndTheOthersKeepAnswering) {
    for (int i = 0; i < 200; ++i) tree.write("a/song" + std::to_string(i) + ".mp3", "x");
    tree.write("a/lyrics.txt", "la la land");
    tree.write("b/song-b.mp3", "x");
    ASSERT_EQ(quester({"cache", "add", tree.str() + "/a", "--content", "text"}).status, 0);
    ASSERT_EQ(quester({"cache", "add", tree.str() + "/b"}).status, 0);
    const fs::path damaged = home.path() / "data/a.qscache";
    const auto half = fs::file_size(damaged) / 2;
    fs::resize_file(damaged, half);

    auto rows = found({"song", "--only-caches"});
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows.begin()->first, tree.str() + "/b/song-b.mp3");
    ASSERT_TRUE(fs::exists(home.path() / "data/a.qscache.corrupt"));
    EXPECT_EQ(fs::file_size(home.path() / "data/a.qscache.corrupt"), half);
    EXPECT_EQ(listed()["a"]["state"], "needs rebuild");
    EXPECT_EQ(found({"song", "--only-caches"}).size(), 1u);
    EXPECT_EQ(fs::file_size(home.path() / "data/a.qscache.corrupt"), half) << "set aside once";

    ASSERT_EQ(quester({"cache", "update", "a"}).status, 0);
    EXPECT_EQ(listed()["a"]["state"], "ready");
    EXPECT_EQ(listed()["a"]["content"], "text") << "the rebuild keeps the cache's mode";
    EXPECT_EQ(found({"song", "--only-caches"}).size(), 201u);
    fs::rename(tree.path() / "a", scratch.path() / "a-gone");
    EXPECT_EQ(found({": content land", "--location", "a"}).size(), 1u);
}

// A small ext4 disk image, labelled, mounted on a loop device: root only.
class LoopDiskIntegration : public CacheCommandIntegration {
protected:
    void SetUp() override {
        std::string make = "truncate -s 16M " + QuesterProcess::quoted(image) + " && mkfs.ext4 -q -F -L qcachetest " +
                           QuesterProcess::quoted(image) + " >/dev/null 2>&1";
        fs::create_directories(mountPoint);
        if (geteuid() != 0 || std::system(make.c_str()) != 0 || !mount())
            GTEST_SKIP() << "loop devices can't be mounted here";
        for (int i = 0; i < 10; ++i) std::ofstream(mountPoint + "/photo" + std::to_string(i) + ".jpg") << "x";
    }
    // The disk must not outlive its test: another test's disk of the same
    // label and size has the same key, and would be taken for it.
    void TearDown() override {
        for (const std::string& at : mounted) (void)unmount(at);
    }
    bool mount(const std::string& at) {
        fs::create_directories(at);
        mounted.push_back(at);
        std::string command =
            "mount -o loop " + QuesterProcess::quoted(image) + " " + QuesterProcess::quoted(at) + " >/dev/null 2>&1";
        return std::system(command.c_str()) == 0;
    }
    bool mount() { return mount(mountPoint); }
    bool unmount(const std::string& at) {
        return std::system(("umount " + QuesterProcess::quoted(at) + " >/dev/null 2>&1").c_str()) == 0;
    }
    bool unmount() { return unmount(mountPoint); }
    std::vector<std::string> mounted;
    std::string image = scratch.str() + "/disk.img";
    std::string mountPoint = scratch.str() + "/disk";
};

// An unmounted disk leaves its mount point behind as an empty folder; an
// update then must not take the empty folder for the disk and empty the cache.
TEST_F(LoopDiskIntegration, AnUnmountedDiskIsOffLineAndItsCacheIsLeftUntouched) {
    auto added = quester({"cache", "add", mountPoint, "--name", "Disk"});
    ASSERT_TRUE(unmount());
    ASSERT_EQ(added.status, 0) << added.err;
    EXPECT_EQ(listed()["Disk"]["items"], 10);
    auto bytes = fs::file_size(home.path() / "data/Disk.qscache");

    auto offLine = quester({"cache", "update", "Disk"});
    EXPECT_EQ(offLine.status, 2);
    EXPECT_NE(offLine.err.find("off line"), std::string::npos) << offLine.err;
    auto rows = listed();
    EXPECT_EQ(rows["Disk"]["online"], false);
    EXPECT_EQ(rows["Disk"]["state"], "off line");
    EXPECT_EQ(rows["Disk"]["items"], 10);
    EXPECT_EQ(fs::file_size(home.path() / "data/Disk.qscache"), bytes);

    ASSERT_TRUE(mount());
    auto back = quester({"cache", "update", "Disk"});
    (void)unmount();
    EXPECT_EQ(back.status, 0) << back.err;
    EXPECT_EQ(listed()["Disk"]["items"], 10);
}

// Same bytes and same modification date.
void expectLevel(const fs::path& local, const fs::path& shared) {
    ASSERT_TRUE(fs::exists(local) && fs::exists(shared)) << local << " " << shared;
    EXPECT_TRUE(testing::readFile(local) == testing::readFile(shared)) << local << " and " << shared << " differ";
    EXPECT_EQ(fs::last_write_time(local), fs::last_write_time(shared));
}

void backdate(const fs::path& file, int seconds) {
    fs::last_write_time(file, fs::file_time_type::clock::now() - std::chrono::seconds(seconds));
}

TEST_F(CacheCommandIntegration, ASharedCopyStaysLevelWithUpdatesFromEitherMachine) {
    for (int i = 0; i < 5; ++i) tree.write("photos/p" + std::to_string(i) + ".jpg", "x");
    TempDir shared;
    auto added = quester({"cache", "add", tree.str() + "/photos", "--shared-copy", shared.str()});
    ASSERT_EQ(added.status, 0) << added.err;
    fs::path copy = shared.path() / "photos.qscache", onA = home.path() / "data/photos.qscache";
    expectLevel(onA, copy);
    auto info = quester({"cache", "info", "photos"});
    EXPECT_NE(info.out.find("sharedCopy:  " + copy.string()), std::string::npos) << info.out;

    TempDir otherHome;
    auto onMachineB = [&](const std::vector<std::string>& arguments) {
        return QuesterProcess::run(QUESTER_BINARY, arguments, scratch,
                                   "QUESTER_HOME=" + QuesterProcess::quoted(otherHome.str()) + " ");
    };
    fs::path onB = otherHome.path() / "data/photos.qscache";
    tree.write("photos/from-b.jpg", "x");
    ASSERT_EQ(onMachineB({"cache", "add", tree.str() + "/photos", "--shared-copy", copy.string()}).status, 0);
    expectLevel(onB, copy);

    backdate(copy, 300);
    backdate(onB, 300);
    backdate(onA, 1000);
    auto pulled = quester({"cache", "share", "photos", copy.string()});
    ASSERT_EQ(pulled.status, 0) << pulled.err;
    EXPECT_NE(pulled.out.find("newer and replaced the cache"), std::string::npos) << pulled.out;
    EXPECT_EQ(listed()["photos"]["items"], 6);
    expectLevel(onA, copy);

    fs::remove(tree.path() / "photos/p0.jpg");
    auto updated = quester({"cache", "update", "photos"});
    ASSERT_EQ(updated.status, 0) << updated.err;
    expectLevel(onA, copy);
    EXPECT_EQ(listed()["photos"]["items"], 5);

    ASSERT_EQ(quester({"cache", "share", "photos", "--stop"}).status, 0);
    EXPECT_EQ(listed()["photos"]["sharedCopy"], "");
    EXPECT_EQ(quester({"cache", "share", "photos"}).status, 2);
    EXPECT_TRUE(fs::exists(copy));
}

// Another machine's update reaches this one through the shared copy at the
// next search: the search takes the newer file before reading it.
TEST_F(CacheCommandIntegration, ASearchReadsTheNewerSharedCopyOfACache) {
    tree.write("photos/p0.jpg", "x");
    TempDir shared, otherHome;
    ASSERT_EQ(quester({"cache", "add", tree.str() + "/photos", "--shared-copy", shared.str()}).status, 0);
    fs::path copy = shared.path() / "photos.qscache", onA = home.path() / "data/photos.qscache";
    backdate(onA, 1000);
    backdate(copy, 1000);
    tree.write("photos/p1.jpg", "x");
    auto onMachineB =
        QuesterProcess::run(QUESTER_BINARY, {"cache", "add", tree.str() + "/photos", "--shared-copy", copy.string()},
                            scratch, "QUESTER_HOME=" + QuesterProcess::quoted(otherHome.str()) + " ");
    ASSERT_EQ(onMachineB.status, 0) << onMachineB.err;
    backdate(copy, 300);
    EXPECT_EQ(found({"jpg", "--only-caches"}).size(), 2u);
    expectLevel(onA, copy);
}

// A shared copy on a disk that was unplugged (its mount point now an empty
// folder of another disk) is never written; the cache itself is updated.
TEST_F(CacheCommandIntegration, ASharedCopyWhoseDiskIsNotMountedIsLeftAlone) {
    tree.write("docs/a.txt", "x");
    TempDir shared;
    ASSERT_EQ(quester({"cache", "add", tree.str() + "/docs", "--shared-copy", shared.str()}).status, 0);
    fs::path copy = shared.path() / "docs.qscache";
    std::string before = testing::readFile(copy);
    auto stamp = fs::last_write_time(copy);
    fs::path settings = home.path() / "config/preferences.json";
    auto stored = nlohmann::json::parse(testing::readFile(settings));
    auto list = nlohmann::json::parse(stored["SavedIndexInfo"].get<std::string>());
    list[0]["remoteDBBookmark"]["diskKey"] = "Unplugged 1000 ext4";
    stored["SavedIndexInfo"] = list.dump();
    std::ofstream(settings) << stored.dump();

    tree.write("docs/b.txt", "x");
    auto updated = quester({"cache", "update", "docs"});
    ASSERT_EQ(updated.status, 0) << updated.err;
    EXPECT_NE(updated.err.find("unavailable"), std::string::npos) << updated.err;
    EXPECT_EQ(listed()["docs"]["items"], 2);
    EXPECT_TRUE(testing::readFile(copy) == before);
    EXPECT_EQ(fs::last_write_time(copy), stamp);
    EXPECT_EQ(std::distance(fs::directory_iterator(shared.path()), fs::directory_iterator()), 1);
}

TEST_F(CacheCommandIntegration, CtrlCDuringAnUpdateOfASharedCacheBringsTheSharedCopyBack) {
    tree.write("docs/first.txt", "a few words");
    TempDir shared;
    ASSERT_EQ(
        quester({"cache", "add", "--content", "text", tree.str() + "/docs", "--shared-copy", shared.str()}).status, 0);
    fs::path copy = shared.path() / "docs.qscache", local = home.path() / "data/docs.qscache";
    std::string before = testing::readFile(copy);
    // Enough documents that the update is still reading them when Ctrl-C comes.
    for (int i = 0; i < 6000; ++i)
        tree.write("docs/d" + std::to_string(i / 20) + "/n" + std::to_string(i) + ".txt", "some words here");
    std::string command = "QUESTER_HOME=" + QuesterProcess::quoted(home.str()) + " exec " +
                          QuesterProcess::quoted(QUESTER_BINARY) + " cache update docs >/dev/null 2>&1";
    pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        execl("/bin/sh", "sh", "-c", command.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(400));
    kill(child, SIGINT);
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 130);
    EXPECT_TRUE(testing::readFile(copy) == before);
    expectLevel(local, copy);
    EXPECT_EQ(listed()["docs"]["items"], 1);
}

TEST_F(CacheCommandIntegration, TheDailyRunUpdatesEveryCacheOnceADay) {
    tree.write("a/x.txt", "x");
    ASSERT_EQ(quester({"cache", "add", tree.str() + "/a", "--every", "never"}).status, 0);
    ASSERT_EQ(quester({"config", "set", "fileContentCachingUpdateTime", "00:00"}).status, 0);
    tree.write("a/y.txt", "x");
    ASSERT_EQ(quester({"cache", "update", "--due"}).status, 0);
    EXPECT_EQ(listed()["a"]["items"], 1) << "the daily run is off";
    ASSERT_EQ(quester({"config", "set", "fileContentCachingTimeUpdatesEnabled", "yes"}).status, 0);
    auto run = quester({"cache", "update", "--due"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(listed()["a"]["items"], 2);
    tree.write("a/z.txt", "x");
    ASSERT_EQ(quester({"cache", "update", "--due"}).status, 0);
    EXPECT_EQ(listed()["a"]["items"], 2) << "one run a day";
}

// The empty mount point of an unplugged disk is no reason to call its files
// gone: its cache lists them by its name, off line, until the disk is back.
TEST_F(LoopDiskIntegration, AnUnpluggedDiskIsSearchedThroughItsCache) {
    ASSERT_EQ(quester({"cache", "add", mountPoint, "--name", "Disk"}).status, 0);
    ASSERT_TRUE(unmount());
    auto rows = found({"photo", "--location", "Disk"});
    EXPECT_EQ(rows.size(), 10u);
    for (const auto& [path, row] : rows) {
        EXPECT_EQ(row["online"], false) << path;
        EXPECT_EQ(row["size"], 1) << path;
    }
    EXPECT_EQ(found({"photo", "--in", mountPoint}), rows) << "the empty mount point is answered by the cache";
    ASSERT_TRUE(mount());
    rows = found({"photo", "--location", "Disk"});
    (void)unmount();
    EXPECT_EQ(rows.size(), 10u);
    for (const auto& [path, row] : rows) EXPECT_EQ(row["online"], true) << path;
}

// A group whose member is a folder of a loop disk answers through the disk's
// cache while the disk is unmounted.
TEST_F(LoopDiskIntegration, AGroupMemberOnAnUnpluggedDiskAnswersThroughItsCache) {
    ASSERT_EQ(quester({"cache", "add", mountPoint, "--name", "Disk"}).status, 0);
    ASSERT_EQ(quester({"group", "add", "Photos", mountPoint}).status, 0);
    ASSERT_TRUE(unmount());
    auto rows = found({"photo", "--location", "Photos"});
    ASSERT_TRUE(mount());
    EXPECT_EQ(rows.size(), 10u);
    for (const auto& [path, row] : rows) EXPECT_EQ(row["online"], false) << path;
}

// The same disk mounted at another place is found by its key: its cache
// follows it there and answers on line with the new paths.
TEST_F(LoopDiskIntegration, ADiskMountedElsewhereIsFoundByItsKey) {
    ASSERT_EQ(quester({"cache", "add", mountPoint, "--name", "Disk"}).status, 0);
    ASSERT_EQ(listed()["Disk"]["online"], true);  // the list is read once with the disk in place
    ASSERT_TRUE(unmount());
    const std::string elsewhere = scratch.str() + "/elsewhere";
    ASSERT_TRUE(mount(elsewhere));
    auto rows = found({"photo", "--location", "Disk"});
    auto listing = listed();
    (void)unmount(elsewhere);
    ASSERT_EQ(rows.size(), 10u);
    for (const auto& [path, row] : rows) {
        EXPECT_TRUE(path.starts_with(elsewhere + "/")) << path;
        EXPECT_EQ(row["online"], true) << path;
    }
    EXPECT_EQ(listing["Disk"]["target"], elsewhere);
}

}  // namespace
}  // namespace quester
