#pragma once

#include <functional>
#include <string>
#include <vector>

#include "stores/HistoryItem.h"
#include "stores/Preferences.h"
#include "support/Clock.h"
#include "support/NotificationCenter.h"

namespace quester {

// The queries a person ran, oldest first, under the preference "history".
// Every change reads the list as the preferences file holds it now and writes
// it back under the file's lock (Preferences::update), so two processes
// adding at once keep both entries. Entries that don't read are dropped one
// by one. Posts "HistoryChangedNotification" after each save.
//
// Any thread; the list itself is always read from the preferences.
class HistoryController {
public:
    static constexpr const char* ChangedNotification = "HistoryChangedNotification";
    static constexpr const char* key = "history";

    explicit HistoryController(Preferences& preferences = Preferences::shared(),
                               NotificationCenter& center = NotificationCenter::shared(),
                               const Clock& clock = SystemClock::shared());

    // At launch: a "historyVersion" other than 2 becomes 2, and a store that
    // had none (0) is emptied once.
    void startup();

    // Oldest first; the malformed entries left out.
    std::vector<HistoryItem> items() const;
    // The text of each item, newest first.
    std::vector<std::string> queries() const;

    // Records a query that was run. The caller leaves out a query whose part
    // after the colon wasn't understood. Text that is white space only is not
    // added; the oldest entries go while there are more than
    // "historyMaxCount"; an earlier entry of the same text is removed, so the
    // query moves to the newest end. The store thus holds at most one more
    // than "historyMaxCount".
    Status addQuery(const std::string& text);
    // Removes every entry of that text.
    Status deleteQuery(const std::string& query);
    Status clear();
    // What a change of preferences does: with "historyEnabled" off the
    // history is emptied.
    void preferencesDidChange();

    // Calls `handler` on the main loop after each save.
    NotificationCenter::Token didChange(std::function<void()> handler);

private:
    Status change(const std::function<void(std::vector<HistoryItem>& items)>& edit);

    Preferences& preferences;
    NotificationCenter& center;
    const Clock& clock;
};

}  // namespace quester
