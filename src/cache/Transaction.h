#pragma once

#include <lmdb.h>

#include "support/Result.h"

namespace quester {

class Environment;

// One LMDB transaction, owned by the thread that began it and never kept
// beyond the call that began it (cursors excepted, which own theirs). Ended
// by `commit` or `abort`; one still running when destroyed is aborted.
class Transaction {
public:
    enum class Action { abort, commit };
    enum Flags : unsigned { readOnly = MDB_RDONLY };

    static Result<Transaction> begin(Environment& environment, unsigned flags);
    Transaction(Transaction&& other) noexcept : txn(other.txn) { other.txn = nullptr; }
    Transaction& operator=(Transaction&& other) noexcept;
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    ~Transaction() { abort(); }

    MDB_txn* handle() const { return txn; }
    bool isActive() const { return txn != nullptr; }
    Status commit();
    void abort();
    // Commits or aborts.
    Status end(Action action);

private:
    explicit Transaction(MDB_txn* txn) : txn(txn) {}
    MDB_txn* txn;
};

}  // namespace quester
