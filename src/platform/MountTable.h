#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/MountEntry.h"
#include "support/Result.h"

namespace quester {

struct PlatformProfile;

// What changed between two readings of the mount table.
struct MountChanges {
    std::vector<MountEntry> mounted;
    std::vector<MountEntry> unmounted;

    bool empty() const { return mounted.empty() && unmounted.empty(); }
};

// A snapshot of the mount table, in the kernel's order (a later entry may
// cover an earlier one at the same mount point). A plain value; thread-safe
// to read.
class MountTable {
public:
    static constexpr const char* kernelTablePath = "/proc/self/mountinfo";

    MountTable() = default;
    explicit MountTable(std::vector<MountEntry> entries) : all(std::move(entries)) {}

    // Parses a file in the kernel's mountinfo format through libmount.
    // Fails with ioError when the file can't be read or parsed.
    static Result<MountTable> parse(const std::string& mountinfoPath);
    // The calling process's table right now.
    static Result<MountTable> read() { return parse(kernelTablePath); }
    // The calling process's table, read again only when the kernel says it
    // changed since the last call (a poll on the open table, no parsing), so
    // path-to-mount lookups stay cheap. Thread-safe; none when it can't be read.
    static std::shared_ptr<const MountTable> current();

    const std::vector<MountEntry>& entries() const { return all; }

    // The entry the kernel gave this id; nullptr when there is none.
    const MountEntry* entryWithID(int id) const;
    // The mount that holds `path` by its text: the longest mount point that
    // `path` equals or lies below, the latest one when several are stacked.
    // nullptr for a relative path.
    const MountEntry* entryContaining(const std::string& path) const;
    // The entry mounted last at exactly `mountPoint`; nullptr when none.
    const MountEntry* entryAt(const std::string& mountPoint) const;

    // The entries that are volumes under `profile`, in table order, one per
    // mount point (the one on top).
    std::vector<MountEntry> volumes(const PlatformProfile& profile) const;

    // Mounts present here and not in `earlier`, and the reverse, told apart by
    // the kernel's mount id.
    MountChanges changesSince(const MountTable& earlier) const;

private:
    std::vector<MountEntry> all;
};

}  // namespace quester
