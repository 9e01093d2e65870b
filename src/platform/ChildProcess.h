#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "support/Result.h"

namespace quester {

// A helper program run by this process. It dies with this process (the
// kernel sends it SIGKILL when its parent goes), gets one descriptor of ours
// as its descriptor 3, and may be held to an address-space limit. Killed and
// reaped when destroyed. One thread at a time.
class ChildProcess {
public:
    struct Options {
        std::string executable;
        std::vector<std::string> arguments;
        // Passed to the child as descriptor 3; -1 for none.
        int sharedDescriptor = -1;
        // Bytes of address space the child may map (RLIMIT_AS); 0 for no limit.
        std::uint64_t addressSpaceLimit = 0;
        // Where the child's standard error goes: kept when false, else /dev/null.
        bool silenceStandardError = true;
        // "NAME=value" entries set for the child on top of this process's environment.
        std::vector<std::string> environment;
    };

    // Starts the child; ioError when it can't be forked, notFound when the
    // executable can't be run (known only once the child reports back).
    static Result<ChildProcess> spawn(const Options& options);
    // The program named `name` in the folder of this process's executable.
    static std::string besideOwnExecutable(const std::string& name);

    ChildProcess(ChildProcess&& other) noexcept;
    ChildProcess& operator=(ChildProcess&& other) noexcept;
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess();

    int pid() const { return processId; }
    // Sends SIGKILL (nothing when the child already ended).
    void kill();
    // Waits for the child to end and describes how: "exited with status 0",
    // "killed by signal 9 (Killed)".
    std::string wait();

private:
    explicit ChildProcess(int pid) : processId(pid) {}

    int processId = -1;
};

}  // namespace quester
