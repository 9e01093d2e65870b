#include "Terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>

#include <cstdlib>
#include <cstring>
#include <limits>

namespace quester::cli {

namespace {

bool isSetAndNotEmpty(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr && value[0] != '\0';
}

}  // namespace

void Terminal::addColorOption(CLI::App& command, std::string& choice) {
    command
        .add_option("--color", choice,
                    "Colour: auto (on a terminal, unless NO_COLOR is set or TERM is dumb), always or never")
        ->transform(CLI::IsMember({"auto", "always", "never"}, CLI::ignore_case));
}

bool Terminal::isTerminal(int fd) {
    return ::isatty(fd) == 1;
}

bool Terminal::takesCursorMovement(int fd) {
    const char* term = std::getenv("TERM");
    return isTerminal(fd) && !(term != nullptr && std::strcmp(term, "dumb") == 0);
}

bool Terminal::wantsColour(const std::string& choice, int fd) {
    if (choice == "always") return true;
    if (choice == "never") return false;
    return takesCursorMovement(fd) && !isSetAndNotEmpty("NO_COLOR");
}

std::size_t Terminal::outputWidth() {
    if (!isTerminal(STDOUT_FILENO)) return std::numeric_limits<std::size_t>::max();
    winsize size{};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
    if (const char* columns = std::getenv("COLUMNS")) {
        const long value = std::strtol(columns, nullptr, 10);
        if (value > 0) return static_cast<std::size_t>(value);
    }
    return 80;
}

}  // namespace quester::cli
