#include "cache/Environment.h"

#include <sys/stat.h>

#include <cstdio>
#include <cstring>

#include "cache/LMDBError.h"

namespace quester {

Result<std::shared_ptr<Environment>> Environment::open(const std::string& path, unsigned flags,
                                                       std::optional<unsigned> maxDBs,
                                                       std::optional<unsigned> maxReaders,
                                                       std::optional<std::size_t> mapSize) {
    MDB_env* env = nullptr;
    if (Status created = lmdbStatus(mdb_env_create(&env), "cannot create the store for " + path); !created)
        return created.error();
    std::shared_ptr<Environment> environment(new Environment(env, flags));
    int rc = 0;
    if (maxDBs) rc = mdb_env_set_maxdbs(env, *maxDBs);
    if (rc == 0 && maxReaders) rc = mdb_env_set_maxreaders(env, *maxReaders);
    if (rc == 0 && mapSize) rc = mdb_env_set_mapsize(env, *mapSize);
    mdb_mode_t mode = (flags & readOnly) ? 0555 : 0755;
    if (rc == 0) rc = mdb_env_open(env, path.c_str(), flags, mode);
    if (Status opened = lmdbStatus(rc, "cannot open the store " + path); !opened) return opened.error();
    return environment;
}

Environment::~Environment() {
    mdb_env_close(env);
}

Environment::Extent Environment::extent() const {
    MDB_envinfo info{};
    MDB_stat stat{};
    mdb_env_info(env, &info);
    mdb_env_stat(env, &stat);
    return {stat.ms_psize, info.me_last_pgno, info.me_mapsize};
}

std::uint64_t Environment::currentFileSize() const {
    int fd = -1;
    struct stat status {};
    if (mdb_env_get_fd(env, &fd) != 0 || fstat(fd, &status) != 0) return 0;
    return static_cast<std::uint64_t>(status.st_size);
}

// The kernel's list of the process's mappings gives the one that holds the
// pointer: the start of the map and its length.
void Environment::locateMapAround(const void* insideMap) {
    std::uintptr_t address = reinterpret_cast<std::uintptr_t>(insideMap);
    FILE* maps = std::fopen("/proc/self/maps", "r");
    if (!maps) return;
    char line[512];
    while (std::fgets(line, sizeof(line), maps)) {
        unsigned long start = 0, end = 0;
        if (std::sscanf(line, "%lx-%lx", &start, &end) != 2 || address < start || address >= end) continue;
        mapBase = reinterpret_cast<const char*>(start);
        mapLength = end - start;
        break;
    }
    std::fclose(maps);
    knownFileSize = currentFileSize();
}

void Environment::locateMap() {
    MDB_txn* txn = nullptr;
    if (mdb_txn_begin(env, nullptr, MDB_RDONLY, &txn) != 0) return;
    MDB_dbi main = 0;
    MDB_cursor* cursor = nullptr;
    MDB_val key{};
    MDB_val value{};
    if (mdb_dbi_open(txn, nullptr, 0, &main) == 0 && mdb_cursor_open(txn, main, &cursor) == 0) {
        if (mdb_cursor_get(cursor, &key, &value, MDB_FIRST) == 0) locateMapAround(key.mv_data);
        mdb_cursor_close(cursor);
    }
    mdb_txn_abort(txn);
}

bool Environment::holds(const MDB_val& value) {
    const char* data = static_cast<const char*>(value.mv_data);
    if (!mapBase || data < mapBase || data >= mapBase + mapLength) return true;
    std::uint64_t end = static_cast<std::uint64_t>(data - mapBase) + value.mv_size;
    if (end <= knownFileSize) return true;
    knownFileSize = currentFileSize();
    return end <= knownFileSize;
}

Status Environment::sync() {
    return lmdbStatus(mdb_env_sync(env, 1), "cannot write the store to the disk");
}

Status Environment::copyCompact(const std::string& destination) {
    return lmdbStatus(mdb_env_copy2(env, destination.c_str(), MDB_CP_COMPACT),
                      "cannot copy the store to " + destination);
}

}  // namespace quester
