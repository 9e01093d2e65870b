// `quester search` on a terminal: the command runs on a pseudo-terminal,
// as in a person's shell.
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "testing/QuesterProcess.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

struct TerminalRun {
    int status = -1;
    std::string shown;  // what the terminal got
};

enum class Errors { onTerminal, discarded };

// Runs the command with standard input and output on a new pseudo-terminal of
// 100 columns that passes bytes through unchanged, and standard error there
// too or (with its progress line) discarded. `environment` is set in the
// child ("NAME", "value"; an empty value unsets).
TerminalRun onTerminal(const std::vector<std::string>& arguments,
                       const std::vector<std::pair<std::string, std::string>>& environment = {},
                       Errors errors = Errors::discarded) {
    termios raw{};
    cfmakeraw(&raw);
    winsize size{};
    size.ws_col = 100;
    size.ws_row = 40;
    int terminal = -1;
    const pid_t child = ::forkpty(&terminal, nullptr, &raw, &size);
    if (child == 0) {
        ::setenv("TERM", "xterm", 1);
        ::unsetenv("NO_COLOR");
        for (const auto& [name, value] : environment) {
            if (value.empty()) {
                ::unsetenv(name.c_str());
            } else {
                ::setenv(name.c_str(), value.c_str(), 1);
            }
        }
        if (errors == Errors::discarded) ::freopen("/dev/null", "w", stderr);
        std::vector<char*> argv{const_cast<char*>(QUESTER_BINARY)};
        for (const auto& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
        argv.push_back(nullptr);
        ::execv(QUESTER_BINARY, argv.data());
        ::_exit(127);
    }
    TerminalRun run;
    if (child < 0) return run;
    std::array<char, 4096> buffer;
    // The read fails with EIO once the child has closed the terminal.
    for (ssize_t count; (count = ::read(terminal, buffer.data(), buffer.size())) > 0;) {
        run.shown.append(buffer.data(), static_cast<std::size_t>(count));
    }
    ::close(terminal);
    int status = 0;
    ::waitpid(child, &status, 0);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

class TerminalTest : public ::testing::Test {
protected:
    std::vector<std::string> search(const std::string& query, std::vector<std::string> more = {}) const {
        more.insert(more.begin(), {"search", query, "--in", tree.str()});
        return more;
    }

    testing::TempDir tree;
    testing::TempDir scratch;
};

// A name holding an escape sequence recoloured the screen; a line break split
// its row.
TEST_F(TerminalTest, NamesShowControlCharactersAndBadBytesAsQuestionMarks) {
    tree.write("evil\033[31mred.txt");
    tree.write("line\nbreak.txt");
    tree.write("bad\xff.txt");
    for (const char* format : {"table", "paths"}) {
        const auto run = onTerminal(search("txt", {"--format", format, "--color", "never"}));
        ASSERT_EQ(run.status, 0) << run.shown;
        EXPECT_EQ(run.shown.find('\033'), std::string::npos) << run.shown;
        EXPECT_EQ(run.shown.find('\xff'), std::string::npos) << run.shown;
        EXPECT_NE(run.shown.find("evil?[31mred.txt"), std::string::npos) << run.shown;
        EXPECT_NE(run.shown.find("line?break.txt"), std::string::npos) << run.shown;
        EXPECT_NE(run.shown.find("bad?.txt"), std::string::npos) << run.shown;
    }
    // NUL-separated paths are for programs: byte for byte, even on a terminal.
    const auto nul = onTerminal(search("line", {"-0"}));
    EXPECT_EQ(nul.shown, tree.str() + "/line\nbreak.txt" + '\0');
    // Piped, paths are written as they are.
    const auto piped = testing::QuesterProcess::run(QUESTER_BINARY, search("evil"), scratch);
    EXPECT_EQ(piped.out, tree.str() + "/evil\033[31mred.txt\n");
}

TEST_F(TerminalTest, AnEmptyResultSaysSoOnATerminalOnly) {
    const auto run = onTerminal(search("nothing-like-it"), {}, Errors::onTerminal);
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.shown.find("No results\n"), std::string::npos) << run.shown;
}

// The table's header is bold where colour is wanted; NO_COLOR and --color
// never turn colour off, TERM=dumb every escape sequence (the progress line's
// too); --color always colours a pipe.
TEST_F(TerminalTest, ColourFollowsColorNoColorAndTerm) {
    tree.write("report.pdf");
    const std::string bold = "\033[1m";
    EXPECT_NE(onTerminal(search("report")).shown.find(bold), std::string::npos);
    EXPECT_EQ(onTerminal(search("report"), {{"NO_COLOR", "1"}}).shown.find('\033'), std::string::npos);
    EXPECT_EQ(onTerminal(search("report", {"--color", "never"})).shown.find('\033'), std::string::npos);
    EXPECT_EQ(onTerminal(search("report"), {{"TERM", "dumb"}}, Errors::onTerminal).shown.find('\033'),
              std::string::npos);
    EXPECT_NE(onTerminal(search("report", {"--color", "always"}), {{"NO_COLOR", "1"}}).shown.find(bold),
              std::string::npos);
    const auto piped = testing::QuesterProcess::run(QUESTER_BINARY, search("report", {"--format", "table"}), scratch);
    EXPECT_EQ(piped.out.find('\033'), std::string::npos);
    const auto forced = testing::QuesterProcess::run(
        QUESTER_BINARY, search("report", {"--format", "table", "--color", "always"}), scratch);
    EXPECT_EQ(forced.out.substr(0, bold.size()), bold);
}

}  // namespace
}  // namespace quester
