// Any bytes as a mount table file, read through the same path as the kernel's
// table, then through every question asked of the entries and the table.

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "platform/MountTable.h"
#include "platform/PlatformProfile.h"

namespace {

// The input as a file without touching the disk: one memory file, rewritten
// for each input and read through its /proc/self/fd path.
std::string tableFileWith(const std::uint8_t* data, std::size_t size) {
    static const int fd = memfd_create("mountinfo", MFD_CLOEXEC);
    if (fd < 0 || ftruncate(fd, 0) != 0) std::abort();
    if (size > 0 && pwrite(fd, data, size, 0) != static_cast<ssize_t>(size)) std::abort();
    return "/proc/self/fd/" + std::to_string(fd);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const quester::PlatformProfile profile = quester::PlatformProfile::linux();
    const auto table = quester::MountTable::parse(tableFileWith(data, size));
    if (!table) return 0;
    for (const auto& entry : table->entries()) {
        (void)entry.isNetwork();
        (void)entry.isPseudo();
        (void)entry.isReadOnly();
        (void)entry.isVolume(profile);
        if (table->entryAt(entry.mountPoint) == nullptr) std::abort();
        if (table->entryWithID(entry.id) == nullptr) std::abort();
        (void)table->entryContaining(entry.mountPoint + "/a/b");
    }
    (void)table->volumes(profile);
    if (!table->changesSince(*table).empty()) std::abort();
    return 0;
}
