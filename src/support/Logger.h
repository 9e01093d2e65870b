#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "support/Clock.h"
#include "support/Locked.h"
#include "support/MainLoop.h"
#include "support/Result.h"
#include "support/WeakObject.h"

namespace quester {

// Told of each new log line, on the main loop. The log window is one.
class LogDelegate {
public:
    virtual ~LogDelegate() = default;
    virtual void logDidAddLine(const std::string& line) = 0;
};

// The daily diagnostic log: "Today's Log.txt" in the caches folder, with the
// day before kept as "Previous Log.txt" (two generations, no more). Each line
// opens, appends to and closes the file, so the day test runs at every line
// and a long-running process changes files at the first line after midnight.
// Logging never fails the caller: its own failures go to the system log.
//
// `log` may be called from any thread; whole lines may interleave but never
// mix. Most code logs through LogFunc / LOG (LogFunc.h), which cost one test
// while `shouldLog` is off.
class Logger {
public:
    // Where a logger writes and what it leans on; tests swap parts out.
    struct Environment {
        std::function<Result<std::string>()> cachesDirectory;
        const Clock* clock;
        MainLoop* loop;
        // The file's creation (birth) time, none when it can't be read.
        std::function<std::optional<Clock::TimePoint>(const std::string& path)> creationDate;
        // Reports the logger's own failures (syslog).
        std::function<void(const std::string& message)> systemLog;
        // Each message is echoed here (standard error, so that a command's
        // standard output stays clean); null for no echo.
        std::ostream* echo;

        static Environment standard();
    };

    struct LogURLs {
        std::string currentLogURL;
        std::string yesterdayLogURL;
    };

    // The master switch, off at start.
    static inline std::atomic<bool> shouldLog{false};

    explicit Logger(Environment environment = Environment::standard());
    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;

    static Logger& shared();

    // Writes one finished line: the time ("d/M Hmm:ss.SSS", local time), a
    // blank, a tab and the message, with a newline added unless it has one.
    void log(std::string_view message);

    // The two files in the caches folder; none when that folder can't be had.
    std::optional<LogURLs> logURLs() const;

    // Held weakly; a delegate that has gone is dropped at the next line.
    void addDelegate(const std::shared_ptr<LogDelegate>& delegate);
    void removeDelegate(const LogDelegate* delegate);

    // "3/7 1405:09.250" for 3 July 14:05:09.250 local time. No colon between
    // hour and minutes, the hour without a leading zero.
    static std::string formatTime(Clock::TimePoint time);

private:
    using Delegates = std::vector<WeakObject<LogDelegate>>;

    void echo(std::string_view message);
    void tellDelegates(const std::string& line);
    void rotateIfOlderThanToday(const LogURLs& urls);
    void append(const std::string& path, const std::string& line);

    Environment environment;
    // Streams are not thread-safe; whole messages go out one at a time.
    Lock echoLock;
    std::shared_ptr<Locked<Delegates>> delegates = std::make_shared<Locked<Delegates>>();
};

// The creation time of a file through statx; none when the file system or the
// kernel doesn't tell it.
std::optional<Clock::TimePoint> fileCreationDate(const std::string& path);

}  // namespace quester
