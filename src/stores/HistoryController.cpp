#include "stores/HistoryController.h"

#include <algorithm>
#include <chrono>

#include "stores/StoredList.h"
#include "support/LogFunc.h"
#include "support/PathText.h"
#include "support/Uuid.h"

namespace quester {
namespace {

using json = nlohmann::json;

std::vector<HistoryItem> decodeHistory(const json& list) {
    return decodeStoredList<HistoryItem>(list, &HistoryItem::fromStored);
}

json encodeHistory(const std::vector<HistoryItem>& items) {
    return encodeStoredList(items, [](const HistoryItem& item) { return item.toStored(); });
}

}  // namespace

HistoryController::HistoryController(Preferences& preferences, NotificationCenter& center, const Clock& clock)
    : preferences(preferences), center(center), clock(clock) {}

void HistoryController::startup() {
    const auto version = preferences.integerValue("historyVersion");
    if (version == 2) return;
    Status saved = preferences.update([&](json& values) {
        values["historyVersion"] = 2;
        if (version == 0) values[key] = json::array();
    });
    if (!saved) LOG("cannot store the history version: " + saved.error().description());
}

std::vector<HistoryItem> HistoryController::items() const {
    return decodeHistory(preferences.jsonValue(key).value_or(json()));
}

std::vector<std::string> HistoryController::queries() const {
    std::vector<std::string> texts;
    const auto all = items();
    for (auto item = all.rbegin(); item != all.rend(); ++item) texts.push_back(item->query());
    return texts;
}

// Every search adds to the history. The file is still replaced whole and at
// once, but without waiting for the disk: a flush took a search as long as
// the search itself, for an entry that a power cut may as well lose.
Status HistoryController::change(const std::function<void(std::vector<HistoryItem>& items)>& edit) {
    Status saved = preferences.update(
        [&](json& values) {
            auto list = decodeHistory(storedValue(values, key));
            edit(list);
            values[key] = encodeHistory(list);
        },
        Flush::byTheSystem);
    if (saved) center.post(ChangedNotification);
    return saved;
}

Status HistoryController::addQuery(const std::string& text) {
    const std::string trimmed(trimmedWhitespace(text));
    if (trimmed.empty()) return Status::success();
    const auto maxCount = preferences.integerValue("historyMaxCount");
    const double now = std::chrono::duration<double>(clock.now().time_since_epoch()).count();
    return change([&](std::vector<HistoryItem>& list) {
        while (maxCount < static_cast<std::int64_t>(list.size())) list.erase(list.begin());
        std::erase_if(list, [&](const HistoryItem& item) { return item.queryString == trimmed; });
        list.push_back({Uuid::random().toString(), HistoryItem::HistoryType::query, trimmed, std::nullopt, now});
    });
}

Status HistoryController::deleteQuery(const std::string& query) {
    return change([&](std::vector<HistoryItem>& list) {
        std::erase_if(list, [&](const HistoryItem& item) { return item.queryString == query; });
    });
}

Status HistoryController::clear() {
    return change([](std::vector<HistoryItem>& list) { list.clear(); });
}

void HistoryController::preferencesDidChange() {
    if (preferences.boolValue("historyEnabled")) return;
    if (Status cleared = clear(); !cleared) LOG("cannot empty the history: " + cleared.error().description());
}

NotificationCenter::Token HistoryController::didChange(std::function<void()> handler) {
    return center.addObserver(ChangedNotification, std::move(handler));
}

}  // namespace quester
