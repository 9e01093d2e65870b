#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <set>
#include <string>

#include <nlohmann/json.hpp>

#include "testing/TempDir.h"

namespace quester {
namespace {

struct Run {
    std::string output;
    int status = -1;
};

// Runs the `quester` command with `arguments` (already quoted for the shell),
// standard error discarded.
Run runQuester(const std::string& arguments) {
    const std::string command = std::string(QUESTER_BINARY) + " " + arguments + " 2>/dev/null";
    Run run;
    FILE* pipe = ::popen(command.c_str(), "r");
    if (!pipe) return run;
    char buffer[4096];
    while (size_t count = std::fread(buffer, 1, sizeof buffer, pipe)) run.output.append(buffer, count);
    const int status = ::pclose(pipe);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

// A folder of items of many kinds, named so that only their kind tells them apart.
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

    // The paths `quester search` prints for `query` in the fixture, relative to it.
    std::set<std::string> found(const std::string& query) const {
        const auto run = runQuester("search '" + query + "' --in '" + tree.str() + "' --format paths");
        EXPECT_EQ(run.status, 0) << query;
        std::set<std::string> paths;
        std::size_t start = 0;
        for (std::size_t end; (end = run.output.find('\n', start)) != std::string::npos; start = end + 1) {
            paths.insert(run.output.substr(start + tree.str().size() + 1, end - start - tree.str().size() - 1));
        }
        return paths;
    }

    testing::TempDir tree;
};

using Paths = std::set<std::string>;

TEST_F(KindCriteriaTest, KindWordsFindExactlyTheirItems) {
    // Any text known of the kind counts, and "appimage" holds "image".
    EXPECT_EQ(found(": is image"),
              (Paths{"photos/holiday.JPG", "photos/scan.heic", "photos/raw.nef", "logo.svg", "tool.AppImage"}));
    EXPECT_EQ(found(": is pdf"), (Paths{"report.pdf"}));
    EXPECT_EQ(found(": is music"), (Paths{"song.mp3", "song.flac"}));
    EXPECT_EQ(found(": is video"), (Paths{"film.mkv", "clip.mp4"}));
    EXPECT_EQ(found(": is archive"), (Paths{"backup.tar.gz"}));
    EXPECT_EQ(found(": is source"), (Paths{"main.py"}));
    EXPECT_EQ(found(": is text"), (Paths{"main.py", "notes.txt"}));
    EXPECT_EQ(found(": is app"), (Paths{"editor.desktop", "tool.AppImage", "Tool.app"}));
    EXPECT_EQ(found(": is spreadsheet"), (Paths{"sheet.xlsx"}));
}

TEST_F(KindCriteriaTest, KindsCombineWithWordsAndEachOther) {
    EXPECT_EQ(found("song : is music"), (Paths{"song.mp3", "song.flac"}));
    EXPECT_EQ(found(": is pdf OR is video"), (Paths{"report.pdf", "film.mkv", "clip.mp4"}));
    EXPECT_EQ(found(": is image AND NOT inside photos"), (Paths{"logo.svg", "tool.AppImage"}));
}

TEST(KindCriteriaExplain, AKindWordRoundTrips) {
    const auto run = runQuester("explain --json 'report : is pdf'");
    ASSERT_EQ(run.status, 0) << run.output;
    const auto explanation = nlohmann::json::parse(run.output, nullptr, false);
    ASSERT_FALSE(explanation.is_discarded()) << run.output;
    EXPECT_EQ(explanation["commands"], nlohmann::json::parse(R"([{"type": "UTICommand", "text": "is pdf"}])"));
    EXPECT_EQ(explanation["searchWords"], nlohmann::json({"report"}));
}

}  // namespace
}  // namespace quester
