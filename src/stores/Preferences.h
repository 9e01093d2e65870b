#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "platform/AtomicFile.h"
#include "support/Lock.h"
#include "support/Locked.h"
#include "support/NotificationCenter.h"
#include "support/Result.h"

namespace quester {

// The per-user settings: a JSON object in "preferences.json" in the config
// folder, with defaults registered for the run. A key with no stored value
// reads as its registered default, and with neither as false, 0 or none.
//
// Safe to use from any thread, and from several processes at once: every
// write takes an exclusive lock on "preferences.json.lock", reads the file
// anew, applies its change to what it read and saves the whole file
// atomically (temporary file, fsync, rename), so that no writer, in this
// process or another, loses another's change. A file that isn't a JSON object
// is set aside as "preferences.json.corrupt" and the store starts empty.
class Preferences {
public:
    static constexpr const char* DidChangeNotification = "preferencesDidChange";
    static constexpr const char* fileName = "preferences.json";

    // Reads `storePath` now. An empty path keeps the settings in memory only.
    explicit Preferences(std::string storePath, NotificationCenter& center = NotificationCenter::shared());
    Preferences(const Preferences&) = delete;
    Preferences& operator=(const Preferences&) = delete;

    // The store in the config folder, made on first use.
    static Preferences& shared();

    // Run once after launching: the build check with the program's build
    // number (as text), the registered defaults, and the one-time stored
    // values of "showInMenuBar" (true) and "bringToFrontHotKey" (false).
    void startup(std::string_view buildVersion);
    // Every registered default, by key.
    static nlohmann::json registeredDefaultsTable();
    // Adds defaults for this run; they are never written to the file.
    void registerDefaults(const nlohmann::json& defaults);
    // Records whether this build is newer than the last one seen, in
    // "lastVersion" and "isNewVersion". Text that is no decimal integer
    // changes nothing.
    void setIsNewBuild(std::string_view buildVersion);

    bool hasStoredValue(const std::string& key) const;
    bool boolValue(const std::string& key) const;
    std::int64_t integerValue(const std::string& key) const;
    double doubleValue(const std::string& key) const;
    std::optional<std::string> stringValue(const std::string& key) const;
    std::optional<std::vector<std::string>> stringList(const std::string& key) const;
    std::optional<nlohmann::json> jsonValue(const std::string& key) const;
    // The stored style when below 3, else the automatic style 2.
    std::int64_t resultsViewStyle() const;

    Status setValue(const std::string& key, nlohmann::json value);
    // Stores every member of `values` with one save.
    Status setValues(const nlohmann::json& values);
    Status removeValue(const std::string& key);
    // Applies `change` to the stored values as the file holds them now, under
    // the file lock, and saves. Stores that keep a list under one key change
    // it here, so that two processes adding to it keep both additions.
    // `change` must not call back into this store. `flush` says whether the
    // file must reach the disk before it replaces the old one.
    Status update(const std::function<void(nlohmann::json& values)>& change, Flush flush = Flush::toDisk);
    // Reads the file again, for a long-lived process that wants the changes
    // other processes made.
    void reload();

    // Calls `handler` on the main loop whenever "preferencesDidChange" is
    // posted; the token removes it through the notification center.
    NotificationCenter::Token PreferencesDidChangeNotification(std::function<void()> handler);
    void postDidChangeNotification();

    const std::string& path() const { return storePath; }

private:
    void load();
    // The file's object; an empty object when there is no file, or when it
    // held no JSON object and was set aside.
    Result<nlohmann::json> readStoredObject();
    void setAsideCorruptFile(const std::string& reason);
    std::optional<nlohmann::json> lookUp(const std::string& key) const;

    const std::string storePath;
    NotificationCenter& center;
    Locked<nlohmann::json> stored;
    Locked<nlohmann::json> defaults;
    // Held for a whole update, beside the file lock, so that the threads of
    // this process queue here rather than on the lock file.
    Lock saveLock;
};

}  // namespace quester
