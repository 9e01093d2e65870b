#include "StatsCommand.h"

#include <CLI/CLI.hpp>

#include <unistd.h>

#include <array>
#include <cstdio>
#include <memory>
#include <string>

#include <fmt/format.h>

#include "results/DisplayText.h"
#include "stores/QueryStatisticsController.h"

#include "ExitStatus.h"
#include "Terminal.h"

namespace quester::cli {
namespace {

// The sources by their raw value, as the statistics keep them.
std::string supplierName(int supplier) {
    static constexpr std::array<const char*, 13> names{
        "none",          "file system",   "metadata index", "metadata content", "recent item",
        "compact cache", "known folders", "sql cache",      "applications",     "sidebar",
        "disk cache",    "mail",          "live cache"};
    return supplier >= 0 && supplier < static_cast<int>(names.size()) ? names[static_cast<std::size_t>(supplier)]
                                                                      : std::to_string(supplier);
}

void printTable(const std::vector<QueryStatistic>& all) {
    const bool onTerminal = Terminal::isTerminal(STDOUT_FILENO);
    for (const auto& statistic : all) {
        std::printf("%s\n", (onTerminal ? terminalSafeText(statistic.rawQuery) : statistic.rawQuery).c_str());
        for (const auto& run : statistic.results) {
            std::printf("  %s\n", iso8601Text(run.date).c_str());
            for (const auto& source : run.durations) {
                std::printf(
                    "%s",
                    fmt::format("    {:<18} {} s\n", supplierName(source.supplier), source.durationInSeconds).c_str());
            }
        }
    }
}

int printStatistics(const std::string& format) {
    auto& controller = QueryStatisticsController::shared();
    controller.load();
    const auto all = controller.all();
    if (format == "json") {
        for (const auto& statistic : all) std::printf("%s\n", statistic.toJSON().dump().c_str());
    } else {
        printTable(all);
    }
    return all.empty() ? ExitStatus::nothingFound : ExitStatus::found;
}

}  // namespace

void addStatsCommand(CLI::App& app, int& exitStatus) {
    auto format = std::make_shared<std::string>("table");
    CLI::App* stats = app.add_subcommand("stats", "How long each search source took, by query and run");
    stats->require_subcommand(0, 1);
    stats->add_option("--format", *format, "Output: table or json (one query a line)")
        ->transform(CLI::IsMember({"table", "json"}, CLI::ignore_case));
    stats->add_subcommand("clear", "Forget the statistics")->callback([&exitStatus] {
        QueryStatisticsController::shared().clear();
        exitStatus = ExitStatus::found;
    });
    stats->callback([stats, format, &exitStatus] {
        if (stats->get_subcommands().empty()) exitStatus = printStatistics(*format);
    });
}

}  // namespace quester::cli
