#include "platform/MountTable.h"

#include <fcntl.h>
#include <libmount.h>
#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>

#include "support/Locked.h"
#include "support/PathText.h"

namespace quester {
namespace {

struct TableDeleter {
    void operator()(libmnt_table* table) const { mnt_unref_table(table); }
};
struct IterDeleter {
    void operator()(libmnt_iter* iter) const { mnt_free_iter(iter); }
};

std::string text(const char* value) {
    return value != nullptr ? value : "";
}

MountEntry entryFrom(libmnt_fs* fs) {
    MountEntry entry;
    entry.id = mnt_fs_get_id(fs);
    entry.parentId = mnt_fs_get_parent_id(fs);
    entry.mountPoint = text(mnt_fs_get_target(fs));
    entry.source = text(mnt_fs_get_source(fs));
    entry.fsType = text(mnt_fs_get_fstype(fs));
    char* options = mnt_fs_strdup_options(fs);
    entry.options = text(options);
    std::free(options);
    return entry;
}

bool containsID(const std::vector<MountEntry>& entries, int id) {
    return std::any_of(entries.begin(), entries.end(), [id](const MountEntry& entry) { return entry.id == id; });
}

// The open kernel table and the snapshot last read from it. The kernel marks
// the open file with POLLPRI once after each change to the mount namespace.
struct CachedTable {
    int fd = -1;
    std::shared_ptr<const MountTable> snapshot;
};

bool kernelTableChanged(int fd) {
    pollfd watched{fd, POLLPRI, 0};
    return poll(&watched, 1, 0) != 0;
}

}  // namespace

std::shared_ptr<const MountTable> MountTable::current() {
    static Locked<CachedTable> cache;
    return cache.access([](CachedTable& cached) {
        if (cached.fd < 0) cached.fd = open(kernelTablePath, O_RDONLY | O_CLOEXEC);
        bool stale = !cached.snapshot || cached.fd < 0 || kernelTableChanged(cached.fd);
        if (!stale) return cached.snapshot;
        auto table = read();
        cached.snapshot = table ? std::make_shared<const MountTable>(std::move(*table)) : nullptr;
        return cached.snapshot;
    });
}

Result<MountTable> MountTable::parse(const std::string& mountinfoPath) {
    std::unique_ptr<libmnt_table, TableDeleter> table(mnt_new_table());
    if (!table) return makeError(ErrorCode::internal, "libmount could not make a table");
    if (int rc = mnt_table_parse_file(table.get(), mountinfoPath.c_str()); rc != 0) {
        return makeError(ErrorCode::ioError,
                         "cannot read the mount table " + mountinfoPath + ": " + std::strerror(-rc));
    }
    std::unique_ptr<libmnt_iter, IterDeleter> iter(mnt_new_iter(MNT_ITER_FORWARD));
    std::vector<MountEntry> entries;
    libmnt_fs* fs = nullptr;
    while (mnt_table_next_fs(table.get(), iter.get(), &fs) == 0) entries.push_back(entryFrom(fs));
    return MountTable(std::move(entries));
}

const MountEntry* MountTable::entryWithID(int id) const {
    auto found = std::find_if(all.begin(), all.end(), [id](const MountEntry& entry) { return entry.id == id; });
    return found != all.end() ? &*found : nullptr;
}

const MountEntry* MountTable::entryContaining(const std::string& path) const {
    const MountEntry* best = nullptr;
    for (const auto& entry : all) {
        if (!isSameOrBelow(path, entry.mountPoint)) continue;
        if (best == nullptr || entry.mountPoint.size() >= best->mountPoint.size()) best = &entry;
    }
    return best;
}

const MountEntry* MountTable::entryAt(const std::string& mountPoint) const {
    auto found =
        std::find_if(all.rbegin(), all.rend(), [&](const MountEntry& entry) { return entry.mountPoint == mountPoint; });
    return found != all.rend() ? &*found : nullptr;
}

std::vector<MountEntry> MountTable::volumes(const PlatformProfile& profile) const {
    std::vector<MountEntry> result;
    for (const auto& entry : all) {
        if (entryAt(entry.mountPoint) == &entry && entry.isVolume(profile)) result.push_back(entry);
    }
    return result;
}

MountChanges MountTable::changesSince(const MountTable& earlier) const {
    MountChanges changes;
    for (const auto& entry : all) {
        if (!containsID(earlier.all, entry.id)) changes.mounted.push_back(entry);
    }
    for (const auto& entry : earlier.all) {
        if (!containsID(all, entry.id)) changes.unmounted.push_back(entry);
    }
    return changes;
}

}  // namespace quester
