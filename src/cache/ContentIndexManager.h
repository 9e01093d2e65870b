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
// still there) is set aside as ".corrupt" and comes back empty.
//
// Used from one thread (the command line's, the main loop's).
class ContentIndexManager {
public:
    static constexpr const char* savedIndexInfoKey = "SavedIndexInfo";
    static constexpr const char* cacheExtension = "qscache";
    static constexpr int maxNameSuffix = 99;

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
    // never updated here (its owner updates it).
    Result<ContentIndex*> addExistingIndex(const std::string& dbFile);
    // Removes the file and the entry.
    Status remove(ContentIndex& index);

    // `updatesEvery`, or the preference "updateCachesEvery" for the default.
    CachingUpdatesTag updateTiming(const ContentIndex& index) const;
    // Whether a timed update is due now (after "diskCatalogCaching" is on).
    bool isDue(const ContentIndex& index) const;

    // The breadcrumb and the quarantine beside a cache file.
    static std::string breadcrumbPath(const std::string& file) { return file + ".opening"; }
    static void clearOpenCrashBreadcrumb(const std::string& file);

private:
    Result<std::unique_ptr<ContentIndex>> openListed(ContentIndex::Setup setup, bool& needsSaving);

    Preferences& preferences;
    std::string cacheFolder;
    std::vector<std::unique_ptr<ContentIndex>> caches;
};

}  // namespace quester
