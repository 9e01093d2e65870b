#pragma once

#include <optional>
#include <string>

#include <nlohmann/json.hpp>

#include "platform/Url.h"

namespace quester {

// One entry of the history: a query that was run, or an item that was opened.
struct HistoryItem {
    enum class HistoryType : int { query = 0, opened = 1 };

    std::string id;  // UUID text
    HistoryType type = HistoryType::query;
    std::string queryString;
    std::optional<Url> url;
    double performedDate = 0;  // seconds since 1970

    bool operator==(const HistoryItem&) const = default;

    // What a list shows: the opened item's name (empty without a URL), or
    // the query's text.
    std::string query() const;

    // The stored map: "id", "type", "queryString", "url" ("file://" text, or
    // empty text when there is none), "performedDate".
    nlohmann::json toStored() const;
    // None for a map that makes no item: "queryString" (text) and
    // "performedDate" (number) are required, and a "type" other than 0 or 1
    // rejects it. A missing "id" gets a new UUID, a missing "type" is a query,
    // and a "url" that is empty or no file URL is none.
    static std::optional<HistoryItem> fromStored(const nlohmann::json& map);
};

}  // namespace quester
