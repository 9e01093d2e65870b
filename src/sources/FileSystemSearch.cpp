#include "sources/FileSystemSearch.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <deque>

#include "commands/MaxDepth.h"
#include "platform/FSUtilities.h"
#include "platform/MountTable.h"
#include "platform/Url.h"
#include "query/SearchDataSourceDelegate.h"
#include "query/SearchResult.h"
#include "sources/DirectoryIterator.h"
#include "support/ActivityController.h"
#include "support/LogFunc.h"
#include "support/PathText.h"

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

}  // namespace

FileSystemSearch::FileSystemSearch(ActivityController* activityController, FSUtilities* fsUtilities,
                                   FileSystem* fileSystem)
    : activityController(activityController ? *activityController : ActivityController::shared()),
      fsUtilities(fsUtilities ? *fsUtilities : FSUtilities::shared()),
      fileSystem(fileSystem ? *fileSystem : FileSystem::real()),
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
        searchedFolders = query->whereLocation()->locationPaths();
        const auto mounts = fileSystem.mountTable();
        if (!mounts) LOG("no mount table, walks may cross into other disks: " + mounts.error().message);
        // Disks found below a walked one are appended and walked in turn.
        std::vector<Url> disks = query->whereLocation()->disksForLocations();
        for (std::size_t index = 0; index < disks.size(); ++index) {
            if (handler.shouldStop()) continue;
            searchDisk(Url(disks[index]), mounts ? &*mounts : nullptr, disks, handler);
        }
    }

    activityController.mainLoop().post(
        [item = progressItem, &controller = activityController] { controller.remove(*item); });
}

void FileSystemSearch::searchDisk(const Url& disk, const MountTable* mounts, std::vector<Url>& disks,
                                  SearchDataSourceDelegate& handler) {
    const std::string diskPath(withoutTrailingSlash(disk.path()));
    std::string diskKey = fsUtilities.keyForDisk(disk);
    bool tryCatalog =
        isVolumeRoot(diskPath) && !query->searchWords().empty() && maxDepth == 0 && !query->includesORStatement();
    if (tryCatalog) {
        int answer = searchfs(diskPath);
        if (answer != catalogSearchNotSupported && answer != kPermissionDenied) return;
    }
    LOG("Iteration");
    addVolumeCountsToActivity(disk);
    DiskWalk walk = makeSkipPaths(diskPath, std::move(diskKey));
    if (mounts) addMountsBelow(walk, *mounts, disks);
    walk.offersNameMatchesOnly = nameTestDecidesAlone() && !holdsAnyWord(diskPath, query->searchWords());
    iterate(walk, handler);
    directoryIterationQueue.waitUntilAllOperationsAreFinished();
}

// Linux has no catalog search of a whole volume.
int FileSystemSearch::searchfs(const std::string&) {
    return catalogSearchNotSupported;
}

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

FileSystemSearch::DiskWalk FileSystemSearch::makeSkipPaths(const std::string& base, std::string diskKey) const {
    const PlatformProfile& profile = fsUtilities.profile();
    std::string root = base == "/" ? "" : base;
    std::vector<std::string> skipPaths;
    for (const auto& folder : profile.walkSkippedFolders) skipPaths.push_back(root + folder);
    return DiskWalk{base,
                    std::move(diskKey),
                    std::move(skipPaths),
                    profile.walkSkippedPathParts,
                    {},
                    false,
                    Url::bootVolumeURL().has_value()};
}

// Every mount point below the disk is left to a walk of its own: the ones
// that may hold a person's files are added to the disks to walk.
void FileSystemSearch::addMountsBelow(DiskWalk& walk, const MountTable& mounts, std::vector<Url>& disks) {
    for (const MountEntry& entry : mounts.entries()) {
        if (!isStrictlyBelow(entry.mountPoint, walk.diskPath)) continue;
        walk.otherMounts.insert(entry.mountPoint);
        if (mounts.entryAt(entry.mountPoint) != &entry || !entry.holdsPersonalFiles()) continue;
        const bool known = std::any_of(disks.begin(), disks.end(), [&](const Url& disk) {
            return withoutTrailingSlash(disk.path()) == entry.mountPoint;
        });
        auto status = fileSystem.status(entry.mountPoint, false);
        if (!known && status && status->isDirectory()) disks.emplace_back(entry.mountPoint, true);
    }
}

bool FileSystemSearch::shouldSkip(const std::string& path, const DiskWalk& walk) {
    for (const auto& skipped : walk.skipPaths) {
        if (path == skipped) return true;
    }
    if (walk.otherMounts.count(path) > 0) return true;
    for (const auto& included : walk.skipIncludes) {
        if (path.find(included) != std::string::npos) return true;
    }
    return false;
}

