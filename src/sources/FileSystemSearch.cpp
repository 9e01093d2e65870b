#include "sources/FileSystemSearch.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <deque>

#include "commands/MaxDepth.h"
#include "platform/FSUtilities.h"
#include "platform/Url.h"
#include "query/SearchDataSourceDelegate.h"
#include "query/SearchResult.h"
#include "support/ActivityController.h"
#include "sources/DirectoryIterator.h"
#include "support/LogFunc.h"

namespace quester {
namespace {

constexpr const char* kVolumesPrefix = "/Volumes/";
constexpr int kPermissionDenied = 1;  // EPERM in the numbering the catalog call uses

std::string joinedWords(const std::vector<std::string>& words) {
    std::string joined;
    for (const auto& word : words) {
        if (!joined.empty()) joined += ' ';
        joined += word;
    }
    return joined;
}

std::string activityTitle(const QueryContainer& query) {
    std::string words = joinedWords(query.searchWordsOriginalCase());
    return words.empty() ? "Searching File System" : "Searching File System for \u201C" + words + "\u201D";
}

std::vector<std::string> nonEmptyPieces(const std::string& path) {
    std::vector<std::string> pieces;
    std::size_t start = 0;
    while (start <= path.size()) {
        auto slash = path.find('/', start);
        if (slash == std::string::npos) slash = path.size();
        if (slash > start) pieces.push_back(path.substr(start, slash - start));
        start = slash + 1;
    }
    return pieces;
}

// Whether `path` holds one of `words`, ignoring ASCII case.
bool holdsAnyWord(const std::string& path, const std::vector<std::string>& words) {
    auto lower = [](std::string text) {
        for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        return text;
    };
    const std::string folded = lower(path);
    return std::any_of(words.begin(), words.end(), [&](const std::string& word) {
        return !word.empty() && folded.find(lower(word)) != std::string::npos;
    });
}

std::string withoutTrailingSlash(std::string path) {
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    return path;
}

}  // namespace

FileSystemSearch::FileSystemSearch(ActivityController* activityController, FSUtilities* fsUtilities)
    : activityController(activityController ? *activityController : ActivityController::shared()),
      fsUtilities(fsUtilities ? *fsUtilities : FSUtilities::shared()),
      progressUpdateTimer(std::chrono::milliseconds(250), true) {}

void FileSystemSearch::search(const QueryContainer& forQuery, SearchDataSourceDelegate& handler) {
    query = forQuery;
    auto depthCommand = query->findCommand<MaxDepth>();
    maxDepth = depthCommand ? depthCommand->maxDepth : 0;

    ActivityItem::Options options;
    options.title = activityTitle(*query);
    options.verb = "Searched";
    progressItem = ActivityItem::create(std::move(options), activityController);
    std::weak_ptr<ActivityItemCancelProtocol> cancelTarget = weak_from_this();
    activityController.mainLoop().post([item = progressItem, cancelTarget] { item->setCancelTarget(cancelTarget); });

    if (query->whereLocation()) {
        for (const Url& disk : query->whereLocation()->disksForLocations()) {
            if (handler.shouldStop()) continue;
            searchDisk(disk, handler);
        }
    }

    activityController.mainLoop().post([item = progressItem, &controller = activityController] {
        controller.remove(*item);
    });
}

void FileSystemSearch::searchDisk(const Url& disk, SearchDataSourceDelegate& handler) {
    const std::string diskPath = withoutTrailingSlash(disk.path());
    std::string diskKey = fsUtilities.keyForDisk(disk);
    bool tryCatalog = isVolumeRoot(diskPath) && !query->searchWords().empty() && maxDepth == 0 &&
                      !query->includesORStatement();
    if (tryCatalog) {
        int answer = searchfs(diskPath);
        if (answer != catalogSearchNotSupported && answer != kPermissionDenied) return;
    }
    LOG("Iteration");
    addVolumeCountsToActivity(disk);
    DiskWalk walk = makeSkipPaths(diskPath, std::move(diskKey));
    walk.offersNameMatchesOnly = nameTestDecidesAlone() && !holdsAnyWord(diskPath, query->searchWords());
    iterate(walk, handler);
    directoryIterationQueue.waitUntilAllOperationsAreFinished();
}

// Linux has no catalog search of a whole volume.
int FileSystemSearch::searchfs(const std::string&) { return catalogSearchNotSupported; }

// In the flat form a result whose name fails is dropped whatever its commands
// say, unless the query is "words or : commands" or has no words at all.
bool FileSystemSearch::nameTestDecidesAlone() const {
    return !query->booleanExpr().hasCommandUnderOr() && !query->isORCommandSearch() && !query->booleanExpr().isEmpty();
}

bool FileSystemSearch::isVolumeRoot(const std::string& path) const {
    auto pieces = nonEmptyPieces(path);
    bool underVolumes = path.rfind(kVolumesPrefix, 0) == 0;
    return underVolumes ? pieces.size() == 2 : pieces.empty();
}

void FileSystemSearch::addVolumeCountsToActivity(const Url& disk) {
    auto counts = fsUtilities.volumeObjectCounts(disk);
    if (!counts) return;
    activityController.mainLoop().post([item = progressItem, dirs = static_cast<std::int64_t>(counts->dirs)] {
        item->setTotalUnitCount(item->working().totalUnitCount.value_or(0) + dirs);
    });
}

FileSystemSearch::DiskWalk FileSystemSearch::makeSkipPaths(const std::string& base, std::string diskKey) {
    std::string root = base == "/" ? "" : base;
    return DiskWalk{base,
                    std::move(diskKey),
                    {root + "/Volumes", root + "/System/Volumes", root + "/Network"},
                    {"/Backups.backupdb"},
                    false,
                    Url::bootVolumeURL().has_value()};
}

bool FileSystemSearch::shouldSkip(const std::string& path, const DiskWalk& walk) {
    for (const auto& skipped : walk.skipPaths) {
        if (path == skipped) return true;
    }
    for (const auto& included : walk.skipIncludes) {
        if (path.find(included) != std::string::npos) return true;
    }
    return false;
}

void FileSystemSearch::iterate(const DiskWalk& walk, SearchDataSourceDelegate& handler) {
    Locked<std::deque<std::string>> pending(std::deque<std::string>{walk.diskPath});
    for (;;) {
        if (userCanceled) break;
        auto generation = pending.access([](std::deque<std::string>& waiting) {
            std::size_t count = std::min(waiting.size(), generationSize);
            std::vector<std::string> taken(std::make_move_iterator(waiting.begin()),
                                           std::make_move_iterator(waiting.begin() + static_cast<long>(count)));
            waiting.erase(waiting.begin(), waiting.begin() + static_cast<long>(count));
            return taken;
        });
        if (generation.empty()) break;
        // Two operations share the generation, each taking the next folder
        // in turn: two folders at a time, without a queue operation a folder.
        std::atomic<std::size_t> next{0};
        for (int worker = 0; worker < concurrentDirectories; ++worker) {
            directoryIterationQueue.addTrackedOperation([this, &generation, &next, &walk, &handler, &pending] {
                std::vector<std::string> found;
                std::int64_t subdirectoriesSeen = 0;
                for (std::size_t index; !userCanceled && (index = next++) < generation.size();) {
                    auto subdirectories = iterate(generation[index], walk, handler);
                    subdirectoriesSeen += static_cast<std::int64_t>(subdirectories.size());
                    for (auto& subdirectory : subdirectories) {
                        if (passesDepthTest(subdirectory)) found.push_back(std::move(subdirectory));
                    }
                }
                // Counted once for the folders this operation listed: the
                // progress is read four times a second, not a folder at a time.
                reportDirectories(subdirectoriesSeen, handler);
                pending.access([&](std::deque<std::string>& waiting) {
                    waiting.insert(waiting.end(), std::make_move_iterator(found.begin()), std::make_move_iterator(found.end()));
                });
            });
        }
        directoryIterationQueue.waitUntilAllOperationsAreFinished();
    }
}

std::vector<std::string> FileSystemSearch::iterate(const std::string& directoryPath, const DiskWalk& walk,
                                                   SearchDataSourceDelegate& handler) {
    if (shouldSkip(directoryPath, walk)) return {};
    if (!handler.showHiddenItems()) {
        if (fsUtilities.isInsideOSDirectory(directoryPath)) return {};
        if (fsUtilities.isInvisibleOrInsidePackage(directoryPath)) return {};
    }
    // Only the items that may match pay for their attributes.
    // Each worker thread keeps one iterator, so its 64 KiB buffer is reused.
    thread_local DirectoryIterator iterator;
    auto listing = iterator.contentsOfDirectoryAtPath(directoryPath, [&](const std::string& path, bool) {
        return !handler.shouldStop() && isWorthOffering(path, walk);
    });
    std::vector<std::string> subdirectories;
    for (auto& item : listing.items) {
        if (item.attributesRead && !handler.shouldStop()) foundItem(item, walk, handler);
        if (item.isDirectory) subdirectories.push_back(std::move(item.fullPath));
    }
    return subdirectories;
}

// An item whose own name fails, in a query that the name test decides alone,
// can never pass; it could only bring the enclosing folders named after a
// word, and the breadth-first walk has offered each of those before it. So
// such items aren't offered, saving their attributes and their trip through
// the filters. When the walked folder's own path holds a query word, the
// folder itself (or a disk root) would come only from such items: then every
// possible match is offered.
bool FileSystemSearch::isWorthOffering(const std::string& fullPath, const DiskWalk& walk) const {
    if (walk.offersNameMatchesOnly) {
        std::string_view name = std::string_view(fullPath).substr(fullPath.rfind('/') + 1);
        if (!query->fsItemNameStringIncludesWordsFromQuery(name, false)) return false;
    }
    return query->isPossibleMatch(fullPath, false);
}

void FileSystemSearch::reportDirectories(std::int64_t count, SearchDataSourceDelegate& handler) {
    handler.supplySearchedDirectoriesProgress(count);
    std::int64_t searched = searchedCount += count;
    if (!progressUpdateTimer.hasElapsed()) return;
    activityController.mainLoop().post([item = progressItem, searched] {
        if (item->working().totalUnitCount) item->setCompletedUnitCount(searched);
    });
}

void FileSystemSearch::foundItem(const FSItemAndAttrs& item, const DiskWalk& walk, SearchDataSourceDelegate& handler) {
    SearchResult result;
    result.searchResultSuppliedBy = SearchResultSupplier::fileSystem;
    result.diskKey = walk.diskKey;
    result.url = Url(walk.correctsRootPaths ? Url::correctRootBasedPath(item.fullPath) : item.fullPath,
                     item.isDirectory);
    result.isDirectory = item.isDirectory;
    result.size = item.fileSize;
    result.creationDate = item.createTime.seconds;
    result.modDate = item.modifyTime.seconds;
    result.lastAccessDate = item.accessTime.seconds;
    std::vector<SearchResult> batch;
    batch.push_back(std::move(result));
    handler.supplySearchResults(std::move(batch), *this);
}

// The depth is counted from the volume's root, not from the searched folder.
bool FileSystemSearch::passesDepthTest(const std::string& path) const {
    if (maxDepth < 1) return true;
    std::string_view rest = path;
    bool underVolumes = rest.rfind(kVolumesPrefix, 0) == 0;
    if (rest.rfind("/Volumes", 0) == 0) rest.remove_prefix(8);
    if (!rest.empty() && rest.front() == '/') rest.remove_prefix(1);
    long depth = 1 + static_cast<long>(std::count(rest.begin(), rest.end(), '/'));
    if (underVolumes) --depth;
    return maxDepth >= depth;
}

void FileSystemSearch::searchShouldStop() {
    userCanceled = true;
    directoryIterationQueue.cancelAllOperations();
}

void FileSystemSearch::cancel(ActivityItem&) { userCanceled = true; }

}  // namespace quester
