#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "support/AppDirectories.h"
#include "support/GuruMeditation.h"
#include "testing/EnvironmentVariable.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

std::vector<std::string> splitLines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    std::string line;
    while (std::getline(stream, line)) lines.push_back(line);
    return lines;
}

TEST(GuruMeditation, DetailedStringHasTheSevenLinesInOrder) {
    GMTrace crumbs;
    int line = __LINE__ + 1;
    crumbs.add("opened cache");
    crumbs.add("searched");
    auto text = GuruMeditation::errorToDetailedString(makeError(ErrorCode::corrupt, "Bad page"), &crumbs,
                                                      "/a/b/SearchManager.cpp", 42);
    auto lines = splitLines(text);
    ASSERT_EQ(lines.size(), 7u) << text;
    EXPECT_TRUE(lines[0].ends_with(" error details:")) << lines[0];
    EXPECT_EQ(lines[1], "File: SearchManager  Line: 42");
    EXPECT_EQ(lines[2], "Trace: GuruMeditationTest:" + std::to_string(line) +
                            " opened cache,GuruMeditationTest:" + std::to_string(line + 1) + " searched");
    EXPECT_EQ(lines[3], "Bad page (corrupt)");
    EXPECT_TRUE(lines[4].starts_with("OS: Linux ")) << lines[4];
    EXPECT_TRUE(lines[5].starts_with("Mac Cores: ")) << lines[5];
    EXPECT_NE(lines[5].find("  Arch: "), std::string::npos);
    EXPECT_EQ(lines[6], std::string(39, '-'));
    EXPECT_FALSE(text.ends_with("\n"));

    lines = splitLines(GuruMeditation::errorToDetailedString(makeError(ErrorCode::internal, ""), nullptr, "X.cpp", 1));
    ASSERT_EQ(lines.size(), 7u);
    EXPECT_EQ(lines[2], "Trace: ") << "without crumbs";
    EXPECT_EQ(lines[3], "internal");
}

TEST(GuruMeditation, StartClearsEarlierCrumbs) {
    GMTrace crumbs;
    crumbs.add("old");
    crumbs.start("new");
    EXPECT_EQ(crumbs.description(), "GuruMeditationTest:" + std::to_string(__LINE__ - 1) + " new");
    crumbs.clear();
    EXPECT_EQ(crumbs.description(), "");
}

TEST(GuruMeditation, AlertsAppendReportsToAFileInTheCachesFolder) {
    ::testing::internal::CaptureStderr();
    auto first = GuruMeditation::showErrorAlert(makeError(ErrorCode::ioError, "first failure"));
    auto second = GuruMeditation::showErrorAlert(makeError(ErrorCode::ioError, "second failure"));
    std::string printed = ::testing::internal::GetCapturedStderr();
    ASSERT_TRUE(first && second);
    EXPECT_EQ(*first, *second);
    EXPECT_EQ(std::filesystem::path(*first).parent_path(), *AppDirectories::appCachesDirectory());
    const std::string contents = quester::testing::readFile(*first);
    EXPECT_LT(contents.find("first failure"), contents.find("second failure"));
    EXPECT_NE(contents.find("File: GuruMeditationTest  Line: "), std::string::npos);
    EXPECT_NE(printed.find("second failure (ioError)"), std::string::npos);
}

TEST(GuruMeditation, AReportThatCantBeWrittenStillReachesStandardError) {
    quester::testing::TempDir home;
    home.write("cache", "a file where the caches folder should be");
    quester::testing::EnvironmentVariable questerHome("QUESTER_HOME", home.str());
    ::testing::internal::CaptureStderr();
    auto written = GuruMeditation::showErrorAlert(makeError(ErrorCode::internal, "lost report"));
    std::string printed = ::testing::internal::GetCapturedStderr();
    EXPECT_FALSE(written.has_value());
    EXPECT_NE(printed.find("lost report (internal)"), std::string::npos);
    EXPECT_NE(printed.find("Can't create folder"), std::string::npos) << printed;
}

}  // namespace
}  // namespace quester
