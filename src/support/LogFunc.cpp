#include "support/LogFunc.h"

#include "support/SourceLocation.h"

namespace quester {
namespace {

// "void quester::SearchManager::search(int)" gives "search"; "search(_:)"
// gives "search"; a name without "(" stays whole.
std::string_view bareFunctionName(std::string_view funcy) {
    std::string_view name = funcy.substr(0, funcy.find('('));
    auto blank = name.rfind(' ');
    if (blank != std::string_view::npos) name.remove_prefix(blank + 1);
    auto qualifier = name.rfind("::");
    if (qualifier != std::string_view::npos) name.remove_prefix(qualifier + 2);
    return name;
}

}  // namespace

std::string logMessage(std::string_view message, std::string_view filePath, unsigned line, std::string_view funcy) {
    std::string text = sourceFileStem(filePath);
    text += ' ';
    text += bareFunctionName(funcy);
    text += ':';
    text += std::to_string(line);
    text += ' ';
    text += message;
    return text;
}

void LogFunc(std::string_view message, std::string_view filePath, unsigned line, std::string_view funcy) {
    if (!Logger::shouldLog.load(std::memory_order_relaxed)) return;
    Logger::shared().log(logMessage(message, filePath, line, funcy));
}

}  // namespace quester
