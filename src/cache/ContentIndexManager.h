#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cache/CachingUpdatesTag.h"
#include "cache/ContentIndex.h"
#include "support/Result.h"

namespace quester {

class Preferences;

// The owner of every disk cache: the list kept in the preference
// "SavedIndexInfo" (a JSON array as text), the cache files in the data
// folder, their names, and which of them are due for an update. A cache
// that crashed the program while being opened (its ".opening" breadcrumb is
// still there) is set aside as ".corrupt" and comes back empty, or, when it is
// shared, as its shared copy; so does a shared cache whose local file is
// missing or holds no finished build.
//
// Used from one thread (the command line's, the main loop's).
class ContentIndexManager {
public:
    static constexpr const char* savedIndexInfoKey = "SavedIndexInfo";
    static constexpr const char* cacheExtension = "qscache";
    static constexpr int maxNameSuffix = 99;
    static constexpr const char* updateTimeKey = "fileContentCachingUpdateTime";
    static constexpr const char* updateLastTimeKey = "fileContentCachingUpdateLastTime";

    // One entry of the list as read back: what opening its cache takes.
    struct SavedIndexInfo {
        ContentIndex::Setup setup;
        std::optional<Bookmark> remoteDBBookmark;
        // What the cache records besides names, kept here too: a file set
        // aside as damaged comes back empty, and its rebuild needs it.
        std::optional<ContentIndexMode> indexMode;
        std::optional<Bookmark> targetBookmark;
    };
    // The entries of the list's text. An entry without a file path is
    // dropped, a malformed field reads as absent (an unknown timing as a
    // week), and text that is no JSON array gives none.
    static std::optional<std::vector<SavedIndexInfo>> decodeSavedIndexInfo(const std::string& text);

    // `folder` holds the cache files; `preferences` must outlive the manager.
    ContentIndexManager(Preferences& preferences, std::string folder);

    // Reads the list; caches whose files fail to open are left out (and
    // forgotten at the next save). An unreadable list leaves it empty.
    void load();
    Status save() const;

    const std::vector<std::unique_ptr<ContentIndex>>& indexes() const { return caches; }
    ContentIndex* cacheNamed(const std::string& name) const;
    const std::string& folder() const { return cacheFolder; }

    // The target's name, "<name> on <volume>" off the root disk, the volume's
    // name (or "Boot Drive") for a whole disk's root; a cache file's own name.
    static std::string suggestNiceName(const std::string& target);
    // A free file name in the cache folder for `niceName`, adding -1 ... -99.
    Result<std::string> newLocalIndex(const std::string& niceName) const;
    // Makes, lists and saves a cache of `target`.
    Result<ContentIndex*> newIndex(const std::string& target, const std::string& displayName, ContentIndexMode mode,
                                   CachingUpdatesTag updatesEvery);
    // Copies a cache file made elsewhere into the folder and lists it; it is
    // never updated here (its owner updates it), and takes the original's
    // newer versions as its shared copy.
    Result<ContentIndex*> addExistingIndex(const std::string& dbFile);
    // Removes the file and the entry.
    Status remove(ContentIndex& index);
    // Makes `file` the shared copy of `index` (a folder takes a file of the
    // local file's name), or with none stops sharing; saves the list. The
    // file itself is neither made nor deleted here (see `CacheMirror`).
    Status setSharedCopy(ContentIndex& index, const std::optional<std::string>& file);

    // The caches whose target holds `path` (by whole path components) on the
    // disk recorded for the target.
    std::vector<ContentIndex*> cachesForItem(const std::string& path) const;
    ContentIndex* cacheWithID(const Uuid& id) const;
    // Some cache (of the disk mounted at `diskURL`) is waiting or building.
    bool isIndexing() const;
    bool isIndexing(const std::string& diskURL) const;
    // Ends the timed run and asks every build under way to stop.
    void cancelAll();

    // `updatesEvery`, or the preference "updateCachesEvery" for the default.
    CachingUpdatesTag updateTiming(const ContentIndex& index) const;
    // Whether a timed update is due now (after "diskCatalogCaching" is on).
    bool isDue(const ContentIndex& index) const;

    // The daily run at the time of day in "fileContentCachingUpdateTime"
    // ("HH:MM"), when "fileContentCachingTimeUpdatesEnabled" is on: starts
    // (true) when that time of today has come at `now` (seconds since 2001)
    // and no run started since, nor in the 60 seconds before. The command
    // line is called by a timer that may fire long after the chosen minute,
    // so a run missed at that minute starts at the next call of the day.
    bool startScheduldedRefreshIfNeeded(double now);
    // The next cache of the run, which the caller refreshes, or null when the
    // one before is still at work or the run is over. A cancelled cache ends
    // the run: the rest wait for the next day.
    ContentIndex* performNextTimedIndexRefresh();

    // The breadcrumb and the quarantine beside a cache file.
    static std::string breadcrumbPath(const std::string& file) { return file + ".opening"; }
    static void clearOpenCrashBreadcrumb(const std::string& file);

private:
    static void restoreIndexMode(ContentIndex& index, std::optional<ContentIndexMode> saved);
    static bool relocateIfMoved(ContentIndex& index, std::optional<Bookmark> bookmark);
    Result<std::unique_ptr<ContentIndex>> openListed(ContentIndex::Setup setup, std::optional<Bookmark> remote,
                                                     bool& needsSaving);
    static void followOriginal(ContentIndex& index, const std::string& original);

    Preferences& preferences;
    std::string cacheFolder;
    std::vector<std::unique_ptr<ContentIndex>> caches;
    std::vector<ContentIndex*> timedRefreshIndexes;
    ContentIndex* timedRefreshCurrentIndex = nullptr;
};

}  // namespace quester
