#pragma once

#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "testing/TempDir.h"

namespace quester::testing {

// How a run of the built command ended, and what it printed.
struct QuesterProcess {
    int status = -1;  // the exit status; -1 when it ended by a signal
    std::string out;
    std::string err;

    // Runs `binary` with `arguments` through the shell, each argument quoted,
    // after `environment` ("NAME='value' ..."). Standard output and error go
    // through files in `scratch`. Header-only: the binary's path is a
    // definition of each test target.
    static QuesterProcess run(const std::string& binary, const std::vector<std::string>& arguments,
                              const TempDir& scratch, const std::string& environment = "") {
        std::string command = environment + quoted(binary);
        for (const auto& argument : arguments) command += " " + quoted(argument);
        const std::string outPath = scratch.str() + "/out", errPath = scratch.str() + "/err";
        command += " >" + quoted(outPath) + " 2>" + quoted(errPath);
        QuesterProcess outcome;
        const int raw = std::system(command.c_str());
        outcome.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
        outcome.out = slurp(outPath);
        outcome.err = slurp(errPath);
        return outcome;
    }

    // `text` in single quotes for the shell, its own single quotes kept.
    static std::string quoted(const std::string& text) {
        std::string quoted = "'";
        for (char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
        return quoted + "'";
    }

private:
    static std::string slurp(const std::string& path) {
        std::ifstream in(path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), {});
    }
};

}  // namespace quester::testing
