#include <CLI/CLI.hpp>

#include <cstdio>
#include <string>

#include "ExplainCommand.h"
#include "SearchCommand.h"

namespace {

constexpr const char* kDescription =
    "Quester: fast desktop file search.\n"
    "Words before a colon match names; the sentence after it adds criteria,\n"
    "as in: quester search 'budget .xlsx : modified today bigger than 1mb'";

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{kDescription, "quester"};
    app.set_version_flag("--version", std::string("quester ") + QUESTER_VERSION);
    app.require_subcommand(0, 1);
    int exitStatus = 0;
    quester::cli::addSearchCommand(app, exitStatus);
    quester::cli::addExplainCommand(app, exitStatus);

    CLI11_PARSE(app, argc, argv);
    if (app.get_subcommands().empty()) {
        std::fputs(app.help().c_str(), stdout);
    }
    return exitStatus;
}
