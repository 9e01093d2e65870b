#include "stores/QueryStatisticsController.h"

#include <algorithm>

#include "platform/AtomicFile.h"
#include "platform/FileSystem.h"
#include "support/AppDirectories.h"
#include "support/LogFunc.h"
#include "support/Uuid.h"

namespace quester {

namespace {

QueryStatistic::Date wholeSeconds(QueryStatistic::Date date) {
    return std::chrono::floor<std::chrono::seconds>(date);
}

}  // namespace

QueryStatisticsController::QueryStatisticsController(std::string path) : filePath(std::move(path)) {}

QueryStatisticsController& QueryStatisticsController::shared() {
    static QueryStatisticsController* controller = [] {
        const auto folder = AppDirectories::applicationSupportDirectoryPath();
        if (!folder) LOG("no data folder for the query statistics: " + folder.error().description());
        auto* made = new QueryStatisticsController(folder ? *folder + "/" + fileName : std::string());
        made->load();
        return made;
    }();
    return *controller;
}

void QueryStatisticsController::load() {
    std::vector<QueryStatistic> loaded;
    const auto text = FileSystem::real().readFile(filePath);
    const auto parsed = nlohmann::json::parse(text.valueOr(""), nullptr, false);
    if (text && parsed.is_array()) {
        for (const auto& item : parsed) {
            auto statistic = QueryStatistic::fromJSON(item);
            if (!statistic) {
                LOG("Statistics load error: " + statistic.error().description());
                loaded.clear();
                break;
            }
            loaded.push_back(std::move(statistic).value());
        }
    }
    statistics.setValue(std::move(loaded));
}

Status QueryStatisticsController::save() const {
    Status status = makeError(ErrorCode::notFound, "no data folder to keep the query statistics in");
    if (!filePath.empty()) {
        nlohmann::ordered_json array = nlohmann::ordered_json::array();
        for (const auto& statistic : statistics.value()) array.push_back(statistic.toJSON());
        status = replaceFileAtomically(filePath, array.dump(2));
    }
    if (!status) LOG("Statistics save error: " + status.error().description());
    return status;
}

void QueryStatisticsController::clear() {
    statistics.setValue({});
    (void)save();
}

void QueryStatisticsController::add(QueryStatistic::Date startTime, const std::string& rawQuery, int supplier,
                                    std::int64_t durationInSeconds) {
    const QueryStatistic::Date runDate = wholeSeconds(startTime);
    statistics.access([&](std::vector<QueryStatistic>& all) {
        auto query = std::find_if(all.begin(), all.end(),
                                  [&](const QueryStatistic& statistic) { return statistic.rawQuery == rawQuery; });
        if (query == all.end()) query = all.insert(all.end(), {Uuid::random().toString(), rawQuery, {}});
        auto run = std::find_if(query->results.begin(), query->results.end(),
                                [&](const QueryStatistic::ResultSet& set) { return set.date == runDate; });
        if (run == query->results.end()) {
            run = query->results.insert(query->results.end(), {Uuid::random().toString(), runDate, {}});
        }
        run->durations.push_back({Uuid::random().toString(), supplier, durationInSeconds});
    });
}

}  // namespace quester
