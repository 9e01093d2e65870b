#include <gtest/gtest.h>

#include <ctime>
#include <filesystem>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "support/LogFunc.h"
#include "support/Logger.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;
using quester::testing::readFile;

Clock::TimePoint localTime(int year, int month, int day, int hour, int minute, int second) {
    std::tm parts{};
    parts.tm_year = year - 1900;
    parts.tm_mon = month - 1;
    parts.tm_mday = day;
    parts.tm_hour = hour;
    parts.tm_min = minute;
    parts.tm_sec = second;
    parts.tm_isdst = -1;
    return std::chrono::system_clock::from_time_t(std::mktime(&parts));
}

// A logger over a temp caches folder, a hand-driven clock and file creation
// dates that the test sets.
class LoggerFixture : public ::testing::Test {
protected:
    LoggerFixture() : clock(localTime(2024, 7, 3, 14, 5, 9)), logger(environment()) {}

    Logger::Environment environment() {
        Logger::Environment env = Logger::Environment::standard();
        env.cachesDirectory = [this]() -> Result<std::string> {
            if (cachesMissing) return makeError(ErrorCode::notFound, "no caches");
            return caches.str();
        };
        env.clock = &clock;
        env.loop = &loop;
        env.creationDate = [this](const std::string& path) -> std::optional<Clock::TimePoint> {
            if (!fs::exists(path)) return std::nullopt;
            auto found = creationDates.find(fs::path(path).filename().string());
            if (found == creationDates.end()) return std::nullopt;
            return found->second;
        };
        env.systemLog = [this](const std::string& message) { systemLog.push_back(message); };
        env.echo = &echo;
        return env;
    }

    fs::path today() const { return caches.path() / "Today's Log.txt"; }
    fs::path previous() const { return caches.path() / "Previous Log.txt"; }

    quester::testing::TempDir caches;
    ManualClock clock;
    MainLoop loop;
    std::map<std::string, Clock::TimePoint> creationDates;
    std::vector<std::string> systemLog;
    std::ostringstream echo;
    bool cachesMissing = false;
    Logger logger;
};

TEST(LoggerTime, HourWithoutLeadingZeroAndNoColonBeforeMinutes) {
    EXPECT_EQ(Logger::formatTime(localTime(2024, 7, 3, 14, 5, 9) + 250ms), "3/7 1405:09.250");
    EXPECT_EQ(Logger::formatTime(localTime(2024, 12, 25, 9, 0, 0) + 7ms), "25/12 900:00.007");
    EXPECT_EQ(Logger::formatTime(localTime(2024, 1, 1, 0, 59, 59) + 999ms), "1/1 059:59.999");
}

TEST_F(LoggerFixture, LinesGetTimeBlankTabAndOneNewline) {
    logger.log("SearchManager search:212 start");
    logger.log("already ended\n");
    EXPECT_EQ(readFile(today()), "3/7 1405:09.000 \tSearchManager search:212 start\n3/7 1405:09.000 \talready ended\n");
    EXPECT_EQ(echo.str(), "SearchManager search:212 start\nalready ended\n");
    EXPECT_TRUE(systemLog.empty());
}

// A log whose creation date can't be read is appended to, however late it is.
TEST_F(LoggerFixture, OnlyALogCreatedBeforeTodayIsRenamedReplacingTheOlderPrevious) {
    const struct {
        std::optional<Clock::TimePoint> created;
        bool renamed;
    } cases[] = {{clock.now() - 24h, true}, {localTime(2024, 7, 3, 0, 0, 1), false}, {std::nullopt, false}};
    for (const auto& [created, renamed] : cases) {
        caches.write("Previous Log.txt", "two days ago\n");
        caches.write("Today's Log.txt", "older\n");
        if (created)
            creationDates["Today's Log.txt"] = *created;
        else
            creationDates.clear();
        logger.log("new");
        EXPECT_EQ(readFile(previous()), renamed ? "older\n" : "two days ago\n");
        EXPECT_EQ(readFile(today()), (renamed ? "" : "older\n") + std::string("3/7 1405:09.000 \tnew\n"));
    }
    EXPECT_TRUE(systemLog.empty());
}

TEST_F(LoggerFixture, MalformedUtf8GoesToTheSystemLogNotTheFile) {
    logger.log("bad \xC3\x28 byte");
    EXPECT_FALSE(fs::exists(today()));
    EXPECT_EQ(systemLog, std::vector<std::string>{"Logger: Couldn't convert message to UTF8."});
}

