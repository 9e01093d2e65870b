#include "support/Logger.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <iostream>

#include <fmt/format.h>

#include "support/AppDirectories.h"
#include "support/Utf8Text.h"

namespace quester {
namespace {

constexpr const char* kTodayName = "Today's Log.txt";
constexpr const char* kPreviousName = "Previous Log.txt";

void writeToSystemLog(const std::string& message) {
    syslog(LOG_USER | LOG_ERR, "%s", message.c_str());
}

std::tm localTime(Clock::TimePoint time) {
    std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    std::tm local{};
    localtime_r(&seconds, &local);
    return local;
}

bool isSameLocalDay(Clock::TimePoint a, Clock::TimePoint b) {
    std::tm first = localTime(a);
    std::tm second = localTime(b);
    return first.tm_year == second.tm_year && first.tm_yday == second.tm_yday;
}

}  // namespace

std::optional<Clock::TimePoint> fileCreationDate(const std::string& path) {
    struct statx attributes {};
    if (statx(AT_FDCWD, path.c_str(), 0, STATX_BTIME, &attributes) != 0) return std::nullopt;
    // Some file systems claim a birth time and give zero: that is no date.
    if (!(attributes.stx_mask & STATX_BTIME) || attributes.stx_btime.tv_sec == 0) return std::nullopt;
    auto sinceEpoch =
        std::chrono::seconds(attributes.stx_btime.tv_sec) + std::chrono::nanoseconds(attributes.stx_btime.tv_nsec);
    return Clock::TimePoint(std::chrono::duration_cast<Clock::Duration>(sinceEpoch));
}

Logger::Environment Logger::Environment::standard() {
    return Environment{&AppDirectories::appCachesDirectory,
                       &SystemClock::shared(),
                       &MainLoop::shared(),
                       &fileCreationDate,
                       &writeToSystemLog,
                       &std::cerr};
}

Logger::Logger(Environment environment) : environment(std::move(environment)) {}

Logger& Logger::shared() {
    static Logger logger;
    return logger;
}

std::string Logger::formatTime(Clock::TimePoint time) {
    std::tm local = localTime(time);
    auto sinceEpoch = time.time_since_epoch();
    auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(
        sinceEpoch - std::chrono::floor<std::chrono::seconds>(sinceEpoch));
    return fmt::format("{}/{} {}{:02}:{:02}.{:03}", local.tm_mday, local.tm_mon + 1, local.tm_hour, local.tm_min,
                       local.tm_sec, milliseconds.count());
}

void Logger::log(std::string_view message) {
    std::string line = formatTime(environment.clock->now()) + " \t" + std::string(message);
    if (line.back() != '\n') line += '\n';
    tellDelegates(line);
    echo(message);
    if (!isValidUTF8(line)) {
        environment.systemLog("Logger: Couldn't convert message to UTF8.");
        return;
    }
    auto urls = logURLs();
    if (!urls) return;
    rotateIfOlderThanToday(*urls);
    append(urls->currentLogURL, line);
}

std::optional<Logger::LogURLs> Logger::logURLs() const {
    auto caches = environment.cachesDirectory();
    if (!caches) return std::nullopt;
    auto folder = std::filesystem::path(*caches);
    return LogURLs{(folder / kTodayName).string(), (folder / kPreviousName).string()};
}

void Logger::addDelegate(const std::shared_ptr<LogDelegate>& delegate) {
    delegates->access([&](Delegates& list) { list.emplace_back(delegate); });
}

void Logger::removeDelegate(const LogDelegate* delegate) {
    delegates->access([&](Delegates& list) {
        std::erase_if(list, [&](const auto& weak) { return !weak.isAlive() || weak.refersTo(delegate); });
    });
}

void Logger::echo(std::string_view message) {
    if (!environment.echo) return;
    std::string text(message);
    if (!text.ends_with('\n')) text += '\n';
    LockGuard guard(echoLock);
    *environment.echo << text << std::flush;
}

void Logger::tellDelegates(const std::string& line) {
    // Nothing is posted without delegates: a command line that never runs the
    // loop would otherwise pile up every line.
    if (delegates->access([](const Delegates& list) { return list.empty(); })) return;
    environment.loop->post([list = delegates, line] {
        std::vector<std::shared_ptr<LogDelegate>> alive;
        list->access([&](Delegates& current) {
            std::erase_if(current, [](const auto& weak) { return !weak.isAlive(); });
            for (const auto& weak : current)
                if (auto delegate = weak.value()) alive.push_back(std::move(delegate));
        });
        for (const auto& delegate : alive) delegate->logDidAddLine(line);
    });
}

// A log whose creation date can't be read is appended to, never rotated.
void Logger::rotateIfOlderThanToday(const LogURLs& urls) {
    auto created = environment.creationDate(urls.currentLogURL);
    if (!created || isSameLocalDay(*created, environment.clock->now())) return;
    std::error_code error;
    if (std::filesystem::exists(urls.yesterdayLogURL, error)) {
        std::filesystem::remove(urls.yesterdayLogURL, error);
        if (error) environment.systemLog("Logger: Remove yesterday failed: " + error.message());
    }
    std::filesystem::rename(urls.currentLogURL, urls.yesterdayLogURL, error);
    if (error) environment.systemLog("Logger: Rename current to yesterday failed: " + error.message());
}

void Logger::append(const std::string& path, const std::string& line) {
    int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (file < 0) {
        environment.systemLog("Logger: Can't open log file: " + path);
        return;
    }
    // One write per line, so lines from other threads never mix inside one.
    std::size_t written = 0;
    while (written < line.size()) {
        ssize_t result = ::write(file, line.data() + written, line.size() - written);
        if (result < 0 && errno == EINTR) continue;
        if (result <= 0) {
            environment.systemLog(fmt::format("Logger: Write to log file failed: {}", std::strerror(errno)));
            break;
        }
        written += static_cast<std::size_t>(result);
    }
    ::close(file);
}

}  // namespace quester
