#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "CacheCommand.h"
#include "DashedQuery.h"
#include "ExitStatus.h"
#include "ExplainCommand.h"
#include "SearchCommand.h"
#include "TextCommand.h"

namespace {

using quester::cli::ExitStatus;

constexpr const char* kDescription =
    "Quester: fast desktop file search.\n"
    "Words before a colon match names; the sentence after it adds criteria,\n"
    "as in: quester search 'budget .xlsx : modified today bigger than 1mb'";

int runCommandLine(int argc, char** argv) {
    CLI::App app{kDescription, "quester"};
    app.set_version_flag("--version", std::string("quester ") + QUESTER_VERSION);
    app.footer(quester::cli::exitStatusHelp);
    app.require_subcommand(0, 1);
    int exitStatus = ExitStatus::found;
    quester::cli::addSearchCommand(app, exitStatus);
    quester::cli::addExplainCommand(app, exitStatus);
    quester::cli::addTextCommand(app, exitStatus);
    quester::cli::addCacheCommand(app, exitStatus);

    const std::vector<std::string> arguments =
        quester::cli::withDashedQueryExplicit(app, std::vector<std::string>(argv, argv + argc));
    std::vector<const char*> pointers;
    for (const auto& argument : arguments) pointers.push_back(argument.c_str());
    try {
        app.parse(static_cast<int>(pointers.size()), pointers.data());
    } catch (const CLI::ParseError& error) {
        // Help and the version are answers, not errors.
        return app.exit(error) == 0 ? ExitStatus::found : ExitStatus::failed;
    }
    if (app.get_subcommands().empty()) std::fputs(app.help().c_str(), stdout);
    return exitStatus;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return runCommandLine(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "quester: unexpected error: %s\n", error.what());
        return ExitStatus::failed;
    }
}
