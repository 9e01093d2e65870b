#include "cache/Cursor.h"

namespace quester {

Cursor::~Cursor() {
    mdb_cursor_close(handle);
    (void)transaction.commit();
}

std::optional<std::pair<std::string, std::string>> Cursor::next() {
    MDB_val key{};
    MDB_val value{};
    int rc = mdb_cursor_get(handle, &key, &value, first ? MDB_FIRST : MDB_NEXT);
    first = false;
    if (rc != 0 || !environment.holds(key) || !environment.holds(value)) return std::nullopt;
    return std::make_pair(std::string(static_cast<const char*>(key.mv_data), key.mv_size),
                          std::string(static_cast<const char*>(value.mv_data), value.mv_size));
}

}  // namespace quester
