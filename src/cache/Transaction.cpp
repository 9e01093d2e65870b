#include "cache/Transaction.h"

#include "cache/Environment.h"
#include "cache/LMDBError.h"

namespace quester {

Result<Transaction> Transaction::begin(Environment& environment, unsigned flags) {
    MDB_txn* txn = nullptr;
    if (Status begun =
            lmdbStatus(mdb_txn_begin(environment.handle(), nullptr, flags, &txn), "cannot begin a transaction");
        !begun)
        return begun.error();
    return Transaction(txn);
}

Transaction& Transaction::operator=(Transaction&& other) noexcept {
    if (this != &other) {
        abort();
        txn = other.txn;
        other.txn = nullptr;
    }
    return *this;
}

Status Transaction::commit() {
    MDB_txn* committing = txn;
    txn = nullptr;
    if (!committing) return makeError(ErrorCode::internal, "commit of a transaction that has ended");
    return lmdbStatus(mdb_txn_commit(committing), "cannot commit a transaction");
}

void Transaction::abort() {
    if (txn) mdb_txn_abort(txn);
    txn = nullptr;
}

Status Transaction::end(Action action) {
    if (action == Action::commit) return commit();
    abort();
    return Status::success();
}

}  // namespace quester
