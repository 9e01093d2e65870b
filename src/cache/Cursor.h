#pragma once

#include <optional>
#include <string>
#include <utility>

#include <lmdb.h>

#include "cache/Transaction.h"

namespace quester {

// Every (key, value) of a database in key order, read in a read-only
// transaction that the cursor owns until it is dropped. One thread.
class Cursor {
public:
    Cursor(Transaction transaction, MDB_cursor* cursor) : transaction(std::move(transaction)), handle(cursor) {}
    ~Cursor();
    Cursor(const Cursor&) = delete;
    Cursor& operator=(const Cursor&) = delete;

    // The next pair, copied out of the map; none at the end or on a failure.
    std::optional<std::pair<std::string, std::string>> next();

private:
    Transaction transaction;
    MDB_cursor* handle;
    bool first = true;
};

}  // namespace quester
