#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "platform/FileSystem.h"
#include "query/QueryContainer.h"
#include "query/SearchDataSource.h"
#include "sources/FSItemAndAttrs.h"
#include "support/ActivityItem.h"
#include "support/DelayTimer.h"
#include "support/Locked.h"
#include "support/TrackableOperationQueue.h"

namespace quester {

class ActivityController;
class DirectoryIterator;
class FSUtilities;
class MountTable;
class Url;

// The source that looks at the real disks. Each disk of the query's location
// is walked breadth first, in generations of at most 256 folders, two folders
// at a time, and every item whose path may match the query's words goes to
// the delegate, one item a call; the commands are the delegate's business.
// There is no volume catalog search on Linux: it answers "not supported" at
// once and every disk is walked.
//
// A walk stays on its disk: a mount point below it is never entered. Where a
// person's files may lie there (another disk, /tmp on tmpfs) it is walked
// afterwards as a disk of its own; pseudo file systems are never walked.
// Folders are opened relative to their parent's open descriptor, so depth is
// limited by the file system alone. A folder that is there but can't be read
// is left out and counted to the delegate (`supplySkippedDirectories`).
//
// One object serves one search. `search` runs on the caller's thread and
// returns when the walk is done or stopped; `searchShouldStop` and `cancel`
// may come from any thread. Shared (std::shared_ptr), since the activity item
// holds it weakly as its cancel target.
class FileSystemSearch final : public SearchDataSource,
                               public ActivityItemCancelProtocol,
                               public std::enable_shared_from_this<FileSystemSearch> {
public:
    // The answer of the catalog search on a platform that has none (ENOTSUP
    // in the numbering the catalog call uses).
    static constexpr int catalogSearchNotSupported = 45;
    static constexpr std::size_t generationSize = 256;
    static constexpr int concurrentDirectories = 2;

    // Folders kept open at once so their subfolders can be opened by name;
    // beyond that a subfolder is opened by its path.
    static constexpr int maxHeldFolders = 512;

    // All default to the process-wide objects; they must outlive the search.
    explicit FileSystemSearch(ActivityController* activityController = nullptr, FSUtilities* fsUtilities = nullptr,
                              FileSystem* fileSystem = nullptr);

    std::string debugDescription() const override { return "FileSystemSearch"; }
    SearchResultSupplier type() const override { return SearchResultSupplier::fileSystem; }
    void search(const QueryContainer& query, SearchDataSourceDelegate& handler) override;
    void searchShouldStop() override;
    // The activity window's cancel button.
    void cancel(ActivityItem& item) override;

    // Folders listed so far, over all disks.
    std::int64_t directoriesSearched() const { return searchedCount.load(); }

private:
    // A folder waiting to be listed.
    struct PendingFolder {
        std::string path;
        // The open folder that holds it, to open it by name; none when too
        // many folders are held open already.
        std::shared_ptr<DirectoryHandle> parent;
    };

    // What one walk of a disk lists per folder.
    struct FolderListing {
        std::vector<PendingFolder> subdirectories;
        bool skipped = false;  // the folder is there but couldn't be read
    };

    struct DiskWalk {
        std::string diskPath;
        std::string diskKey;
        std::vector<std::string> skipPaths;
        std::vector<std::string> skipIncludes;
        // Mount points below the disk: the walk doesn't enter them.
        std::unordered_set<std::string> otherMounts;
        bool offersNameMatchesOnly;
        // Whether found paths go through `Url::correctRootBasedPath`: only a
        // platform with a second spelling of the boot volume changes them.
        bool correctsRootPaths;
    };

    void searchDisk(const Url& disk, const MountTable* mounts, std::vector<Url>& disks,
                    SearchDataSourceDelegate& handler);
    void addMountsBelow(DiskWalk& walk, const MountTable& mounts, std::vector<Url>& disks);
    int searchfs(const std::string& diskPath);
    bool isVolumeRoot(const std::string& path) const;
    bool nameTestDecidesAlone() const;
    bool isWorthOffering(std::string_view fullPath, const DiskWalk& walk) const;
    void addVolumeCountsToActivity(const Url& disk);
    void iterate(const DiskWalk& walk, SearchDataSourceDelegate& handler);
    FolderListing iterate(const PendingFolder& folder, const DiskWalk& walk, DirectoryIterator& iterator,
                          SearchDataSourceDelegate& handler);
    Result<std::unique_ptr<DirectoryHandle>> open(const PendingFolder& folder);
    std::shared_ptr<DirectoryHandle> holdForSubfolders(std::unique_ptr<DirectoryHandle> handle);
    static SearchResult foundItem(const FSItemAndAttrs& item, const DiskWalk& walk);
    void reportDirectories(std::int64_t count, std::int64_t skipped, SearchDataSourceDelegate& handler);
    bool passesDepthTest(const std::string& path) const;

    DiskWalk makeSkipPaths(const std::string& base, std::string diskKey) const;
    static bool shouldSkip(const std::string& path, const DiskWalk& walk);

    ActivityController& activityController;
    FSUtilities& fsUtilities;
    FileSystem& fileSystem;
    std::optional<QueryContainer> query;
    // The folders a person asked for; the hidden rules judge below them.
    std::vector<std::string> searchedFolders;
    std::atomic<int> heldFolders{0};
    int maxDepth = 0;
    TrackableOperationQueue directoryIterationQueue{concurrentDirectories};
    std::atomic<bool> userCanceled{false};
    std::shared_ptr<ActivityItem> progressItem;
    std::atomic<std::int64_t> searchedCount{0};
    DelayTimer progressUpdateTimer;
};

}  // namespace quester
