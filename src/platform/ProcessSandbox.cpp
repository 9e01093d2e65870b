#include "platform/ProcessSandbox.h"

#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace quester {

namespace {

// Newer than the system headers: the right to truncate a file (Landlock ABI 3).
constexpr std::uint64_t accessTruncate = 1ULL << 14;

long abiVersion() {
    return ::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
}

// Every file-system right the running kernel knows, so that all are denied
// unless a rule grants them.
std::uint64_t handledRights(long abi) {
    std::uint64_t rights = LANDLOCK_ACCESS_FS_EXECUTE | LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_READ_FILE |
                           LANDLOCK_ACCESS_FS_READ_DIR | LANDLOCK_ACCESS_FS_REMOVE_DIR |
                           LANDLOCK_ACCESS_FS_REMOVE_FILE | LANDLOCK_ACCESS_FS_MAKE_CHAR | LANDLOCK_ACCESS_FS_MAKE_DIR |
                           LANDLOCK_ACCESS_FS_MAKE_REG | LANDLOCK_ACCESS_FS_MAKE_SOCK | LANDLOCK_ACCESS_FS_MAKE_FIFO |
                           LANDLOCK_ACCESS_FS_MAKE_BLOCK | LANDLOCK_ACCESS_FS_MAKE_SYM;
    if (abi >= 2) rights |= LANDLOCK_ACCESS_FS_REFER;
    if (abi >= 3) rights |= accessTruncate;
    return rights;
}

Error sandboxError(const char* what) {
    return Error{ErrorCode::ioError, std::string(what) + ": " + std::strerror(errno)};
}

}  // namespace

Status ProcessSandbox::restrictToReading(const std::vector<std::string>& readablePaths) {
    long abi = abiVersion();
    if (abi < 1) return Error{ErrorCode::unsupported, "the kernel has no Landlock"};
    landlock_ruleset_attr attributes{};
    attributes.handled_access_fs = handledRights(abi);
    int ruleset = static_cast<int>(::syscall(SYS_landlock_create_ruleset, &attributes, sizeof(attributes), 0));
    if (ruleset < 0) return sandboxError("landlock_create_ruleset");
    for (const auto& path : readablePaths) {
        int folder = ::open(path.c_str(), O_PATH | O_CLOEXEC);
        if (folder < 0) continue;  // a data folder this system lacks
        landlock_path_beneath_attr rule{};
        rule.allowed_access = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR;
        rule.parent_fd = folder;
        long added = ::syscall(SYS_landlock_add_rule, ruleset, LANDLOCK_RULE_PATH_BENEATH, &rule, 0);
        ::close(folder);
        if (added != 0 && errno != EINVAL) {
            ::close(ruleset);
            return sandboxError("landlock_add_rule");
        }
    }
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 || ::syscall(SYS_landlock_restrict_self, ruleset, 0) != 0) {
        ::close(ruleset);
        return sandboxError("landlock_restrict_self");
    }
    ::close(ruleset);
    return {};
}

}  // namespace quester
