#include "stores/RecentItems.h"

#include <algorithm>
#include <chrono>
#include <ctime>

#include "stores/StoredList.h"
#include "support/PathText.h"

namespace quester {
namespace {

using json = nlohmann::json;

// 2001-01-01 00:00:00 UTC, where the stored dates count from.
constexpr std::chrono::seconds kReferenceDate{978307200};

double secondsSinceReference(Clock::TimePoint time) {
    return std::chrono::duration<double>(time.time_since_epoch() - kReferenceDate).count();
}

Clock::TimePoint fromSecondsSinceReference(double seconds) {
    return Clock::TimePoint(std::chrono::duration_cast<Clock::Duration>(kReferenceDate) +
                            std::chrono::duration_cast<Clock::Duration>(std::chrono::duration<double>(seconds)));
}

std::optional<RecentItem> itemFromStored(const json& object) {
    if (!object.is_object()) return std::nullopt;
    const auto& path = storedValue(object, "path");
    const auto& lastSeen = storedValue(object, "lastSeen");
    if (!path.is_string() || !lastSeen.is_number()) return std::nullopt;
    return RecentItem{path.get<std::string>(), fromSecondsSinceReference(lastSeen.get<double>())};
}

std::vector<RecentItem> decodeItems(const json& values) {
    const auto& text = storedValue(values, RecentItems::key);
    if (!text.is_string()) return {};
    return decodeStoredList<RecentItem>(json::parse(text.get<std::string>(), nullptr, false), &itemFromStored);
}

std::string encodeItems(const std::vector<RecentItem>& items) {
    return encodeStoredList(items,
                            [](const RecentItem& item) {
                                return json{{"path", item.path}, {"lastSeen", secondsSinceReference(item.lastSeen)}};
                            })
        .dump();
}

bool isSameLocalDay(Clock::TimePoint a, Clock::TimePoint b) {
    const std::time_t first = std::chrono::system_clock::to_time_t(a), second = std::chrono::system_clock::to_time_t(b);
    std::tm one{}, other{};
    localtime_r(&first, &one);
    localtime_r(&second, &other);
    return one.tm_year == other.tm_year && one.tm_yday == other.tm_yday;
}

bool canBeRecent(const Url& url) {
    const std::string& path = url.path();
    if (path == "/" || path == "/Volumes/" || lastPathComponent(path).starts_with('.')) return false;
    const auto volume = url.volume();
    return volume && volume->path() != std::string(withoutTrailingSlash(path));
}

}  // namespace

RecentItems::RecentItems(Preferences& preferences, NotificationCenter& center, const Clock& clock)
    : preferences(preferences), center(center), clock(clock) {}

std::vector<RecentItem> RecentItems::items() const {
    return decodeItems(json{{key, preferences.jsonValue(key).value_or(json())}});
}

std::vector<RecentItem> RecentItems::itemsForDisplay() const {
    auto sorted = items();
    std::stable_sort(sorted.begin(), sorted.end(), [](const RecentItem& a, const RecentItem& b) {
        const auto nameA = lastPathComponent(a.path), nameB = lastPathComponent(b.path);
        return nameA != nameB ? nameA < nameB : a.path < b.path;
    });
    return sorted;
}

std::vector<RecentItem> RecentItems::sortedByNewest() const {
    auto sorted = items();
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const RecentItem& a, const RecentItem& b) { return a.lastSeen > b.lastSeen; });
    return sorted;
}

Status RecentItems::change(const std::function<void(std::vector<RecentItem>& items, json& values)>& edit) {
    Status saved = preferences.update([&](json& values) {
        auto stored = decodeItems(values);
        edit(stored, values);
        values[key] = encodeItems(stored);
    });
    if (saved) center.post(DidChangeNotification);
    return saved;
}

Status RecentItems::addPopularItem(const std::vector<Url>& urls) {
    std::vector<Url> kept;
    std::copy_if(urls.begin(), urls.end(), std::back_inserter(kept), canBeRecent);
    const auto now = clock.now();
    return change([&](std::vector<RecentItem>& stored, json&) {
        for (const auto& url : kept) {
            std::erase_if(stored, [&](const RecentItem& item) { return item.path == url.path(); });
            stored.push_back({url.path(), now});
        }
    });
}

Status RecentItems::remove(const std::string& path) {
    return change([&](std::vector<RecentItem>& stored, json&) {
        std::erase_if(stored, [&](const RecentItem& item) { return item.path == path; });
    });
}

Status RecentItems::purge() {
    const auto now = clock.now();
    return change([&](std::vector<RecentItem>& stored, json& values) {
        const auto& last = storedValue(values, purgeKey);
        const bool purgedToday = last.is_number() && isSameLocalDay(fromSecondsSinceReference(last.get<double>()), now);
        const bool firstTime = !last.is_number();
        if (purgedToday) return;
        values[purgeKey] = secondsSinceReference(now);
        if (firstTime) return;
        std::stable_sort(stored.begin(), stored.end(),
                         [](const RecentItem& a, const RecentItem& b) { return a.lastSeen > b.lastSeen; });
        if (stored.size() > maxCount) stored.resize(maxCount);
    });
}

}  // namespace quester