void FileSystemSearch::iterate(const DiskWalk& walk, SearchDataSourceDelegate& handler) {
    Locked<std::deque<PendingFolder>> pending(std::deque<PendingFolder>{PendingFolder{walk.diskPath, nullptr}});
    for (;;) {
        if (userCanceled) break;
        auto generation = pending.access([](std::deque<PendingFolder>& waiting) {
            std::size_t count = std::min(waiting.size(), generationSize);
            std::vector<PendingFolder> taken(std::make_move_iterator(waiting.begin()),
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
                DirectoryIterator iterator(fileSystem);
                iterator.setReadsAttributes(handler.needsItemAttributes());
                std::vector<PendingFolder> found;
                std::int64_t subdirectoriesSeen = 0;
                std::int64_t skipped = 0;
                for (std::size_t index; !userCanceled && (index = next++) < generation.size();) {
                    FolderListing listing = iterate(generation[index], walk, iterator, handler);
                    skipped += listing.skipped ? 1 : 0;
                    subdirectoriesSeen += static_cast<std::int64_t>(listing.subdirectories.size());
                    for (auto& subdirectory : listing.subdirectories) {
                        if (passesDepthTest(subdirectory.path)) found.push_back(std::move(subdirectory));
                    }
                }
                // Counted once for the folders this operation listed: the
                // progress is read four times a second, not a folder at a time.
                reportDirectories(subdirectoriesSeen, skipped, handler);
                pending.access([&](std::deque<PendingFolder>& waiting) {
                    waiting.insert(waiting.end(), std::make_move_iterator(found.begin()),
                                   std::make_move_iterator(found.end()));
                });
            });
        }
        directoryIterationQueue.waitUntilAllOperationsAreFinished();
    }
}

Result<std::unique_ptr<DirectoryHandle>> FileSystemSearch::open(const PendingFolder& folder) {
    if (!folder.parent) return fileSystem.openDirectory(folder.path);
    return fileSystem.openDirectoryAt(*folder.parent, std::string_view(folder.path).substr(folder.path.rfind('/') + 1));
}

std::shared_ptr<DirectoryHandle> FileSystemSearch::holdForSubfolders(std::unique_ptr<DirectoryHandle> handle) {
    if (heldFolders.fetch_add(1) >= maxHeldFolders) {
        --heldFolders;
        return nullptr;
    }
    return std::shared_ptr<DirectoryHandle>(handle.release(), [this](DirectoryHandle* held) {
        delete held;
        --heldFolders;
    });
}

FileSystemSearch::FolderListing FileSystemSearch::iterate(const PendingFolder& folder, const DiskWalk& walk,
                                                          DirectoryIterator& iterator,
                                                          SearchDataSourceDelegate& handler) {
    FolderListing result;
    const std::string& directoryPath = folder.path;
    if (shouldSkip(directoryPath, walk)) return result;
    if (!handler.showHiddenItems() && fsUtilities.isHiddenFromSearch(directoryPath, searchedFolders)) return result;
    auto opened = open(folder);
    if (!opened) {
        // A folder that went away, or that turned into something else, is no loss to report.
        const ErrorCode code = opened.error().code;
        result.skipped = code != ErrorCode::notFound && code != ErrorCode::invalidArgument;
        LOG("open error: " + opened.error().message);
        return result;
    }
    // Only the items that may match pay for their attributes, and only when
    // something needs them.
    auto listing = iterator.contentsOfDirectory(**opened, directoryPath, [&](std::string_view path, bool) {
        return !handler.shouldStop() && isWorthOffering(path, walk);
    });
    if (listing.readError) {
        result.skipped = true;
        LOG("listing error: " + listing.readError->message);
    }
    std::shared_ptr<DirectoryHandle> held;
    // A folder's finds travel together: one trip through the search manager's
    // queue a folder, not one an item.
    std::vector<SearchResult> found;
    for (auto& item : listing.items) {
        if (item.wanted && !handler.shouldStop()) found.push_back(foundItem(item, walk));
        if (!item.isDirectory) continue;
        if (!held && *opened) held = holdForSubfolders(std::move(*opened));
        result.subdirectories.push_back(PendingFolder{std::move(item.fullPath), held});
    }
    if (!found.empty()) handler.supplySearchResults(std::move(found), *this);
    return result;
}

// An item whose own name fails, in a query that the name test decides alone,
// can never pass; it could only bring the enclosing folders named after a
// word, and the breadth-first walk has offered each of those before it. So
// such items aren't offered, saving their attributes and their trip through
// the filters. When the walked folder's own path holds a query word, the
// folder itself (or a disk root) would come only from such items: then every
// possible match is offered.
bool FileSystemSearch::isWorthOffering(std::string_view fullPath, const DiskWalk& walk) const {
    if (walk.offersNameMatchesOnly) {
        std::string_view name = fullPath.substr(fullPath.rfind('/') + 1);
        if (!query->fsItemNameStringIncludesWordsFromQuery(name, false)) return false;
    }
    return query->isPossibleMatch(fullPath, false);
}

void FileSystemSearch::reportDirectories(std::int64_t count, std::int64_t skipped, SearchDataSourceDelegate& handler) {
    if (skipped > 0) handler.supplySkippedDirectories(skipped);
    handler.supplySearchedDirectoriesProgress(count);
    std::int64_t searched = searchedCount += count;
    if (!progressUpdateTimer.hasElapsed()) return;
    activityController.mainLoop().post([item = progressItem, searched] {
        if (item->working().totalUnitCount) item->setCompletedUnitCount(searched);
    });
}

SearchResult FileSystemSearch::foundItem(const FSItemAndAttrs& item, const DiskWalk& walk) {
    SearchResult result;
    result.searchResultSuppliedBy = SearchResultSupplier::fileSystem;
    result.diskKey = walk.diskKey;
    result.url =
        Url(walk.correctsRootPaths ? Url::correctRootBasedPath(item.fullPath) : item.fullPath, item.isDirectory);
    result.isDirectory = item.isDirectory;
    result.size = item.fileSize;
    result.creationDate = item.createTime.seconds;
    result.modDate = item.modifyTime.seconds;
    result.lastAccessDate = item.accessTime.seconds;
    result.nameIsKnownToMatch = walk.offersNameMatchesOnly;
    return result;
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

void FileSystemSearch::cancel(ActivityItem&) {
    userCanceled = true;
}

}  // namespace quester
