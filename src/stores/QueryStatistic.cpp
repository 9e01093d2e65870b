#include "stores/QueryStatistic.h"

#include <ctime>
#include <iomanip>
#include <sstream>

namespace quester {

namespace {

using nlohmann::json;

Error corrupt(const std::string& what) {
    return makeError(ErrorCode::corrupt, "query statistics: " + what);
}

template <typename T>
std::optional<T> required(const json& object, const char* key) {
    if (!object.is_object() || !object.contains(key)) return std::nullopt;
    const json& value = object.at(key);
    if constexpr (std::is_same_v<T, std::string>) {
        if (!value.is_string()) return std::nullopt;
    } else if constexpr (std::is_same_v<T, json>) {
        if (!value.is_array()) return std::nullopt;
    } else {
        if (!value.is_number_integer()) return std::nullopt;
    }
    return value.get<T>();
}

quester::Result<QueryStatistic::Result> durationFromJSON(const json& object) {
    const auto id = required<std::string>(object, "id");
    const auto supplier = required<std::int64_t>(object, "supplier");
    const auto seconds = required<std::int64_t>(object, "durationInSeconds");
    if (!id || !supplier || !seconds) return corrupt("a duration lacks a key");
    if (*supplier < 0 || *supplier > 12) return corrupt("unknown supplier " + std::to_string(*supplier));
    return QueryStatistic::Result{*id, static_cast<int>(*supplier), *seconds};
}

quester::Result<QueryStatistic::ResultSet> runFromJSON(const json& object) {
    const auto id = required<std::string>(object, "id");
    const auto dateText = required<std::string>(object, "date");
    const auto durations = required<json>(object, "durations");
    if (!id || !dateText || !durations) return corrupt("a run lacks a key");
    const auto date = dateFromISO8601(*dateText);
    if (!date) return corrupt("unreadable date " + *dateText);
    QueryStatistic::ResultSet run{*id, *date, {}};
    for (const auto& item : *durations) {
        auto duration = durationFromJSON(item);
        if (!duration) return duration.error();
        run.durations.push_back(std::move(duration).value());
    }
    return run;
}

}  // namespace

std::string iso8601Text(QueryStatistic::Date date) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(date);
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    std::ostringstream text;
    text << std::put_time(&utc, "%Y-%m-%dT%H:%M:%SZ");
    return text.str();
}

std::optional<QueryStatistic::Date> dateFromISO8601(const std::string& text) {
    std::tm parts{};
    std::istringstream in(text);
    in >> std::get_time(&parts, "%Y-%m-%dT%H:%M:%S");
    if (in.fail()) return std::nullopt;
    std::string zone;
    in >> zone;
    long offsetSeconds = 0;
    if (zone.size() == 6 && (zone[0] == '+' || zone[0] == '-') && zone[3] == ':') {
        const long hours = std::stol(zone.substr(1, 2));
        const long minutes = std::stol(zone.substr(4, 2));
        offsetSeconds = (zone[0] == '+' ? 1 : -1) * (hours * 3600 + minutes * 60);
    } else if (zone != "Z") {
        return std::nullopt;
    }
    return std::chrono::system_clock::from_time_t(timegm(&parts) - offsetSeconds);
}

nlohmann::ordered_json QueryStatistic::toJSON() const {
    nlohmann::ordered_json runs = nlohmann::ordered_json::array();
    for (const auto& run : results) {
        nlohmann::ordered_json durations = nlohmann::ordered_json::array();
        for (const auto& duration : run.durations) {
            durations.push_back({{"id", duration.id},
                                 {"supplier", duration.supplier},
                                 {"durationInSeconds", duration.durationInSeconds}});
        }
        runs.push_back({{"id", run.id}, {"date", iso8601Text(run.date)}, {"durations", durations}});
    }
    return {{"id", id}, {"rawQuery", rawQuery}, {"results", runs}};
}

quester::Result<QueryStatistic> QueryStatistic::fromJSON(const json& object) {
    const auto id = required<std::string>(object, "id");
    const auto rawQuery = required<std::string>(object, "rawQuery");
    const auto runs = required<json>(object, "results");
    if (!id || !rawQuery || !runs) return corrupt("a query lacks a key");
    QueryStatistic statistic{*id, *rawQuery, {}};
    for (const auto& item : *runs) {
        auto run = runFromJSON(item);
        if (!run) return run.error();
        statistic.results.push_back(std::move(run).value());
    }
    return statistic;
}

}  // namespace quester
