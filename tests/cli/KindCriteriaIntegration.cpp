#include <gtest/gtest.h>

#include <set>
#include <string>

#include <nlohmann/json.hpp>

#include "testing/QuesterProcess.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

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
        const auto run = testing::QuesterProcess::run(
            QUESTER_BINARY, {"search", query, "--in", tree.str(), "--format", "paths"}, scratch);
        std::set<std::string> paths;
        std::size_t start = 0;
        for (std::size_t end; (end = run.out.find('\n', start)) != std::string::npos; start = end + 1) {
            paths.insert(run.out.substr(start + tree.str().size() + 1, end - start - tree.str().size() - 1));
        }
        EXPECT_EQ(run.status, paths.empty() ? 1 : 0) << query << ": " << run.err;
        return paths;
    }

    testing::TempDir tree;
    testing::TempDir scratch;
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
    const testing::TempDir scratch;
    const auto run = testing::QuesterProcess::run(QUESTER_BINARY, {"explain", "--json", "report : is pdf"}, scratch);
    ASSERT_EQ(run.status, 0) << run.err;
    const auto explanation = nlohmann::json::parse(run.out, nullptr, false);
    ASSERT_FALSE(explanation.is_discarded()) << run.out;
    EXPECT_EQ(explanation["commands"],
              nlohmann::json::parse(R"([{"type": "UTICommand", "text": "is pdf", "available": true}])"));
    EXPECT_EQ(explanation["searchWords"], nlohmann::json({"report"}));
}

}  // namespace
}  // namespace quester
