#include "platform/ProcessSandbox.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

#include "testing/TempDir.h"

namespace quester {
namespace {

// Runs `confined` in a forked child after the sandbox is on; its exit status
// comes back, 77 when the kernel has no sandbox to offer.
int inSandboxedChild(const std::vector<std::string>& readable, const std::function<int()>& confined) {
    pid_t child = ::fork();
    if (child == 0) {
        auto status = ProcessSandbox::restrictToReading(readable);
        if (!status) ::_exit(status.error().code == ErrorCode::unsupported ? 77 : 70);
        ::_exit(confined());
    }
    int raw = 0;
    ::waitpid(child, &raw, 0);
    return WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
}

TEST(ProcessSandboxTest, ConfinedProcessReadsOnlyWhatItWasGivenOrAllowed) {
    testing::TempDir dir;
    std::string secret = dir.write("secret.txt", "private").string();
    std::string allowed = dir.write("data/allowed.txt", "shared").string();
    int handed = ::open(secret.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_GE(handed, 0);
    int status = inSandboxedChild({dir.str() + "/data"}, [&] {
        char byte;
        if (::pread(handed, &byte, 1, 0) != 1) return 1;  // already open: still readable
        if (::open(secret.c_str(), O_RDONLY) >= 0) return 2;
        if (::open(allowed.c_str(), O_RDONLY) < 0) return 3;
        if (::open((dir.str() + "/data/new.txt").c_str(), O_WRONLY | O_CREAT, 0600) >= 0) return 4;
        return 0;
    });
    ::close(handed);
    if (status == 77) GTEST_SKIP() << "this kernel has no Landlock";
    EXPECT_EQ(status, 0);
}

}  // namespace
}  // namespace quester
