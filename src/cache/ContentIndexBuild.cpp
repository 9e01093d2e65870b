#include "cache/ContentIndexBuild.h"

#include <algorithm>
#include <chrono>
#include <mutex>
#include <set>
#include <thread>

#include <fmt/format.h>

#include "cache/CacheMirror.h"
#include "import/ImportTextXPC.h"
#include "platform/FSUtilities.h"
#include "platform/FileLock.h"
#include "platform/Url.h"
#include "query/SearchManager.h"
#include "support/LogFunc.h"

namespace quester {

namespace {

constexpr double progressInterval = 0.2;

// One build at a time in the whole process.
std::mutex& indexBuildQueue() {
    static std::mutex queue;
    return queue;
}

double secondsNow() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

double referenceNow() {
    double unix = std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
    return ReferenceDate::fromUnixSeconds(unix).secondsSince2001;
}

std::optional<std::string> searchOrImportRunning() {
    for (const auto& manager : SearchManager::allInstances())
        if (manager->searchInProgress()) return std::string("Paused — waiting for a search to finish");
    if (ImportTextXPC::shared().operationCount() > 0) return std::string("Paused — waiting for text import to finish");
    return std::nullopt;
}

std::string currentDiskKey(const std::string& target) {
    return FSUtilities::shared().keyForDisk(Url(target, true));
}

}  // namespace

bool ContentIndexBuild::isTargetMounted(const ContentIndex& index) {
    if (!index.targetURL()) return false;
    Result<FileStatus> status = FileSystem::real().status(*index.targetURL());
    if (!status || !status->isDirectory()) return false;
    const std::optional<std::string>& recorded = index.documentInfo().diskKey;
    return !recorded || *recorded == currentDiskKey(*index.targetURL());
}

ContentIndexBuild::ContentIndexBuild(ContentIndex& index, const Options& options)
    : index(index), options(options), fileSystem(options.fileSystem ? *options.fileSystem : FileSystem::real()) {}

Status ContentIndexBuild::build(ContentIndex& index, const Options& options) {
    std::lock_guard<std::mutex> oneBuild(indexBuildQueue());
    auto writer = FileLock::tryAcquire(index.writerLockPath());
    if (!writer) return makeError(writer.error().code, "another program is updating caches: " + writer.error().message);
    index.stateLock().setValue(ContentIndex::ContentIndexLMDBState::building);
    index.shouldCancel = false;
    index.setHoldsWriterLock(true);
    ContentIndexBuild build(index, options);
    build.mirror(options.alwaysMirror, true);
    Status result = build.run();
    build.mirrorAfter(result);
    index.setHoldsWriterLock(false);
    index.stateLock().setValue(ContentIndex::ContentIndexLMDBState::none);
    return result;
}

void ContentIndexBuild::mirror(bool alwaysSync, bool pullOnly) {
    Result<CacheMirror::Action> mirrored = CacheMirror::mirrorIfNeeded(index, alwaysSync, pullOnly, fileSystem);
    if (!options.mirrorWarning) return;
    if (!mirrored)
        options.mirrorWarning("the shared copy was not brought level: " + mirrored.error().message);
    else if (*mirrored == CacheMirror::Action::unavailable && !toldUnavailable)
        options.mirrorWarning("the shared copy is unavailable (its disk is not mounted); the local copy is used");
    toldUnavailable = mirrored && *mirrored == CacheMirror::Action::unavailable;
}

void ContentIndexBuild::mirrorAfter(const Status& built) {
    if (built) return mirror(options.alwaysMirror, false);
    if (built.error().code != ErrorCode::cancelled || !index.remoteDBBookmark()) return;
    if (Status restored = CacheMirror::restoreFromRemote(index, fileSystem); !restored && options.mirrorWarning)
        options.mirrorWarning("the shared copy could not be put back: " + restored.error().message);
}

Status ContentIndexBuild::run() {
    if (!index.targetURL())
        return makeError(ErrorCode::invalidArgument, index.displayName() + " has no folder to cache");
    const std::string& target = *index.targetURL();
    Result<FileStatus> rootStatus = fileSystem.status(target);
    if (!rootStatus || !rootStatus->isDirectory() || !isTargetMounted(index))
        return makeError(ErrorCode::notFound, fmt::format("{} is off line: {} is not on the disk it was cached from",
                                                          index.displayName(), target));
    DocumentInfo& info = index.mutableDocumentInfo();
    if (info.isDirty) (void)fileSystem.removeFile(index.localDBFile());
    info.lastIndexMode = options.indexMode;
    info.lastUpdated = referenceNow();
    info.isDirty = false;
    if (!info.diskKey) info.diskKey = currentDiskKey(target);
    if (Status saved = index.saveDocumentInfo(); !saved) return saved;
    if (Status opened = index.open(); !opened) return opened;
    Status walked = startNameIndex();
    if (walked) walked = walk(*rootStatus);
    Status finished = walked ? finish() : walked;
    if (!walked) index.store().abortBatch();
    Status closed = index.close();
    if (!finished) return finished;
    return closed;
}

Status ContentIndexBuild::walk(const FileStatus& rootStatus) {
    lister.emplace(fileSystem, rootStatus.device);
    stack.push_back({*index.targetURL(), 0, 0, FSItem::storedDate(rootStatus.modifyTime)});
    if (Status begun = index.store().beginBatch(); !begun) return begun;
    while (!stack.empty()) {
        pauseIfNeeded();
        if (index.shouldCancel) break;
        Folder folder = std::move(stack.back());
        stack.pop_back();
        if (Status visited = visit(folder); !visited) return visited;
    }
    if (Status flushed = flushWords(); !flushed) return flushed;
    if (Status committed = index.store().commitBatch(); !committed) return committed;
    if (index.shouldCancel)
        return makeError(ErrorCode::cancelled, "the update of " + index.displayName() + " was cancelled");
    return Status::success();
}

void ContentIndexBuild::pauseIfNeeded() {
    auto reasonNow = options.pauseReason ? options.pauseReason : searchOrImportRunning;
    bool paused = false;
    while (std::optional<std::string> reason = reasonNow()) {
        if (options.status) options.status(*reason);
        paused = true;
        std::this_thread::sleep_for(std::chrono::seconds(1));
    }
    if (paused && options.status) options.status("");
}

namespace {

bool sameNames(const std::vector<FSItemAndAttrs>& entries, const FolderTree::FolderContents& contents) {
    if (entries.size() != contents.size()) return false;
    return std::all_of(entries.begin(), entries.end(), [&](const FSItemAndAttrs& entry) {
        auto found = contents.find(entry.name);
        return found != contents.end() && found->second.isDirectory() == entry.isDirectory;
    });
}

}  // namespace

Status ContentIndexBuild::visit(const Folder& folder) {
    bool unchanged = folder.isUnchanged();
    std::vector<FSItemAndAttrs> entries = lister->list(folder.path, !unchanged);
    Result<std::shared_ptr<const FolderTree::FolderContents>> contents = index.tree().loadFolderContents(folder.fsid);
    if (!contents) return contents.error();
    if (unchanged && sameNames(entries, **contents)) {
        for (const FSItemAndAttrs& entry : entries) {
            if (entry.isDirectory)
                pushFolder(entry, (*contents)->find(entry.name)->second);
            else
                ++itemCount;
        }
        reportProgress(folder.path);
        return Status::success();
    }
    if (unchanged) entries = lister->list(folder.path, true);
    return updateFolder(folder, entries, **contents);
}

// Its listing starts at once, on the lister's thread. Folders are always
// statted (their date and disk decide the walk); files only where the folder
// changed, since an unchanged folder keeps its files' records as they are.
void ContentIndexBuild::pushFolder(const FSItemAndAttrs& entry, const FSItem& record) {
    Folder folder{entry.fullPath, record.fsid, record.modificationDate, FSItem::storedDate(entry.modifyTime)};
    lister->prefetch(folder.path, !folder.isUnchanged());
    stack.push_back(std::move(folder));
}

Status ContentIndexBuild::updateFolder(const Folder& folder, const std::vector<FSItemAndAttrs>& entries,
                                       const FolderTree::FolderContents& contents) {
    std::vector<const FSItemAndAttrs*> fresh;
    std::vector<std::uint32_t> gone;
    std::set<std::string_view> listed;
    for (const FSItemAndAttrs& entry : entries) {
        listed.insert(entry.name);
        auto found = contents.find(entry.name);
        if (found != contents.end() && found->second.isDirectory() == entry.isDirectory &&
            (entry.isDirectory || found->second.modificationDate == FSItem::storedDate(entry.modifyTime))) {
            if (entry.isDirectory)
                pushFolder(entry, found->second);
            else
                ++itemCount;
            continue;
        }
        if (found != contents.end()) gone.push_back(found->second.fsid);
        fresh.push_back(&entry);
    }
    for (const auto& [name, record] : contents)
        if (!listed.contains(name)) gone.push_back(record.fsid);
    if (!gone.empty()) {
        changedAnything = true;
        if (Status removed = index.removeFSItems(gone); !removed) return removed;
    }
    Result<std::vector<std::uint32_t>> children = index.tree().loadChildIds(folder.fsid);
    if (!children) return children.error();
    for (const FSItemAndAttrs* entry : fresh) {
        if (index.shouldCancel) break;
        if (Status added = addNewItem(folder, *entry, *children); !added) return added;
        if (Status counted = countChange(folder, *children); !counted) return counted;
    }
    if (Status saved = index.tree().saveChildIds(folder.fsid, *children); !saved) return saved;
    if (folder.fsid != 0 && !index.shouldCancel) {
        Result<std::optional<FSItem>> record = index.tree().record(folder.fsid);
        if (!record) return record.error();
        if (*record && (*record)->modificationDate != folder.currentDate) {
            (*record)->modificationDate = folder.currentDate;
            if (Status written = index.tree().writeRecord(**record); !written) return written;
        }
    }
    reportProgress(folder.path);
    return pendingItems >= batchItems ? commit() : Status::success();
}

Status ContentIndexBuild::addNewItem(const Folder& folder, const FSItemAndAttrs& entry,
                                     std::vector<std::uint32_t>& children) {
    Result<std::uint32_t> id = index.tree().nextID();
    if (!id) return id.error();
    FSItem item{*id,
                folder.fsid,
                entry.isDirectory ? FSItem::types::directory : FSItem::types::file,
                entry.name,
                FSItem::storedDate(entry.createTime),
                entry.isDirectory ? 0 : FSItem::storedDate(entry.modifyTime),
                1,
                entry.isDirectory ? 0 : static_cast<std::int64_t>(entry.fileSize)};
    if (Status written = index.tree().writeRecord(item); !written) return written;
    children.push_back(item.fsid);
    changedAnything = true;
    ++pendingItems;
    if (!names->replacing()) names->add(item.fsid, item.name);
    if (names->pendingCount() > NameIndex::pendingCeiling)
        if (Status flushed = names->flush(index.store()); !flushed) return flushed;
    if (entry.isDirectory) {
        pushFolder(entry, item);
        return Status::success();
    }
    ++itemCount;
    reportProgress(folder.path);
    if (options.indexMode == ContentIndexMode::off) return Status::success();
    return addWordsOf(entry.fullPath, item.fsid);
}

Status ContentIndexBuild::addWordsOf(const std::string& path, std::uint32_t fileID) {
    ImportTextXPC& importer = options.importer ? *options.importer : ImportTextXPC::shared();
    auto [error, words] = importer.wordsInFile(path, options.indexMode == ContentIndexMode::ocrAndTextDocuments);
    if (error) LOG("no words from " + path + ": " + error->description());
    if (!words || index.shouldCancel) return Status::success();
    for (const auto& [word, count] : *words) {
        if (word.size() > WordIndex::longestWord) continue;
        auto cached = wordCache.find(word);
        if (cached != wordCache.end()) {
            cached->second.add(fileID, count);
            continue;
        }
        std::optional<WordContainer> stored = index.words().findExact(word);
        if (stored) {
            stored->add(fileID, count);
            wordCache.emplace(word, std::move(*stored));
        } else {
            wordCache.emplace(word, WordContainer(word, fileID, count));
        }
    }
    return wordCache.size() > wordCacheCeiling ? commit() : Status::success();
}

// Mid-folder, the children gathered so far go with the batch; the folder's
// own date waits for its end.
Status ContentIndexBuild::countChange(const Folder& folder, const std::vector<std::uint32_t>& children) {
    if (pendingItems < batchItems) return Status::success();
    if (Status saved = index.tree().saveChildIds(folder.fsid, children); !saved) return saved;
    return commit();
}

Status ContentIndexBuild::flushWords() {
    if (wordCache.empty()) return Status::success();
    std::vector<WordContainer*> containers;
    containers.reserve(wordCache.size());
    for (auto& [word, container] : wordCache) containers.push_back(&container);
    auto started = std::chrono::steady_clock::now();
    Status written = index.words().write(containers, true);
    wordCache.clear();
    LOG(fmt::format("Write time: {}",
                    std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count()));
    return written;
}

Status ContentIndexBuild::commit() {
    if (Status flushed = flushWords(); !flushed) return flushed;
    if (Status committed = index.store().commitBatch(); !committed) return committed;
    pendingItems = 0;
    return index.store().beginBatch();
}

Status ContentIndexBuild::startNameIndex() {
    Result<std::uint32_t> lastID = index.tree().lastID();
    if (!lastID) return lastID.error();
    Result<bool> complete = NameIndex::isComplete(index.store(), *lastID);
    if (!complete) return complete.error();
    names.emplace(!*complete);
    return Status::success();
}

// Merged in one batch with the mark of how far they reach: a kill before
// leaves the old mark, and the next update rebuilds them.
Status ContentIndexBuild::finishNameIndex() {
    if (!names->replacing() && names->pendingCount() == 0) return Status::success();
    if (names->replacing())
        if (Status added = names->addEveryRecord(index.store()); !added) return added;
    Result<std::uint32_t> lastID = index.tree().lastID();
    if (!lastID) return lastID.error();
    if (Status begun = index.store().beginBatch(); !begun) return begun;
    Status written = names->flush(index.store());
    if (written) written = NameIndex::markIndexedThrough(index.store(), *lastID);
    if (!written) {
        index.store().abortBatch();
        return written;
    }
    changedAnything = true;
    return index.store().commitBatch();
}

Status ContentIndexBuild::finish() {
    if (Status indexed = finishNameIndex(); !indexed) return indexed;
    DocumentInfo& info = index.mutableDocumentInfo();
    info.lastUpdated = referenceNow();
    info.numberOfFSItems = static_cast<std::int64_t>(itemCount);
    if (Status saved = index.saveDocumentInfo(); !saved) return saved;
    reportProgress(*index.targetURL(), true);
    if (Status purged = index.words().purgeWordContainers(); !purged) LOG("purge failed: " + purged.error().message);
    if (!changedAnything) return index.store().sync();
    if (Status compacted = index.store().compact(index.localDBFile()); !compacted)
        LOG("compaction failed: " + compacted.error().message);
    return index.store().sync();
}

void ContentIndexBuild::reportProgress(const std::string& folder, bool force) {
    if (!options.progress) return;
    double now = secondsNow();
    if (!force && now - lastProgressTime < progressInterval) return;
    lastProgressTime = now;
    options.progress({itemCount, folder});
}

}  // namespace quester
