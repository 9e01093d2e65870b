#include "cache/Database.h"

#include "cache/LMDBError.h"
#include "support/Utf8Text.h"

namespace quester {

namespace {

MDB_val valueOf(std::string_view bytes) {
    return MDB_val{bytes.size(), const_cast<char*>(bytes.data())};
}

std::string_view viewOf(const MDB_val& value) {
    return {static_cast<const char*>(value.mv_data), value.mv_size};
}

}  // namespace

Result<std::unique_ptr<Database>> Database::open(std::shared_ptr<Environment> environment,
                                                 const std::optional<std::string>& name, unsigned flags) {
    // Opening what exists writes nothing: LMDB trusts a page it writes back
    // more than one it only reads.
    const bool writes = (flags & create) != 0 && !environment->isReadOnly();
    Result<Transaction> transaction = Transaction::begin(*environment, writes ? 0u : unsigned{Transaction::readOnly});
    if (!transaction) return transaction.error();
    MDB_dbi dbi = 0;
    std::string label = name ? "database " + *name : std::string("the unnamed database");
    if (Status opened = lmdbStatus(mdb_dbi_open(transaction->handle(), name ? name->c_str() : nullptr, flags, &dbi),
                                   "cannot open " + label);
        !opened)
        return opened.error();
    if (Status committed = transaction->commit(); !committed) return committed.error();
    return std::unique_ptr<Database>(new Database(std::move(environment), dbi));
}

Database::~Database() {
    mdb_dbi_close(env->handle(), dbi);
}

Result<std::optional<std::string>> Database::getData(Transaction& transaction, std::string_view key) const {
    MDB_val keyValue = valueOf(key);
    MDB_val data{};
    int rc = mdb_get(transaction.handle(), dbi, &keyValue, &data);
    if (rc == MDB_NOTFOUND) return std::optional<std::string>();
    if (Status read = lmdbStatus(rc, "cannot read a value"); !read) return read.error();
    if (!env->holds(data)) return makeError(ErrorCode::corrupt, "the cache file names a value past its end");
    return std::optional<std::string>(std::string(viewOf(data)));
}

Status Database::putData(Transaction& transaction, std::string_view key, std::string_view value, unsigned flags) {
    MDB_val keyValue = valueOf(key);
    MDB_val data = valueOf(value);
    return lmdbStatus(mdb_put(transaction.handle(), dbi, &keyValue, &data, flags), "cannot store a value");
}

Status Database::deleteData(Transaction& transaction, std::string_view key) {
    MDB_val keyValue = valueOf(key);
    int rc = mdb_del(transaction.handle(), dbi, &keyValue, nullptr);
    if (rc == MDB_NOTFOUND) return Status::success();
    return lmdbStatus(rc, "cannot delete a value");
}

Result<std::optional<std::string>> Database::getData(std::string_view key) const {
    Result<Transaction> transaction = Transaction::begin(*env, Transaction::readOnly);
    if (!transaction) return transaction.error();
    return getData(*transaction, key);
}

Result<bool> Database::exists(std::string_view key) const {
    Result<std::optional<std::string>> data = getData(key);
    if (!data) return data.error();
    return data->has_value();
}

Status Database::putOne(const std::string& value, std::string_view key, unsigned flags) {
    Result<Transaction> transaction = Transaction::begin(*env, 0);
    if (!transaction) return transaction.error();
    Status stored = putData(*transaction, key, value, flags);
    if (Status committed = transaction->commit(); !committed) return committed;
    return stored;
}

Status Database::put(const std::vector<std::string>& values, const std::vector<std::string>& keys, unsigned flags) {
    Result<Transaction> transaction = Transaction::begin(*env, 0);
    if (!transaction) return transaction.error();
    std::size_t count = std::min(values.size(), keys.size());
    for (std::size_t i = 0; i < count; ++i)
        if (Status stored = putData(*transaction, keys[i], values[i], flags); !stored) return stored;
    return transaction->commit();
}

Status Database::put(const std::vector<ValueGroupKey>& items, unsigned flags) {
    std::vector<std::string> values;
    std::vector<std::string> keys;
    for (const ValueGroupKey& item : items) {
        values.push_back(item.value);
        keys.push_back(item.group + item.key);
    }
    return put(values, keys, flags);
}

Status Database::deleteValue(std::string_view key) {
    Result<Transaction> transaction = Transaction::begin(*env, 0);
    if (!transaction) return transaction.error();
    if (Status deleted = deleteData(*transaction, key); !deleted) return deleted;
    return transaction->commit();
}

Status Database::dropDatabase(int deleteIt) {
    Result<Transaction> transaction = Transaction::begin(*env, 0);
    if (!transaction) return transaction.error();
    if (Status dropped = lmdbStatus(mdb_drop(transaction->handle(), dbi, deleteIt), "cannot empty the database");
        !dropped)
        return dropped;
    return transaction->commit();
}

Status Database::empty() {
    return dropDatabase(0);
}

Status Database::drop() {
    return dropDatabase(1);
}

Result<Stats> Database::stats() const {
    Result<Transaction> transaction = Transaction::begin(*env, Transaction::readOnly);
    if (!transaction) return transaction.error();
    MDB_stat stat{};
    if (Status read = lmdbStatus(mdb_stat(transaction->handle(), dbi, &stat), "cannot read the statistics"); !read)
        return read.error();
    return Stats{stat.ms_psize,      stat.ms_depth,          stat.ms_branch_pages,
                 stat.ms_leaf_pages, stat.ms_overflow_pages, stat.ms_entries};
}

namespace {

Result<std::pair<Transaction, MDB_cursor*>> openReadCursor(Environment& environment, MDB_dbi dbi) {
    Result<Transaction> transaction = Transaction::begin(environment, Transaction::readOnly);
    if (!transaction) return transaction.error();
    MDB_cursor* cursor = nullptr;
    if (Status opened = lmdbStatus(mdb_cursor_open(transaction->handle(), dbi, &cursor), "cannot open a cursor");
        !opened)
        return opened.error();
    return std::make_pair(std::move(*transaction), cursor);
}

}  // namespace

Result<std::unique_ptr<KeyPrefixCursor>> Database::keyPrefixCursor(std::string_view prefix) const {
    auto opened = openReadCursor(*env, dbi);
    if (!opened) return opened.error();
    return std::make_unique<KeyPrefixCursor>(std::move(opened->first), opened->second, prefix, *env);
}

Result<std::unique_ptr<Cursor>> Database::makeIterator() const {
    auto opened = openReadCursor(*env, dbi);
    if (!opened) return opened.error();
    return std::make_unique<Cursor>(std::move(opened->first), opened->second, *env);
}

Result<std::optional<KeyValueBatch>> Database::nextKeyValueBatch(std::string& lastKey, std::string_view prefix,
                                                                 std::size_t batchSize) const {
    auto opened = openReadCursor(*env, dbi);
    if (!opened) return opened.error();
    Transaction transaction = std::move(opened->first);
    MDB_cursor* cursor = opened->second;
    KeyValueBatch batch;
    MDB_val key = valueOf(lastKey.empty() ? prefix : std::string_view(lastKey));
    MDB_val value{};
    int rc = mdb_cursor_get(cursor, &key, &value, MDB_SET_RANGE);
    bool outOfOrder = false;
    while (rc == 0 && batch.size() < batchSize && env->holds(key) && env->holds(value)) {
        std::string_view found = viewOf(key);
        if (!found.starts_with(prefix) && found > prefix) break;
        // Keys of a damaged page can come out of order; walking on from an
        // earlier key would return the same keys for ever.
        if (found < lastKey) {
            outOfOrder = true;
            break;
        }
        if (found != lastKey) {
            lastKey.assign(found);
            if (found.starts_with(prefix) && isValidUTF8(found))
                batch.emplace_back(lastKey, std::string(viewOf(value)));
        }
        rc = mdb_cursor_get(cursor, &key, &value, MDB_NEXT);
    }
    mdb_cursor_close(cursor);
    (void)transaction.commit();
    if (outOfOrder) return makeError(ErrorCode::corrupt, "the cache file is damaged: its keys are out of order");
    if (batch.empty()) return std::optional<KeyValueBatch>();
    return std::optional<KeyValueBatch>(std::move(batch));
}

}  // namespace quester
