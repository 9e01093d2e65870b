#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/Url.h"
#include "stores/Preferences.h"
#include "support/Clock.h"
#include "support/NotificationCenter.h"

namespace quester {

// An item a person opened or picked, and when it was last seen.
struct RecentItem {
    std::string path;
    Clock::TimePoint lastSeen;

    bool operator==(const RecentItem&) const = default;
};

// The items opened lately, kept as JSON text under the preference
// "recentSmartItems": an array of {"path", "lastSeen"} with the date in
// seconds since 2001-01-01. The list is cut to the newest `maxCount` at most
// once a day ("recentSmartLastPurge"), so it may hold more until then. An
// element that doesn't read is dropped. Changes read the list as the file
// holds it now and write it back under its lock. Posts "RecentItems.DidChange"
// after each save. Any thread.
class RecentItems {
public:
    static constexpr const char* key = "recentSmartItems";
    static constexpr const char* purgeKey = "recentSmartLastPurge";
    static constexpr const char* DidChangeNotification = "RecentItems.DidChange";
    static constexpr std::size_t maxCount = 20;

    explicit RecentItems(Preferences& preferences = Preferences::shared(),
                         NotificationCenter& center = NotificationCenter::shared(),
                         const Clock& clock = SystemClock::shared());

    std::vector<RecentItem> items() const;
    // By name, then by whole path.
    std::vector<RecentItem> itemsForDisplay() const;
    // By `lastSeen`, newest first.
    std::vector<RecentItem> sortedByNewest() const;

    // Each URL that isn't "/", "/Volumes/", a hidden item, a volume's root or
    // on a volume that can't be read becomes the newest item, replacing an
    // older one of its path; saved once at the end.
    Status addPopularItem(const std::vector<Url>& urls);
    Status remove(const std::string& path);
    // Once a day (local time), keeps the newest `maxCount` items.
    Status purge();

private:
    Status change(const std::function<void(std::vector<RecentItem>& items, nlohmann::json& values)>& edit);

    Preferences& preferences;
    NotificationCenter& center;
    const Clock& clock;
};

}  // namespace quester
