#include "stores/QueryStatisticsController.h"

#include <algorithm>

#include "platform/AtomicFile.h"
#include "platform/FileLock.h"
#include "platform/FileSystem.h"
#include "support/AppDirectories.h"
#include "support/LogFunc.h"
#include "support/PathText.h"
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
        // Not loaded here: a search only adds to the file, which `save` reads anew.
        return new QueryStatisticsController(folder ? *folder + "/" + fileName : std::string());
    }();
    return *controller;
}

void QueryStatisticsController::load() {
    statistics.setValue(readFile());
}

std::vector<QueryStatistic> QueryStatisticsController::readFile() const {
    std::vector<QueryStatistic> loaded;
    const auto text = FileSystem::real().readFile(filePath);
    const auto parsed = nlohmann::json::parse(text.valueOr(""), nullptr, false);
    if (!text || !parsed.is_array()) return loaded;
    for (const auto& item : parsed) {
        auto statistic = QueryStatistic::fromJSON(item);
        if (statistic) {
            loaded.push_back(std::move(statistic).value());
        } else {
            LOG("Statistics load error, the entry is dropped: " + statistic.error().description());
        }
    }
    return loaded;
}

Status QueryStatisticsController::save() {
    Status status = rewrite([&](std::vector<QueryStatistic>& onFile) { mergeInto(onFile, statistics.value()); });
    if (!status) LOG("Statistics save error: " + status.error().description());
    return status;
}

void QueryStatisticsController::clear() {
    Status status = rewrite([](std::vector<QueryStatistic>& onFile) { onFile.clear(); });
    if (!status) LOG("Statistics save error: " + status.error().description());
}

Status QueryStatisticsController::rewrite(const std::function<void(std::vector<QueryStatistic>& onFile)>& change) {
    if (filePath.empty()) return makeError(ErrorCode::notFound, "no data folder to keep the query statistics in");
    if (Status made = FileSystem::real().createDirectories(parentPath(filePath)); !made) return made;
    auto lock = FileLock::acquire(filePath + ".lock");
    if (!lock) return lock.error();
    auto onFile = readFile();
    change(onFile);
    keepTheLatest(onFile);
    nlohmann::ordered_json array = nlohmann::ordered_json::array();
    for (const auto& statistic : onFile) array.push_back(statistic.toJSON());
    if (Status written = replaceFileAtomically(filePath, array.dump(2), FileSystem::real(), 0600, MissingFolder::make,
                                               Flush::byTheSystem);
        !written)
        return written;
    statistics.setValue(std::move(onFile));
    return Status::success();
}

// Every search adds a run, and every search reads and writes the whole file:
// only the latest runs of the latest queries are kept, so that it stays small.
void QueryStatisticsController::keepTheLatest(std::vector<QueryStatistic>& statistics) {
    const auto byDate = [](const QueryStatistic::ResultSet& a, const QueryStatistic::ResultSet& b) {
        return a.date < b.date;
    };
    const auto lastRun = [&](const QueryStatistic& statistic) {
        const auto latest = std::max_element(statistic.results.begin(), statistic.results.end(), byDate);
        return latest == statistic.results.end() ? QueryStatistic::Date{} : latest->date;
    };
    for (auto& statistic : statistics) {
        if (statistic.results.size() <= maxRunsPerQuery) continue;
        std::stable_sort(statistic.results.begin(), statistic.results.end(), byDate);
        statistic.results.erase(statistic.results.begin(), statistic.results.end() - maxRunsPerQuery);
    }
    if (statistics.size() <= maxQueries) return;
    std::stable_sort(statistics.begin(), statistics.end(),
                     [&](const QueryStatistic& a, const QueryStatistic& b) { return lastRun(a) < lastRun(b); });
    statistics.erase(statistics.begin(), statistics.end() - maxQueries);
}

void QueryStatisticsController::mergeInto(std::vector<QueryStatistic>& onFile,
                                          const std::vector<QueryStatistic>& ours) {
    for (const auto& statistic : ours) {
        auto query = std::find_if(onFile.begin(), onFile.end(),
                                  [&](const QueryStatistic& stored) { return stored.rawQuery == statistic.rawQuery; });
        if (query == onFile.end()) {
            onFile.push_back(statistic);
            continue;
        }
        for (const auto& run : statistic.results) {
            auto stored = std::find_if(query->results.begin(), query->results.end(),
                                       [&](const QueryStatistic::ResultSet& set) { return set.id == run.id; });
            if (stored == query->results.end()) {
                query->results.push_back(run);
                continue;
            }
            for (const auto& duration : run.durations) {
                const bool known =
                    std::any_of(stored->durations.begin(), stored->durations.end(),
                                [&](const QueryStatistic::Result& result) { return result.id == duration.id; });
                if (!known) stored->durations.push_back(duration);
            }
        }
    }
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
