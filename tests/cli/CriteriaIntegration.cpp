#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "testing/FileFlags.h"
#include "testing/QuesterProcess.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using Paths = std::set<std::string>;
using std::chrono::seconds;

// Runs `quester search QUERY --in ROOT --format paths` in UTC, so that
// "yesterday" is the day the fixture means, and answers the paths found,
// relative to ROOT, checking the exit status. `environment` goes before the
// command ("NAME=value ").
Paths search(const std::string& query, const testing::TempDir& root, const testing::TempDir& scratch,
             const std::string& environment = "") {
    auto run = testing::QuesterProcess::run(QUESTER_BINARY, {"search", query, "--in", root.str(), "--format", "paths"},
                                            scratch, environment + "TZ=UTC ");
    Paths found;
    std::istringstream lines(run.out);
    for (std::string line; std::getline(lines, line);) found.insert(line.substr(root.str().size() + 1));
    // 0 when something was found, 1 when nothing was.
    EXPECT_EQ(run.status, found.empty() ? 1 : 0) << query << ": " << run.err;
    return found;
}

void setModified(const std::filesystem::path& path, std::chrono::system_clock::time_point when) {
    const auto since = std::chrono::duration_cast<std::chrono::nanoseconds>(when.time_since_epoch()).count();
    const timespec times[2] = {{since / 1'000'000'000, since % 1'000'000'000},
                               {since / 1'000'000'000, since % 1'000'000'000}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0) << path;
}

// Reports of known sizes, dates, places and attributes, and a few other items.
// What is new is dated two seconds back: date ranges that end now leave out
// the present second.
class CriteriaTest : public ::testing::Test {
protected:
    CriteriaTest() {
        const auto now = std::chrono::system_clock::now();
        const auto midnightUTC = std::chrono::floor<std::chrono::days>(now);
        std::filesystem::resize_file(tree.write("report-a.txt"), 6'000'000);
        std::filesystem::resize_file(tree.write("report-b.txt"), 1'000'000);
        auto old = tree.write("report-old.txt");
        std::filesystem::resize_file(old, 6'000'000);
        setModified(old, now - std::chrono::days(40));
        std::filesystem::resize_file(tree.write("notes.txt"), 6'000'000);
        tree.write("Report-Final.PDF", "final");
        ::chmod(tree.write("report-locked.txt", "x").c_str(), 0444);
        setModified(tree.write("archive/report-2019.txt", "x"), midnightUTC - std::chrono::hours(12));
        tree.write("deep/a/b/report-deep.txt", "x");
        tree.mkdir("reports-2020");
        tree.write("screenshot-1.png", "x");
        tagsWork = testing::setTags(tree.write("photos/holiday.jpg", "x"), "Dark Red,Travel");
        tree.write("photos/sunset.jpg", "x");
        tree.write("café menu.txt");
        tree.write("Cafe-bill.txt");
        for (const auto& entry : std::filesystem::recursive_directory_iterator(tree.path())) {
            if (std::filesystem::last_write_time(entry.path()) >
                std::filesystem::file_time_type::clock::now() - std::chrono::hours(1)) {
                setModified(entry.path(), now - seconds(2));
            }
        }
    }

    void expect(const std::string& query, const Paths& expected) {
        EXPECT_EQ(search(query, tree, scratch), expected) << query;
    }

    testing::TempDir tree;
    testing::TempDir scratch;
    bool tagsWork = false;
    const Paths smallReports{"Report-Final.PDF", "report-locked.txt", "archive/report-2019.txt",
                             "deep/a/b/report-deep.txt"};
};

TEST_F(CriteriaTest, NameCriteria) {
    expect("Report : case sensitive", {"Report-Final.PDF"});
    expect("report : .pdf", {"Report-Final.PDF"});
    expect("report : not .txt", {"Report-Final.PDF", "reports-2020"});
    expect("report : regex ^report-[ab]", {"report-a.txt", "report-b.txt"});
    expect("report : whole words", {"report-a.txt", "report-b.txt", "report-old.txt", "Report-Final.PDF",
                                    "report-locked.txt", "archive/report-2019.txt", "deep/a/b/report-deep.txt"});
    expect("report -old -deep : name longer than 16", {"report-locked.txt"});
    expect("menu : whole words", {"café menu.txt"});
    expect("report-*", {"report-a.txt", "report-b.txt", "report-old.txt", "Report-Final.PDF", "report-locked.txt",
                        "archive/report-2019.txt", "deep/a/b/report-deep.txt"});
    expect("report-a.txt : exact", {"report-a.txt"});
    // Depth counts from the disk's root, so the limit is set from the fixture's own depth.
    const std::string root = tree.str();
    const auto rootDepth = std::count(root.begin(), root.end(), '/');
    expect("report : max depth " + std::to_string(rootDepth),
           {"report-a.txt", "report-b.txt", "report-old.txt", "Report-Final.PDF", "report-locked.txt", "reports-2020"});
    expect("men : whole words", {});
}

