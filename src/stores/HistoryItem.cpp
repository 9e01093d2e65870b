#include "stores/HistoryItem.h"

#include "support/PathText.h"
#include "support/Uuid.h"

namespace quester {

std::string HistoryItem::query() const {
    if (type != HistoryType::opened) return queryString;
    return url ? lastPathComponent(url->path()) : std::string();
}

nlohmann::json HistoryItem::toStored() const {
    return {{"id", id},
            {"type", static_cast<int>(type)},
            {"queryString", queryString},
            {"url", url ? fileURLString(*url) : std::string()},
            {"performedDate", performedDate}};
}

std::optional<HistoryItem> HistoryItem::fromStored(const nlohmann::json& map) {
    if (!map.is_object()) return std::nullopt;
    const auto text = map.find("queryString");
    const auto date = map.find("performedDate");
    if (text == map.end() || !text->is_string() || date == map.end() || !date->is_number()) return std::nullopt;
    HistoryItem item;
    item.queryString = text->get<std::string>();
    item.performedDate = date->get<double>();
    const auto type = map.find("type");
    if (type != map.end()) {
        if (!type->is_number_integer()) return std::nullopt;
        const auto raw = type->get<std::int64_t>();
        if (raw != 0 && raw != 1) return std::nullopt;
        item.type = static_cast<HistoryType>(raw);
    }
    const auto id = map.find("id");
    item.id = id != map.end() && id->is_string() ? id->get<std::string>() : Uuid::random().toString();
    const auto url = map.find("url");
    if (url != map.end() && url->is_string()) item.url = urlFromFileURLString(url->get<std::string>());
    return item;
}

}  // namespace quester
