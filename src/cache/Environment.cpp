#include "cache/Environment.h"

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

Status Environment::sync() {
    return lmdbStatus(mdb_env_sync(env, 1), "cannot write the store to the disk");
}

Status Environment::copyCompact(const std::string& destination) {
    return lmdbStatus(mdb_env_copy2(env, destination.c_str(), MDB_CP_COMPACT),
                      "cannot copy the store to " + destination);
}

}  // namespace quester