TEST_F(CriteriaTest, SoundsLikeMatchesAnyWordOfTheNameBySoundex) {
    tree.write("Smyth notes.txt");
    tree.write("Schmidt.txt");
    tree.write("Smart.txt");
    auto run = testing::QuesterProcess::run(
        QUESTER_BINARY, {"search", "smith", "--sounds-like", "--in", tree.str(), "--format", "paths"}, scratch);
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, tree.str() + "/Schmidt.txt\n" + tree.str() + "/Smyth notes.txt\n");
}

TEST_F(CriteriaTest, DiacriticsCountOnlyUntilTheUserSaysOtherwise) {
    expect("cafe", {"Cafe-bill.txt"});
    const std::string home = scratch.str() + "/home";
    std::filesystem::create_directories(home + "/config");
    std::ofstream(home + "/config/preferences.json") << R"({"diacriticInsensitiveSearch": true})";
    EXPECT_EQ(search("cafe", tree, scratch, "QUESTER_HOME=" + home + " "), (Paths{"Cafe-bill.txt", "café menu.txt"}));
}

TEST_F(CriteriaTest, DateCriteria) {
    expect("report : modified yesterday", {"archive/report-2019.txt"});
    expect("report .txt : modified today",
           {"report-a.txt", "report-b.txt", "report-locked.txt", "deep/a/b/report-deep.txt"});
    expect("report -old : modified in the last 3 days",
           {"report-a.txt", "report-b.txt", "Report-Final.PDF", "report-locked.txt", "archive/report-2019.txt",
            "deep/a/b/report-deep.txt", "reports-2020"});
    // Changing the modification date leaves the creation date alone.
    expect("report-old : created today", {"report-old.txt"});
    expect("report : modified before 2000", {});
}

TEST_F(CriteriaTest, SizeAndScopeCriteria) {
    expect("report : inside archive", {"archive/report-2019.txt"});
    expect("report : excluding folder archive AND smaller than 2kb",
           {"Report-Final.PDF", "report-locked.txt", "deep/a/b/report-deep.txt"});
    expect("report : is folder", {"reports-2020"});
    expect("report : locked", {"report-locked.txt"});
    expect("report -a -b -old -final -2019 -deep : not locked", {"reports-2020"});
    // A minus word that only a folder above holds doesn't hide what lies below.
    expect("report -archive -b : smaller than 2kb",
           {"Report-Final.PDF", "report-locked.txt", "archive/report-2019.txt", "deep/a/b/report-deep.txt"});
}

TEST_F(CriteriaTest, TagCriteria) {
    if (!tagsWork) GTEST_SKIP() << "no user attributes on this file system";
    expect("photos : tag red", {});
    expect("holiday OR sunset : tag red", {"photos/holiday.jpg"});
    expect("jpg : not tag red", {"photos/sunset.jpg"});
    expect("screenshot OR : tag red", {"screenshot-1.png", "photos/holiday.jpg"});
}

TEST_F(CriteriaTest, CommandsCombineWithAndOrAndNot) {
    expect("report : modified this month AND bigger than 5mb", {"report-a.txt"});
    expect("report : bigger than 5mb OR modified yesterday",
           {"report-a.txt", "report-old.txt", "archive/report-2019.txt"});
    Paths notBig = smallReports;
    notBig.insert({"report-b.txt", "reports-2020"});
    expect("report : NOT bigger than 5mb", notBig);
    expect("report : NOT inside archive AND NOT smaller than 2kb",
           {"report-a.txt", "report-b.txt", "report-old.txt", "reports-2020"});
    expect("(report OR notes) : bigger than 5mb AND NOT modified this month", {"report-old.txt"});
}

// Items named so that only their kind tells them apart.
class KindCriteriaTest : public ::testing::Test {
protected:
    KindCriteriaTest() {
        for (const auto* name :
             {"photos/holiday.JPG", "photos/scan.heic", "photos/raw.nef", "logo.svg", "report.pdf", "letter.docx",
              "sheet.xlsx", "backup.tar.gz", "song.mp3", "song.flac", "film.mkv", "clip.mp4", "main.py", "notes.txt",
              "editor.desktop", "tool.AppImage", "data.xyzzy", "README"}) {
            tree.write(name, "x");
        }
        tree.mkdir("Tool.app");
    }

    void expect(const std::string& query, const Paths& expected) {
        EXPECT_EQ(search(query, tree, scratch), expected) << query;
    }

    testing::TempDir tree;
    testing::TempDir scratch;
};

TEST_F(KindCriteriaTest, KindWordsFindExactlyTheirItemsAndCombine) {
    // Any text known of the kind counts, and "appimage" holds "image".
    expect(": is image", {"photos/holiday.JPG", "photos/scan.heic", "photos/raw.nef", "logo.svg", "tool.AppImage"});
    expect(": is music", {"song.mp3", "song.flac"});
    expect(": is archive", {"backup.tar.gz"});
    expect(": is source", {"main.py"});
    expect(": is text", {"main.py", "notes.txt"});
    expect(": is app", {"editor.desktop", "tool.AppImage", "Tool.app"});
    expect(": is spreadsheet", {"sheet.xlsx"});
    expect(": is pdf OR is video", {"report.pdf", "film.mkv", "clip.mp4"});
    expect(": is image AND NOT inside photos", {"logo.svg", "tool.AppImage"});
}

}  // namespace
}  // namespace quester
