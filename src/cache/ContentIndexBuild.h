#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cache/ContentIndex.h"
#include "cache/ContentIndexMode.h"
#include "cache/FolderLister.h"
#include "cache/NameIndex.h"
#include "cache/WordContainer.h"
#include "import/WordTally.h"
#include "platform/FileSystem.h"
#include "support/Result.h"

namespace quester {

class ImportTextXPC;

// Where a build stands, for a progress display.
struct BuildProgress {
    std::uint64_t items = 0;  // files counted so far, old and new
    std::string currentFolder;
};

// Fills and updates one cache from its target: one walk that records every
// file and folder, hands new documents to the text import helper in a
// content mode, and removes what has gone from disk. A folder whose date
// matches its record is listed but its files are not looked at; a file whose
// date matches its record keeps it (so an edit in place inside an unchanged
// folder stays unseen until the folder changes).
//
// Writes go in batches: one transaction per 2,500 changed items (in a
// content mode together with the words gathered), committed whole, and one
// sync at the end. A folder's record gets its date only in the batch that
// finishes its listing, so after a kill at any moment the next update
// lists again every folder it had not finished, and finds the files already
// recorded by name: no duplicates.
//
// Refuses to run (off line) when the disk key at the target differs from
// the one recorded at the first build: an unmounted disk leaves an empty
// mount point that would otherwise empty the cache. One build at a time in
// the process; one writing process at a time (a lock file beside the cache).
class ContentIndexBuild {
public:
    static constexpr std::size_t batchItems = 2500;
    static constexpr std::size_t wordCacheCeiling = 100000;

    struct Options {
        ContentIndexMode indexMode = ContentIndexMode::off;
        // Called on the build's thread at most five times a second.
        std::function<void(const BuildProgress&)> progress;
        // Asked before each folder: a reason to wait a second, or none to go on.
        std::function<std::optional<std::string>()> pauseReason;
        // Told each reason the build waits for, and an empty text when it goes on.
        std::function<void(const std::string&)> status;
        FileSystem* fileSystem = nullptr;   // the real one when null
        ImportTextXPC* importer = nullptr;  // the shared one when null
        // A shared cache's copy is synchronised even when it changed a
        // moment ago (an update the user asked for).
        bool alwaysMirror = false;
        // Told what became of the shared copy when it could not be brought
        // level; the build itself goes on.
        std::function<void(const std::string&)> mirrorWarning;
    };

    // Builds (or, with `isDirty`, rebuilds from nothing) `index`. A cancel
    // (`index.shouldCancel`) ends the walk at the next file or folder with
    // what was done committed, and answers `cancelled`. A shared cache takes
    // a newer shared copy before it is opened and gives its file to the
    // shared copy after a build (see `CacheMirror`); a cancelled update of a
    // shared cache puts the shared copy back in the place of the local file.
    static Status build(ContentIndex& index, const Options& options);

    // Whether the target is there and on the disk recorded for it.
    static bool isTargetMounted(const ContentIndex& index);

private:
    struct Folder {
        std::string path;
        std::uint32_t fsid = 0;
        std::int32_t recordedDate = 0;
        std::int32_t currentDate = 0;
        bool isUnchanged() const { return fsid != 0 && recordedDate != 0 && recordedDate == currentDate; }
    };

    ContentIndexBuild(ContentIndex& index, const Options& options);
    Status run();
    void mirror(bool alwaysSync, bool pullOnly);
    void mirrorAfter(const Status& built);
    Status walk(const FileStatus& rootStatus);
    void pauseIfNeeded();
    Status visit(const Folder& folder);
    Status updateFolder(const Folder& folder, const std::vector<FSItemAndAttrs>& entries,
                        const FolderTree::FolderContents& contents);
    Status addNewItem(const Folder& folder, const FSItemAndAttrs& entry, std::vector<std::uint32_t>& children);
    void pushFolder(const FSItemAndAttrs& entry, const FSItem& record);
    Status addWordsOf(const std::string& path, std::uint32_t fileID);
    Status countChange(const Folder& folder, const std::vector<std::uint32_t>& children);
    Status commit();
    Status flushWords();
    Status startNameIndex();
    Status finishNameIndex();
    Status finish();
    void reportProgress(const std::string& folder, bool force = false);

    ContentIndex& index;
    const Options& options;
    FileSystem& fileSystem;
    std::optional<FolderLister> lister;
    std::vector<Folder> stack;
    std::uint64_t itemCount = 0;
    std::size_t pendingItems = 0;
    bool changedAnything = false;
    std::map<std::string, WordContainer> wordCache;
    // The new items' names; a cache whose postings lag behind (old, or a
    // build was killed) has them rebuilt from every record at the end.
    std::optional<NameIndex> names;
    double lastProgressTime = 0;
    bool toldUnavailable = false;
};

}  // namespace quester
