#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "cache/DataConvertible.h"
#include "cache/Database.h"
#include "cache/Environment.h"
#include "support/Result.h"
#include "support/Semaphore.h"

namespace quester {

// A one-database key/value store in one file, with keys made of a one-letter
// group and the key proper. The file is opened without LMDB's lock file, so
// this object's lock is the only guard within the process, and one process
// at a time may write (the cache writer lock). After opening, the file is
// checked: the last page its header names must lie inside it, or the open
// fails as corrupt and nothing is mapped.
//
// Writes are made durable only by `sync` (or `close`): a killed process loses
// nothing committed, a crashed machine may lose what was not synced.
//
// A write batch groups every read and write of the thread that began it into
// one transaction, committed by `commitBatch`; other threads keep reading
// what was committed before.
class SimpleLMDB {
public:
    static constexpr std::size_t mapSize = 0x1FFFFFFFE;
    static constexpr unsigned maxDBs = 32;
    static constexpr const char* databaseName = "SimpleLMDB";

    SimpleLMDB();
    ~SimpleLMDB();
    SimpleLMDB(const SimpleLMDB&) = delete;
    SimpleLMDB& operator=(const SimpleLMDB&) = delete;

    // "LMDB " and six characters of a new UUID.
    const std::string& id() const { return identity; }
    bool isOpen() const { return database != nullptr; }

    // Opens (making when missing) the store in `file`.
    Status open(const std::string& file);
    // Commits a running batch, syncs what was written and unmaps the file.
    Status close();

    // None when the key is absent, its bytes are no `T`, or the store is closed.
    template <typename T>
    Result<std::optional<T>> get(std::string_view group, std::string_view key) {
        Result<std::optional<std::string>> data = getData(std::string(group) + std::string(key));
        if (!data) return data.error();
        if (!*data) return std::optional<T>();
        return DataConvertible<T>::fromData(**data);
    }
    template <typename T>
    Status put(const T& value, std::string_view group, std::string_view key) {
        return putData(std::string(group) + std::string(key), DataConvertible<T>::asData(value));
    }
    Result<std::optional<std::string>> getData(const std::string& fullKey);
    Status putData(const std::string& fullKey, std::string_view value);
    Status put(const std::vector<ValueGroupKey>& items);
    Status remove(std::string_view group, std::string_view key);

    Status beginBatch();
    Status commitBatch();
    // Drops every change of the running batch.
    void abortBatch() { batch.reset(); }
    bool inBatch() const { return batch.has_value(); }
    // Writes what is committed to the disk.
    Status sync();

    // Copies the store compacted to a temporary file beside `dbFile`, renames
    // it over `dbFile` and opens it again. A leftover temporary file of that
    // name is removed first; on failure the store stays as it was, open.
    Status compact(const std::string& dbFile);
    // The temporary name `compact` uses: the extension replaced by "db_tmp"
    // and the launch time in whole seconds since 2001.
    static std::string compactionFileName(const std::string& dbFile);

    // For the walks that call the database directly; they hold `lock` around
    // each call. Null while closed.
    Database* db() const { return database.get(); }
    Semaphore& lock() { return storeLock; }

private:
    Status checkExtent(const std::string& file);
    bool isBatchThread() const { return batch && batchThread == std::this_thread::get_id(); }

    const std::string identity;
    std::shared_ptr<Environment> environment;
    std::unique_ptr<Database> database;
    Semaphore storeLock{1};
    std::optional<Transaction> batch;
    std::thread::id batchThread;
    bool unsynced = false;
};

}  // namespace quester
