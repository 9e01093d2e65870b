#include "cache/KeyPrefixCursor.h"

#include "support/LogFunc.h"
#include "support/Utf8Text.h"

namespace quester {

KeyPrefixCursor::KeyPrefixCursor(Transaction transaction, MDB_cursor* cursor, std::string_view prefix,
                                 Environment& environment)
    : transaction(std::move(transaction)), handle(cursor), environment(environment), prefix(prefix) {}

KeyPrefixCursor::~KeyPrefixCursor() {
    mdb_cursor_close(handle);
    (void)transaction.commit();
}

// Keys are sorted, so the walk starts where the prefix would stand and ends
// at the first key past it.
std::optional<std::string> KeyPrefixCursor::next() {
    MDB_val key{prefix.size(), prefix.data()};
    MDB_val value{};
    int rc = mdb_cursor_get(handle, &key, &value, first ? MDB_SET_RANGE : MDB_NEXT);
    first = false;
    if (rc != 0 || !environment.holds(key)) return std::nullopt;
    std::string_view found(static_cast<const char*>(key.mv_data), key.mv_size);
    if (!found.starts_with(prefix)) return std::nullopt;
    if (!isValidUTF8(found)) {
        LOG("KeyPrefixCursor bad key. " + repairedUTF8(found));
        return std::nullopt;
    }
    return std::string(found);
}

}  // namespace quester
