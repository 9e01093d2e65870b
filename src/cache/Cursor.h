#pragma once

#include <optional>
#include <string>
#include <utility>

#include <lmdb.h>

#include "cache/Environment.h"
#include "cache/Transaction.h"

namespace quester {

// Every (key, value) of a database in key order, read in a read-only
// transaction that the cursor owns until it is dropped. One thread.
class Cursor {
public:
    Cursor(Transaction transaction, MDB_cursor* cursor, Environment& environment)
        : transaction(std::move(transaction)), handle(cursor), environment(environment) {}
    ~Cursor();
    Cursor(const Cursor&) = delete;
    Cursor& operator=(const Cursor&) = delete;

    // The next pair, copied out of the map; none at the end, on a failure, or
    // at bytes the file doesn't hold.
    std::optional<std::pair<std::string, std::string>> next();

private:
    Transaction transaction;
    MDB_cursor* handle;
    Environment& environment;
    bool first = true;
};

}  // namespace quester
