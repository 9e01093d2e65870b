#include "HistoryCommand.h"

#include <CLI/CLI.hpp>

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <memory>
#include <string>

#include <fmt/format.h>

#include "results/DisplayText.h"
#include "stores/HistoryController.h"
#include "stores/Preferences.h"

#include "Complain.h"
#include "ExitStatus.h"
#include "Terminal.h"

namespace quester::cli {
namespace {

struct HistoryOptions {
    long limit = 0;
    std::string format = "table";
};

// "2024-03-01 09:30" in local time.
std::string localDate(double secondsSince1970) {
    const std::time_t seconds = static_cast<std::time_t>(std::floor(secondsSince1970));
    std::tm local{};
    localtime_r(&seconds, &local);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M", &local);
    return text;
}

nlohmann::json record(const HistoryItem& item) {
    return {{"query", item.query()},
            {"type", item.type == HistoryItem::HistoryType::opened ? "opened" : "query"},
            {"performedDate", item.performedDate},
            {"id", item.id}};
}

int listHistory(const HistoryOptions& options) {
    if (!Preferences::shared().boolValue("historyEnabled")) {
        complain("the history is off ('quester config set historyEnabled true' turns it on)");
        return ExitStatus::nothingFound;
    }
    auto items = HistoryController().items();
    std::reverse(items.begin(), items.end());
    if (options.limit > 0 && items.size() > static_cast<std::size_t>(options.limit)) items.resize(options.limit);
    const bool onTerminal = Terminal::isTerminal(STDOUT_FILENO);
    for (const auto& item : items) {
        const std::string query = onTerminal ? terminalSafeText(item.query()) : item.query();
        const std::string line = options.format == "json" ? record(item).dump()
                                                          : fmt::format("{}  {}", localDate(item.performedDate), query);
        std::printf("%s\n", line.c_str());
    }
    return items.empty() ? ExitStatus::nothingFound : ExitStatus::found;
}

int clearHistory() {
    if (Status cleared = HistoryController().clear(); !cleared) {
        complain("cannot empty the history: " + cleared.error().message);
        return ExitStatus::failed;
    }
    return ExitStatus::found;
}

}  // namespace

void addHistoryCommand(CLI::App& app, int& exitStatus) {
    auto options = std::make_shared<HistoryOptions>();
    CLI::App* history = app.add_subcommand("history", "The searches run lately, newest first");
    history->require_subcommand(0, 1);
    history->add_option("--limit", options->limit, "Print the newest this many")->check(CLI::PositiveNumber);
    history->add_option("--format", options->format, "Output: table (date and query) or json (one record a line)")
        ->transform(CLI::IsMember({"table", "json"}, CLI::ignore_case));
    history->add_subcommand("clear", "Empty the history")->callback([&exitStatus] { exitStatus = clearHistory(); });
    history->callback([history, options, &exitStatus] {
        if (history->get_subcommands().empty()) exitStatus = listHistory(*options);
    });
}

}  // namespace quester::cli
