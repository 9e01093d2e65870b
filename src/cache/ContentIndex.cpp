#include "cache/ContentIndex.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <thread>

#include <fmt/format.h>

#include "cache/CacheFileCheck.h"
#include "platform/FileLock.h"
#include "platform/FileSystem.h"
#include "platform/Url.h"
#include "support/LogFunc.h"

namespace quester {

namespace {

constexpr const char* infoGroup = "D";
constexpr const char* infoKey = "documentInfo";
constexpr const char* writerLockName = ".quester-cache-writer.pid";
constexpr int busyRetries = 40;
constexpr auto busyRetryPause = std::chrono::milliseconds(50);

std::string lastComponent(const std::string& path) {
    std::size_t end = path.find_last_not_of('/');
    if (end == std::string::npos) return "/";
    std::size_t slash = path.rfind('/', end);
    return path.substr(slash == std::string::npos ? 0 : slash + 1,
                       end - (slash == std::string::npos ? 0 : slash + 1) + 1);
}

std::string withoutExtension(const std::string& name) {
    std::size_t dot = name.rfind('.');
    return dot == std::string::npos || dot == 0 ? name : name.substr(0, dot);
}

}  // namespace

bool quarantineCorruptCache(const std::string& file) {
    FileSystem& fileSystem = FileSystem::real();
    if (fileSystem.status(file).isNotFound()) return true;
    std::string corrupt = file + ".corrupt";
    (void)fileSystem.removeFile(corrupt);
    Status moved = fileSystem.rename(file, corrupt);
    (void)fileSystem.removeFile(CacheFileCheck::stampPath(file));
    if (moved) {
        LOG("Quarantined corrupt cache " + lastComponent(file) + " -> " + lastComponent(corrupt));
        return true;
    }
    LOG("Failed to quarantine corrupt cache " + file + ": " + moved.error().message);
    return fileSystem.status(file).isNotFound();
}

ContentIndex::ContentIndex(Setup setup)
    : identity(setup.id.value_or(Uuid::random())),
      dbFile(std::move(setup.localDBFile)),
      target(std::move(setup.targetURL)),
      updateTag(setup.updatesEvery) {
    if (setup.displayName)
        name = *setup.displayName;
    else
        name = target ? lastComponent(*target) : withoutExtension(lastComponent(dbFile));
}

Result<std::unique_ptr<ContentIndex>> ContentIndex::make(Setup setup) {
    std::unique_ptr<ContentIndex> index(new ContentIndex(std::move(setup)));
    if (Status loaded = index->loadDocumentInfo(); !loaded) return loaded.error();
    return index;
}

ContentIndex::~ContentIndex() {
    if (db) (void)db->close();
}

std::string ContentIndex::writerLockPath() const {
    std::size_t slash = dbFile.rfind('/');
    std::string folder = slash == std::string::npos ? "." : dbFile.substr(0, std::max<std::size_t>(slash, 1));
    return folder + "/" + writerLockName;
}

Status ContentIndex::setAsideAndReopen(SimpleLMDB& store, const Status& damage) {
    std::optional<FileLock> writer;
    if (!holdsWriterLock) {
        for (int attempt = 0; attempt < busyRetries; ++attempt) {
            auto acquired = FileLock::tryAcquire(writerLockPath());
            if (acquired) {
                writer.emplace(std::move(*acquired));
                break;
            }
            std::this_thread::sleep_for(busyRetryPause);
            if (Status opened = store.open(dbFile); opened || opened.error().code != ErrorCode::corrupt) return opened;
        }
        if (!writer) return makeError(ErrorCode::ioError, dbFile + " is being written by another program");
    }
    LOG(damage.error().description());
    if (!quarantineCorruptCache(dbFile)) return damage;
    return store.open(dbFile);
}

Status ContentIndex::openStore() {
    auto store = std::make_unique<SimpleLMDB>();
    Status opened = store->open(dbFile);
    if (!opened && opened.error().code == ErrorCode::corrupt) opened = setAsideAndReopen(*store, opened);
    if (!opened) return opened;
    db = std::move(store);
    folderTree = std::make_unique<FolderTree>(*db);
    wordIndex = std::make_unique<WordIndex>(*db);
    return Status::success();
}

Status ContentIndex::open() {
    std::lock_guard<std::mutex> held(openLock);
    if (folderTree) folderTree->forgetAllFolders();
    if (openCount == 0)
        if (Status opened = openStore(); !opened) return opened;
    ++openCount;
    return Status::success();
}

Status ContentIndex::close() {
    std::lock_guard<std::mutex> held(openLock);
    if (openCount == 0) return Status::success();
    if (--openCount > 0) {
        folderTree->forgetAllFolders();
        return Status::success();
    }
    Status closed = db->close();
    wordIndex.reset();
    folderTree.reset();
    db.reset();
    return closed;
}

bool ContentIndex::isOpen() const {
    return db != nullptr;
}

Status ContentIndex::saveDocumentInfo() {
    if (Status opened = open(); !opened) return opened;
    if (target) info.suggestedTarget = *target;
    Status stored = db->put(Utf8String{info.toJSON()}, infoGroup, infoKey);
    Status closed = close();
    return stored ? closed : stored;
}

Status ContentIndex::loadDocumentInfo() {
    if (Status opened = open(); !opened) return opened;
    Result<std::optional<std::string>> stored = db->get<std::string>(infoGroup, infoKey);
    Status closed = close();
    if (!stored) return stored.error();
    if (!*stored) return closed;
    Result<DocumentInfo> decoded = DocumentInfo::fromJSON(**stored);
    if (!decoded) return decoded.error();
    info = std::move(*decoded);
    return closed;
}

std::vector<std::string> ContentIndex::pathParts(const std::string& path) const {
    std::string_view rest = path;
    if (target && rest.starts_with(*target)) rest.remove_prefix(target->size());
    std::vector<std::string> parts;
    while (!rest.empty()) {
        std::size_t slash = rest.find('/');
        std::string_view part = rest.substr(0, slash);
        if (!part.empty()) parts.emplace_back(part);
        if (slash == std::string_view::npos) break;
        rest.remove_prefix(slash + 1);
    }
    return parts;
}

Result<std::optional<FSItem>> ContentIndex::findItem(const std::string& path) {
    if (!folderTree) return std::optional<FSItem>();
    return folderTree->findItem(pathParts(path));
}

Result<std::optional<std::string>> ContentIndex::pathFor(std::uint32_t id) {
    if (!folderTree) return std::optional<std::string>();
    Result<std::optional<std::string>> relative = folderTree->relativePath(id);
    if (!relative || !*relative) return relative;
    std::string base = pathBase();
    std::string joined = base.empty() || base.back() == '/' ? base + **relative : base + "/" + **relative;
    return std::optional<std::string>(Url::correctRootBasedPath(joined));
}

std::string ContentIndex::pathBase() const {
    std::string base;
    if (target)
        base = *target;
    else if (info.suggestedTarget)
        base = *info.suggestedTarget;
    else if (!name.empty())
        base = "/Volumes/" + name;
    while (base.size() > 1 && base.back() == '/') base.pop_back();
    return base;
}

Status ContentIndex::removeFSItems(const std::vector<std::uint32_t>& ids) {
    if (!folderTree) return Status::success();
    std::vector<std::uint32_t> removed;
    for (std::uint32_t id : ids) {
        Result<std::vector<std::uint32_t>> gone = folderTree->removeFSItem(id);
        if (!gone) return gone.error();
        removed.insert(removed.end(), gone->begin(), gone->end());
    }
    if (!hasTextContent()) return Status::success();
    return wordIndex->appendDeadIds(removed);
}

Status ContentIndex::removeFSItem(std::uint32_t id) {
    return removeFSItems({id});
}

std::uint64_t ContentIndex::cacheSizeOnDisk() const {
    Result<FileStatus> status = FileSystem::real().status(dbFile);
    return status ? status->size : 0;
}

}  // namespace quester