TEST_F(LoggerFixture, AnUnopenableLogIsReportedAndTheCallReturns) {
    fs::create_directory(today());
    logger.log("nowhere to go");
    ASSERT_EQ(systemLog.size(), 1u);
    EXPECT_EQ(systemLog[0], "Logger: Can't open log file: " + today().string());
}

TEST_F(LoggerFixture, WithoutACachesFolderNothingIsWrittenAndNothingReported) {
    cachesMissing = true;
    logger.log("lost");
    EXPECT_TRUE(systemLog.empty());
    EXPECT_FALSE(logger.logURLs().has_value());
    EXPECT_TRUE(fs::is_empty(caches.path()));
}

class RecordingDelegate : public LogDelegate {
public:
    void logDidAddLine(const std::string& line) override { lines.push_back(line); }
    std::vector<std::string> lines;
};

TEST_F(LoggerFixture, DelegatesAreToldOnTheLoopAndDroppedWhenGone) {
    auto kept = std::make_shared<RecordingDelegate>();
    auto removed = std::make_shared<RecordingDelegate>();
    auto gone = std::make_shared<RecordingDelegate>();
    logger.addDelegate(kept);
    logger.addDelegate(removed);
    logger.addDelegate(gone);
    logger.removeDelegate(removed.get());
    gone.reset();
    logger.log("hello");
    EXPECT_TRUE(kept->lines.empty()) << "only on the loop";
    loop.runPending();
    EXPECT_EQ(kept->lines, std::vector<std::string>{"3/7 1405:09.000 \thello\n"});
    EXPECT_TRUE(removed->lines.empty());
}

TEST_F(LoggerFixture, LinesFromManyThreadsNeverMix) {
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 100; ++i) logger.log(std::string(200, static_cast<char>('a' + t)));
        });
    }
    for (auto& thread : threads) thread.join();
    std::istringstream lines(readFile(today()));
    std::string line;
    int count = 0;
    while (std::getline(lines, line)) {
        ++count;
        std::string body = line.substr(line.find('\t') + 1);
        EXPECT_EQ(body, std::string(200, body[0]));
    }
    EXPECT_EQ(count, 400);
}

TEST(LogFunc, MessageIsFileStemFunctionLineAndText) {
    EXPECT_EQ(logMessage("start", "/Users/x/Query/SearchManager.swift", 212, "search(_:)"),
              "SearchManager search:212 start");
    EXPECT_EQ(logMessage("m", "/a/b.c/d/Thing.cpp", 7, "void quester::Thing::run(int) const"), "Thing run:7 m");
    EXPECT_EQ(logMessage("m", "Plain.h", 1, "noParentheses"), "Plain noParentheses:1 m");
    EXPECT_EQ(logMessage("m", "/x/notes.txt", 3, "f()"), "notes.txt f:3 m");
}

TEST(LogFunc, OnTheSharedLoggerWritesToTheCachesFolderAndOffBuildsNoMessage) {
    auto urls = Logger::shared().logURLs();
    ASSERT_TRUE(urls.has_value());
    ASSERT_FALSE(Logger::shouldLog);
    int built = 0;
    auto message = [&] {
        ++built;
        return std::string("not logged");
    };
    LOG(message());
    EXPECT_EQ(built, 0);
    Logger::shouldLog = true;
    LOG("logged from the test");
    Logger::shouldLog = false;
    std::string contents = readFile(urls->currentLogURL);
    EXPECT_NE(contents.find("LoggerTest "), std::string::npos) << contents;
    EXPECT_NE(contents.find(" logged from the test\n"), std::string::npos) << contents;
    EXPECT_EQ(contents.find("not logged"), std::string::npos);
}

TEST(FileCreationDate, NoneForAMissingFileAndAboutNowForAFreshOne) {
    EXPECT_FALSE(fileCreationDate("/nonexistent/quester/file").has_value());
    quester::testing::TempDir folder;
    auto created = fileCreationDate(folder.write("fresh.txt", "x").string());
    if (!created) GTEST_SKIP() << "this file system keeps no birth times";
    auto now = std::chrono::system_clock::now();
    EXPECT_LT(*created, now + 1h);
    EXPECT_GT(*created, now - 1h);
}

}  // namespace
}  // namespace quester
