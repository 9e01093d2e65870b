#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "cache/CachingUpdatesTag.h"
#include "cache/DocumentInfo.h"
#include "cache/FolderTree.h"
#include "cache/SimpleLMDB.h"
#include "cache/WordIndex.h"
#include "platform/Bookmark.h"
#include "query/SearchResult.h"
#include "support/Locked.h"
#include "support/Result.h"
#include "support/Uuid.h"

namespace quester {

class QueryContainer;

// One disk cache: a file that records a target folder or disk (every file and
// folder with dates and size, and in a content mode the words of its
// documents) so that it can be searched fast, and still when the target is
// not connected. The store's groups live in `FolderTree` ("F", "C"),
// `WordIndex` ("W", "K") and here ("DdocumentInfo").
//
// `open` and `close` nest; operations on the tree and words need the cache
// open. A file that fails the check before mapping is set aside as
// "<file>.corrupt" and an empty one takes its place, unless another process
// is writing caches: a file caught mid-commit fails the check for a moment,
// so then the check is tried again for a while and the file is left alone. Thread-safe for reading;
// one build writes at a time (see `ContentIndexBuild`).
class ContentIndex {
public:
    enum class ContentIndexLMDBState { none = 0, waitingToBuild = 1, building = 2 };

    struct Setup {
        std::string localDBFile;
        std::optional<std::string> targetURL;
        std::optional<Uuid> id;
        std::optional<std::string> displayName;
        CachingUpdatesTag updatesEvery = CachingUpdatesTag::defaultTiming;
    };

    // Reads the file's own record (making the file when missing).
    static Result<std::unique_ptr<ContentIndex>> make(Setup setup);
    ~ContentIndex();
    ContentIndex(const ContentIndex&) = delete;
    ContentIndex& operator=(const ContentIndex&) = delete;

    const Uuid& id() const { return identity; }
    const std::string& displayName() const { return name; }
    void setDisplayName(std::string newName) { name = std::move(newName); }
    const std::string& localDBFile() const { return dbFile; }
    const std::optional<std::string>& targetURL() const { return target; }
    // Where the target's disk holds it, to find it again when the disk is
    // mounted at another place; none until it was seen on its disk.
    const std::optional<Bookmark>& targetBookmark() const { return targetMark; }
    void setTargetBookmark(std::optional<Bookmark> bookmark) { targetMark = std::move(bookmark); }
    // Moves the target to where its disk is mounted now. Only while nothing
    // reads or builds the cache: the manager does it as it loads the list.
    void relocateTarget(std::string path) { target = std::move(path); }
    CachingUpdatesTag updatesEvery() const { return updateTag; }
    void setUpdatesEvery(CachingUpdatesTag tag) { updateTag = tag; }
    const DocumentInfo& documentInfo() const { return info; }
    DocumentInfo& mutableDocumentInfo() { return info; }

    Status open();
    Status close();
    bool isOpen() const;
    Status saveDocumentInfo();
    Status loadDocumentInfo();

    // The names of a path below the target, without empty parts.
    std::vector<std::string> pathParts(const std::string& path) const;
    Result<std::optional<FSItem>> findItem(const std::string& path);
    // The item's full path: its names joined to the target (or the last
    // known target, or "/Volumes/<display name>"); none without a record.
    Result<std::optional<std::string>> pathFor(std::uint32_t id);
    // The folder that the paths of this cache begin with, without a trailing "/".
    std::string pathBase() const;
    // Removes the item and its subtree; with a content mode their
    // identifiers join the dead list.
    Status removeFSItem(std::uint32_t id);
    Status removeFSItems(const std::vector<std::uint32_t>& ids);

    FolderTree& tree() { return *folderTree; }
    WordIndex& words() { return *wordIndex; }
    SimpleLMDB& store() { return *db; }

    // The lock file that one writing process at a time holds, beside the file.
    std::string writerLockPath() const;
    // Set by the build while it holds that lock.
    void setHoldsWriterLock(bool holds) { holdsWriterLock = holds; }

    // The running state of one document in `searchContent`.
    struct SearchProgress {
        std::uint32_t documentID = 0;
        std::map<std::string, std::uint16_t> wordStatistics;  // query word to its count
        int matchedWords = 0;
        int excludingWords = 0;
    };
    using ResultsHandler = std::function<void(std::vector<SearchResult>)>;

    // The name pass: every record whose name may match the query, as results
    // in batches (the first match at once, then at most every half second).
    // Walks group "F" in batches, giving the store lock back between them.
    Status searchForFSItemNames(const QueryContainer& forQuery, const ResultsHandler& results);
    // A record as a result, with its size and dates; `isTargetMounted` says
    // whether the item can be expected to exist.
    static SearchResult fsItemToSearchResult(const FSItem& item, const std::string& path, bool isTargetMounted);
    // The stored containers of `word` (equal to it, or with `wholeWords` off
    // holding it), undecoded. A failing walk ends with what was found.
    std::vector<WordContainer> findWordInWordContainers(const std::string& word, bool wholeWords);
    // The paths of the documents that hold the words (all of them with
    // `allWords`) and none of `excludingWords`, each with the sum of its
    // counts as its rank. Words are compared as given: the index is lower case.
    std::map<std::string, std::int64_t> searchContent(const std::vector<std::string>& forWords,
                                                      const std::vector<std::string>& excludingWords, bool wholeWords,
                                                      bool allWords);
    // The paths of the identifiers that have a record.
    std::set<std::string> documentIDsToPaths(const std::vector<std::uint32_t>& ids);

    bool hasTextContent() const { return info.lastIndexMode != ContentIndexMode::off; }
    std::uint64_t cacheSizeOnDisk() const;

    // Where the shared copy of a shared cache lies (see `CacheMirror`); none
    // for a cache that is not shared.
    std::optional<Bookmark> remoteDBBookmark() const { return remoteBookmark.value(); }
    void setRemoteDBBookmark(std::optional<Bookmark> bookmark) { remoteBookmark.setValue(std::move(bookmark)); }

    ContentIndexLMDBState state() const { return buildState.value(); }
    Locked<ContentIndexLMDBState>& stateLock() { return buildState; }
    std::atomic<bool> shouldCancel{false};

private:
    explicit ContentIndex(Setup setup);
    Status openStore();
    void addWordCounts(const std::string& word, bool wholeWords, bool excluding,
                       std::map<std::uint32_t, SearchProgress>& progress);
    Status setAsideAndReopen(SimpleLMDB& store, const Status& damage);

    const Uuid identity;
    std::string name;
    const std::string dbFile;
    std::optional<std::string> target;
    std::optional<Bookmark> targetMark;
    CachingUpdatesTag updateTag;
    DocumentInfo info;
    std::unique_ptr<SimpleLMDB> db;
    std::unique_ptr<FolderTree> folderTree;
    std::unique_ptr<WordIndex> wordIndex;
    std::mutex openLock;
    int openCount = 0;
    std::atomic<bool> holdsWriterLock{false};
    Locked<ContentIndexLMDBState> buildState{ContentIndexLMDBState::none};
    Locked<std::optional<Bookmark>> remoteBookmark;
};

// Moves a cache file that can't be trusted to "<file>.corrupt", replacing an
// older one. True when the file is gone from its place (or never was).
bool quarantineCorruptCache(const std::string& file);

}  // namespace quester
