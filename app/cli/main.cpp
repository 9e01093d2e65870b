#include <CLI/CLI.hpp>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "stores/Preferences.h"
#include "support/GuruMeditation.h"
#include "support/Logger.h"

#include "CacheCommand.h"
#include "ConfigCommand.h"
#include "DashedQuery.h"
#include "ExitStatus.h"
#include "ExplainCommand.h"
#include "FavoriteCommand.h"
#include "GroupCommand.h"
#include "HistoryCommand.h"
#include "IgnoreCommand.h"
#include "SavedCommand.h"
#include "SearchCommand.h"
#include "StatsCommand.h"
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
    // Options of the whole program may stand after the subcommand's too.
    app.fallthrough();
    app.add_flag_callback(
        "--log", [] { quester::Logger::shouldLog = true; },
        "Write the daily log (\"Today's Log.txt\" in the caches folder), as the setting loggingEnabled does");
    int exitStatus = ExitStatus::found;
    quester::cli::addSearchCommand(app, exitStatus);
    quester::cli::addExplainCommand(app, exitStatus);
    quester::cli::addTextCommand(app, exitStatus);
    quester::cli::addCacheCommand(app, exitStatus);
    quester::cli::addHistoryCommand(app, exitStatus);
    quester::cli::addSavedCommand(app, exitStatus);
    quester::cli::addGroupCommand(app, exitStatus);
    quester::cli::addFavoriteCommand(app, exitStatus);
    quester::cli::addIgnoreCommand(app, exitStatus);
    quester::cli::addConfigCommand(app, exitStatus);
    quester::cli::addStatsCommand(app, exitStatus);

    const std::vector<std::string> arguments =
        quester::cli::withDashedQueryExplicit(app, std::vector<std::string>(argv, argv + argc));
    std::vector<const char*> pointers;
    pointers.reserve(arguments.size());
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

// The settings' registered defaults answer for what the user never set; the
// log is on when the setting says so, before any subcommand runs.
void applySettings() {
    auto& preferences = quester::Preferences::shared();
    preferences.registerDefaults(quester::Preferences::registeredDefaultsTable());
    if (preferences.boolValue("loggingEnabled")) quester::Logger::shouldLog = true;
}

// An unexpected internal failure ends the command with a report for support,
// kept in a file whose path is printed, rather than with an abort.
int reportInternalFailure(const std::string& what) {
    const auto report = quester::GuruMeditation::showErrorAlert(quester::makeError(quester::ErrorCode::internal, what));
    if (report)
        std::fprintf(stderr, "quester: an internal failure stopped the command; the report is in %s\n",
                     report->c_str());
    return ExitStatus::failed;
}

// What an exception that escapes a worker thread, or any other way to
// std::terminate, leaves: the same report, and the failure status.
[[noreturn]] void reportTermination() {
    std::string what = "the program was terminated";
    if (auto current = std::current_exception()) {
        try {
            std::rethrow_exception(current);
        } catch (const std::exception& error) {
            what = std::string("an exception escaped a thread: ") + error.what();
        } catch (...) {
            what = "an exception of an unknown type escaped a thread";
        }
    }
    (void)reportInternalFailure(what);
    std::_Exit(ExitStatus::failed);
}

}  // namespace

int main(int argc, char** argv) {
    std::set_terminate(reportTermination);
    try {
        applySettings();
        return runCommandLine(argc, argv);
    } catch (const std::exception& error) {
        return reportInternalFailure(error.what());
    } catch (...) {
        return reportInternalFailure("an exception of an unknown type");
    }
}
