#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "query/QueryContainer.h"
#include "query/SearchDataSource.h"
#include "support/ActivityItem.h"
#include "sources/FSItemAndAttrs.h"
#include "support/DelayTimer.h"
#include "support/Locked.h"
#include "support/TrackableOperationQueue.h"

namespace quester {

class ActivityController;
class FSUtilities;
class Url;

// The source that looks at the real disks. Each disk of the query's location
// is walked breadth first, in generations of at most 256 folders, two folders
// at a time, and every item whose path may match the query's words goes to
// the delegate, one item a call; the commands are the delegate's business.
// There is no volume catalog search on Linux: it answers "not supported" at
// once and every disk is walked.
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

    // Both default to the process-wide objects; they must outlive the search.
    explicit FileSystemSearch(ActivityController* activityController = nullptr, FSUtilities* fsUtilities = nullptr);

    std::string debugDescription() const override { return "FileSystemSearch"; }
    SearchResultSupplier type() const override { return SearchResultSupplier::fileSystem; }
    void search(const QueryContainer& query, SearchDataSourceDelegate& handler) override;
    void searchShouldStop() override;
    // The activity window's cancel button.
    void cancel(ActivityItem& item) override;

    // Folders listed so far, over all disks.
    std::int64_t directoriesSearched() const { return searchedCount.load(); }

private:
    struct DiskWalk {
        std::string diskPath;
        std::string diskKey;
        std::vector<std::string> skipPaths;
        std::vector<std::string> skipIncludes;
        bool offersNameMatchesOnly;
        // Whether found paths go through `Url::correctRootBasedPath`: only a
        // platform with a second spelling of the boot volume changes them.
        bool correctsRootPaths;
    };

    void searchDisk(const Url& disk, SearchDataSourceDelegate& handler);
    int searchfs(const std::string& diskPath);
    bool isVolumeRoot(const std::string& path) const;
    bool nameTestDecidesAlone() const;
    bool isWorthOffering(const std::string& fullPath, const DiskWalk& walk) const;
    void addVolumeCountsToActivity(const Url& disk);
    void iterate(const DiskWalk& walk, SearchDataSourceDelegate& handler);
    std::vector<std::string> iterate(const std::string& directoryPath, const DiskWalk& walk,
                                     SearchDataSourceDelegate& handler);
    void foundItem(const FSItemAndAttrs& item, const DiskWalk& walk, SearchDataSourceDelegate& handler);
    void reportDirectories(std::int64_t count, SearchDataSourceDelegate& handler);
    bool passesDepthTest(const std::string& path) const;

    static DiskWalk makeSkipPaths(const std::string& base, std::string diskKey);
    static bool shouldSkip(const std::string& path, const DiskWalk& walk);

    ActivityController& activityController;
    FSUtilities& fsUtilities;
    std::optional<QueryContainer> query;
    int maxDepth = 0;
    TrackableOperationQueue directoryIterationQueue{concurrentDirectories};
    std::atomic<bool> userCanceled{false};
    std::shared_ptr<ActivityItem> progressItem;
    std::atomic<std::int64_t> searchedCount{0};
    DelayTimer progressUpdateTimer;
};

}  // namespace quester
