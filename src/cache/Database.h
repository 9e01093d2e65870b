#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <lmdb.h>

#include "cache/Cursor.h"
#include "cache/DataConvertible.h"
#include "cache/Environment.h"
#include "cache/KeyPrefixCursor.h"
#include "cache/Transaction.h"
#include "support/Result.h"

namespace quester {

// A value with the group and key it is stored under; the stored key is the
// group followed directly by the key.
struct ValueGroupKey {
    std::string value;
    std::string group;
    std::string key;
};

// What LMDB tells of a database's B-tree.
struct Stats {
    std::uint32_t pageSize = 0;
    std::uint32_t depth = 0;
    std::size_t branchPageCount = 0;
    std::size_t leafPageCount = 0;
    std::size_t overflowPageCount = 0;
    std::size_t entries = 0;
};

using KeyValueBatch = std::vector<std::pair<std::string, std::string>>;

// One named (or the unnamed) database of an environment, which it keeps
// alive. The operations without a transaction argument run in one of their
// own; the others join the caller's, so a writer can group many changes into
// one commit. Thread-safe as LMDB is.
class Database {
public:
    enum Flags : unsigned {
        reverseKey = MDB_REVERSEKEY,
        duplicateSort = MDB_DUPSORT,
        integerKey = MDB_INTEGERKEY,
        duplicateFixed = MDB_DUPFIXED,
        integerDuplicate = MDB_INTEGERDUP,
        reverseDuplicate = MDB_REVERSEDUP,
        create = MDB_CREATE,
    };
    enum PutFlags : unsigned {
        noDuplicateData = MDB_NODUPDATA,
        noOverwrite = MDB_NOOVERWRITE,
        reserve = MDB_RESERVE,
        append = MDB_APPEND,
        appendDuplicate = MDB_APPENDDUP,
    };

    // Opens (with `create`, makes) the database `name`, or the unnamed one.
    static Result<std::unique_ptr<Database>> open(std::shared_ptr<Environment> environment,
                                                  const std::optional<std::string>& name, unsigned flags);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    Environment& environment() const { return *env; }

    // The stored bytes of `key` inside `transaction`; none when absent.
    Result<std::optional<std::string>> getData(Transaction& transaction, std::string_view key) const;
    Status putData(Transaction& transaction, std::string_view key, std::string_view value, unsigned flags = 0);
    // Deleting an absent key is no failure.
    Status deleteData(Transaction& transaction, std::string_view key);

    // The value of `key`; none when absent or when the bytes are no `T`.
    template <typename T>
    Result<std::optional<T>> get(std::string_view key) const {
        Result<std::optional<std::string>> data = getData(key);
        if (!data) return data.error();
        if (!*data) return std::optional<T>();
        return DataConvertible<T>::fromData(**data);
    }
    Result<std::optional<std::string>> getData(std::string_view key) const;
    Result<bool> exists(std::string_view key) const;

    // Stores one value in a transaction of its own, which is committed even
    // when the put failed; the put's error comes back after that.
    template <typename T>
    Status put(const T& value, std::string_view key, unsigned flags = 0) {
        return putOne(DataConvertible<T>::asData(value), key, flags);
    }
    // Stores every pair (up to the shorter list) in one transaction: all or nothing.
    Status put(const std::vector<std::string>& values, const std::vector<std::string>& keys, unsigned flags = 0);
    Status put(const std::vector<ValueGroupKey>& items, unsigned flags = 0);
    Status deleteValue(std::string_view key);
    // Removes every entry, keeping the database.
    Status empty();
    // Removes the database itself.
    Status drop();
    Result<Stats> stats() const;
    Status copyCompact(const std::string& destination) const { return env->copyCompact(destination); }

    Result<std::unique_ptr<KeyPrefixCursor>> keyPrefixCursor(std::string_view prefix) const;
    Result<std::unique_ptr<Cursor>> makeIterator() const;
    // Up to `batchSize` rows whose keys begin with `prefix` and are valid
    // UTF-8, after `lastKey` (empty before the first call), which is moved on
    // to the last key seen. None when nothing was found: the end of a walk.
    Result<std::optional<KeyValueBatch>> nextKeyValueBatch(std::string& lastKey, std::string_view prefix,
                                                           std::size_t batchSize) const;

    MDB_dbi handle() const { return dbi; }

private:
    Database(std::shared_ptr<Environment> environment, MDB_dbi dbi) : env(std::move(environment)), dbi(dbi) {}
    Status putOne(const std::string& value, std::string_view key, unsigned flags);
    Status dropDatabase(int deleteIt);

    std::shared_ptr<Environment> env;
    MDB_dbi dbi;
};

}  // namespace quester
