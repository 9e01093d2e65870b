#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include <lmdb.h>

#include "support/Result.h"

namespace quester {

// One LMDB environment: a map over one file (or folder), closed when the
// last reference goes. Thread-safe as LMDB is: transactions belong to the
// thread that began them.
class Environment {
public:
    // The LMDB open flags, under their own names.
    enum Flags : unsigned {
        fixedMap = MDB_FIXEDMAP,
        noSubDir = MDB_NOSUBDIR,
        noSync = MDB_NOSYNC,
        readOnly = MDB_RDONLY,
        noMetaSync = MDB_NOMETASYNC,
        writeMap = MDB_WRITEMAP,
        mapAsync = MDB_MAPASYNC,
        noTLS = MDB_NOTLS,
        noLock = MDB_NOLOCK,
        noReadahead = MDB_NORDAHEAD,
        noMemoryInit = MDB_NOMEMINIT,
    };

    // Creates and opens the environment at `path`, applying the limits that
    // are given. The file is made with mode 0755 (0555 when read-only). Any
    // failure of the library is the error, and nothing stays open.
    static Result<std::shared_ptr<Environment>> open(const std::string& path, unsigned flags,
                                                     std::optional<unsigned> maxDBs = std::nullopt,
                                                     std::optional<unsigned> maxReaders = std::nullopt,
                                                     std::optional<std::size_t> mapSize = std::nullopt);
    ~Environment();
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

    MDB_env* handle() const { return env; }
    unsigned flags() const { return openFlags; }
    bool isReadOnly() const { return (openFlags & readOnly) != 0; }

    // The page size and the last page the header names, read from the map.
    struct Extent {
        std::uint64_t pageSize = 0;
        std::uint64_t lastPage = 0;
        std::uint64_t mapSize = 0;
    };
    Extent extent() const;
    // Whether bytes that LMDB handed out lie inside the file. LMDB trusts the
    // sizes a file states, so a damaged one can name bytes past its end,
    // which are mapped but unreadable: touching them kills the process.
    // Bytes outside the map (pages written in a running transaction) pass.
    bool holds(const MDB_val& value);
    // Finds where the file is mapped, through the first key of the unnamed
    // database (which names the others); without one no bytes are checked.
    void locateMap();

    // Writes what is committed to the disk, even under `noSync`.
    Status sync();
    // A compacted copy of the whole environment in a new file at `destination`
    // (which must not exist).
    Status copyCompact(const std::string& destination);

private:
    Environment(MDB_env* env, unsigned flags) : env(env), openFlags(flags) {}

    std::uint64_t currentFileSize() const;
    void locateMapAround(const void* insideMap);

    MDB_env* env;
    unsigned openFlags;
    const char* mapBase = nullptr;
    std::uint64_t mapLength = 0;
    std::uint64_t knownFileSize = 0;
};

}  // namespace quester
