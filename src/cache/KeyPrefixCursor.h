#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <lmdb.h>

#include "cache/Environment.h"
#include "cache/Transaction.h"

namespace quester {

// The keys of a database that begin with a prefix, in key order, read in a
// read-only transaction that the cursor owns until it is dropped. One thread.
class KeyPrefixCursor {
public:
    KeyPrefixCursor(Transaction transaction, MDB_cursor* cursor, std::string_view prefix, Environment& environment);
    ~KeyPrefixCursor();
    KeyPrefixCursor(const KeyPrefixCursor&) = delete;
    KeyPrefixCursor& operator=(const KeyPrefixCursor&) = delete;

    // The next key as text; none at the end. A key that is not valid UTF-8 is
    // logged and ends the walk.
    std::optional<std::string> next();

private:
    Transaction transaction;
    MDB_cursor* handle;
    Environment& environment;
    bool first = true;
    std::string prefix;
};

}  // namespace quester
