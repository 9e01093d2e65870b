#pragma once

#include <string>
#include <string_view>

#include "support/Logger.h"
#include "support/SourceLocation.h"

namespace quester {

// The message as it goes into the log: file stem, a blank, the bare function
// name, ":", the line, a blank and the message, as in
// "SearchManager search:212 start". `funcy` may be a full C++ signature
// ("void quester::SearchManager::search(int)"): it is cut at the first "(",
// and return type and qualifiers are dropped.
std::string logMessage(std::string_view message, std::string_view filePath, unsigned line, std::string_view funcy);

// Logs `message` from the given place when logging is on; otherwise returns
// after one test. Any thread.
void LogFunc(std::string_view message, std::string_view filePath, unsigned line, std::string_view funcy);

inline void LogFunc(std::string_view message, SourceLocation where = SourceLocation::current()) {
    if (!Logger::shouldLog.load(std::memory_order_relaxed)) return;
    LogFunc(message, where.file_name(), where.line(), where.function_name());
}

}  // namespace quester

// Logs from the calling line. The message expression is not even evaluated
// while logging is off.
#define LOG(message)                                                             \
    do {                                                                         \
        if (::quester::Logger::shouldLog.load(std::memory_order_relaxed))        \
            ::quester::LogFunc((message), ::quester::SourceLocation::current()); \
    } while (false)
