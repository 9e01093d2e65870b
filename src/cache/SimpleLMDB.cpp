#include "cache/SimpleLMDB.h"

#include <chrono>

#include <fmt/format.h>

#include "cache/CacheFileCheck.h"
#include "platform/FileSystem.h"
#include "support/LogFunc.h"
#include "support/Uuid.h"

namespace quester {

namespace {

// Taken when the program starts, so every compaction of a run shares one
// temporary name per file.
const std::int64_t launchTime =
    std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch()).count() -
    ReferenceDate::unixOffset;

std::string newIdentity() {
    std::string uuid = Uuid::random().toString();
    return "LMDB " + uuid.substr(uuid.size() - 6);
}

// Holds the store's lock for one scope.
class Holding {
public:
    explicit Holding(Semaphore& semaphore) : semaphore(semaphore) { semaphore.wait(); }
    ~Holding() { semaphore.signal(); }
    Holding(const Holding&) = delete;
    Holding& operator=(const Holding&) = delete;

private:
    Semaphore& semaphore;
};

// The library's copy isn't flushed; a rename over the store must not reach
// the disk before the bytes it names.
Status syncFile(const std::string& path) {
    Result<std::unique_ptr<WritableFile>> file = FileSystem::real().openForAppending(path);
    if (!file) return file.error();
    if (Status synced = (*file)->sync(); !synced) return synced;
    return (*file)->close();
}

std::uint64_t fileSize(const std::string& path) {
    Result<FileStatus> status = FileSystem::real().status(path);
    return status ? status->size : 0;
}

}  // namespace

SimpleLMDB::SimpleLMDB() : identity(newIdentity()) {}

SimpleLMDB::~SimpleLMDB() {
    (void)close();
}

Status SimpleLMDB::open(const std::string& file) {
    if (Status checked = CacheFileCheck::checkUnlessUnchanged(file); !checked) return checked;
    Result<FileStatus> before = FileSystem::real().status(file);
    const bool isNew = !before || before->size == 0;
    Result<std::shared_ptr<Environment>> opened = Environment::open(
        file, Environment::noLock | Environment::noSubDir | Environment::noSync, maxDBs, std::nullopt, mapSize);
    if (!opened) return opened.error();
    environment = std::move(*opened);
    if (Status checked = checkExtent(file); !checked) {
        environment.reset();
        return checked;
    }
    // Only a new file is given its database; a file without one is damaged.
    Result<std::unique_ptr<Database>> db =
        Database::open(environment, std::string(databaseName), isNew ? unsigned{Database::create} : 0u);
    if (!db) {
        environment.reset();
        if (db.error().code == ErrorCode::notFound)
            return makeError(ErrorCode::corrupt, "the cache file " + file + " is damaged: it holds no store");
        return db.error();
    }
    database = std::move(*db);
    environment->locateMap();
    return Status::success();
}

// LMDB maps pages past the end of a file it trusts, and touching one kills
// the process; a file cut short is caught here, before any page is read.
Status SimpleLMDB::checkExtent(const std::string& file) {
    Environment::Extent extent = environment->extent();
    Result<FileStatus> status = FileSystem::real().status(file);
    if (!status) return status.error();
    std::uint64_t needed = (extent.lastPage + 1) * extent.pageSize;
    if (extent.pageSize == 0 || needed > status->size || extent.lastPage >= extent.mapSize / extent.pageSize)
        return makeError(ErrorCode::corrupt, fmt::format("the cache file {} is damaged: its header names page {} "
                                                         "but it holds {} bytes",
                                                         file, extent.lastPage, status->size));
    return Status::success();
}

Status SimpleLMDB::close() {
    Status result = Status::success();
    if (batch) result = commitBatch();
    if (unsynced && environment) {
        if (Status synced = environment->sync(); !synced && result) result = synced;
    }
    unsynced = false;
    database.reset();
    environment.reset();
    return result;
}

Result<std::optional<std::string>> SimpleLMDB::getData(const std::string& fullKey) {
    if (!database) return std::optional<std::string>();
    if (isBatchThread()) return database->getData(*batch, fullKey);
    Holding held(storeLock);
    return database->getData(fullKey);
}

Status SimpleLMDB::putData(const std::string& fullKey, std::string_view value) {
    if (!database) return Status::success();
    unsynced = true;
    if (isBatchThread()) return database->putData(*batch, fullKey, value);
    Holding held(storeLock);
    return database->put(std::string(value), fullKey);
}

Status SimpleLMDB::put(const std::vector<ValueGroupKey>& items) {
    if (!database) return Status::success();
    unsynced = true;
    if (isBatchThread()) {
        for (const ValueGroupKey& item : items)
            if (Status stored = database->putData(*batch, item.group + item.key, item.value); !stored) return stored;
        return Status::success();
    }
    Holding held(storeLock);
    return database->put(items);
}

Status SimpleLMDB::remove(std::string_view group, std::string_view key) {
    if (!database) return Status::success();
    unsynced = true;
    std::string fullKey = std::string(group) + std::string(key);
    if (isBatchThread()) return database->deleteData(*batch, fullKey);
    Holding held(storeLock);
    return database->deleteValue(fullKey);
}

Status SimpleLMDB::beginBatch() {
    if (!database) return makeError(ErrorCode::invalidArgument, "the cache is not open");
    if (batch) return makeError(ErrorCode::internal, "a write batch is already running");
    Result<Transaction> transaction = Transaction::begin(*environment, 0);
    if (!transaction) return transaction.error();
    batch.emplace(std::move(*transaction));
    batchThread = std::this_thread::get_id();
    return Status::success();
}

Status SimpleLMDB::commitBatch() {
    if (!batch) return Status::success();
    Transaction committing = std::move(*batch);
    batch.reset();
    return committing.commit();
}

Status SimpleLMDB::sync() {
    if (!environment) return Status::success();
    unsynced = false;
    return environment->sync();
}

std::string SimpleLMDB::compactionFileName(const std::string& dbFile) {
    std::size_t slash = dbFile.rfind('/');
    std::size_t dot = dbFile.rfind('.');
    std::string stem =
        (dot != std::string::npos && (slash == std::string::npos || dot > slash)) ? dbFile.substr(0, dot) : dbFile;
    return fmt::format("{}.db_tmp{}", stem, launchTime);
}

Status SimpleLMDB::compact(const std::string& dbFile) {
    if (!database) return makeError(ErrorCode::invalidArgument, "the cache is not open");
    std::string temporary = compactionFileName(dbFile);
    (void)FileSystem::real().removeFile(temporary);
    LOG(fmt::format("compacting {}: {} bytes", dbFile, fileSize(dbFile)));
    {
        Holding held(storeLock);
        if (Status committed = commitBatch(); !committed) return committed;
        Status copied = database->copyCompact(temporary);
        if (copied) copied = syncFile(temporary);
        if (!copied) {
            (void)FileSystem::real().removeFile(temporary);
            return copied;
        }
    }
    if (Status synced = sync(); !synced) return synced;
    database.reset();
    environment.reset();
    Status renamed = FileSystem::real().rename(temporary, dbFile);
    if (!renamed) (void)FileSystem::real().removeFile(temporary);
    LOG(fmt::format("compacted {}: {} bytes", dbFile, fileSize(dbFile)));
    Status reopened = open(dbFile);
    return renamed ? reopened : renamed;
}

}  // namespace quester
