#include "platform/ChildProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <functional>
#include <mutex>
#include <string_view>
#include <thread>
#include <utility>

namespace quester {

namespace {

// PR_SET_PDEATHSIG fires when the thread that forked the child ends, not the
// process. Children are therefore forked from one thread that lives as long
// as the process, so a helper never dies because a worker thread finished.
class ForkingThread {
public:
    static ForkingThread& shared() {
        static ForkingThread* thread = new ForkingThread;  // never destroyed: it must outlive every caller
        return *thread;
    }

    int run(const std::function<int()>& work) {
        std::unique_lock guard(lock);
        idle.wait(guard, [&] { return !pending; });
        pending = &work;
        wake.notify_all();
        done.wait(guard, [&] { return pending == nullptr; });
        return answer;
    }

private:
    ForkingThread() {
        std::thread([this] { serve(); }).detach();
    }

    void serve() {
        std::unique_lock guard(lock);
        for (;;) {
            wake.wait(guard, [&] { return pending != nullptr; });
            answer = (*pending)();
            pending = nullptr;
            done.notify_all();
            idle.notify_all();
        }
    }

    std::mutex lock;
    std::condition_variable wake, done, idle;
    const std::function<int()>* pending = nullptr;
    int answer = -1;
};

// Runs in the forked child, before exec: only async-signal-safe calls.
[[noreturn]] void becomeChild(const ChildProcess::Options& options, char* const* argv, char* const* envp, pid_t parent,
                              int devNull) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) ::_exit(127);
    if (options.sharedDescriptor >= 0) {
        if (options.sharedDescriptor == 3) {
            ::fcntl(3, F_SETFD, 0);
        } else if (::dup2(options.sharedDescriptor, 3) < 0) {
            ::_exit(127);
        }
    }
    if (options.silenceStandardError && devNull >= 0) ::dup2(devNull, 2);
    if (options.addressSpaceLimit > 0) {
        rlimit limit{options.addressSpaceLimit, options.addressSpaceLimit};
        ::setrlimit(RLIMIT_AS, &limit);
    }
    ::execve(options.executable.c_str(), argv, envp);
    ::_exit(127);
}

// This process's environment with `extra` entries set over it.
std::vector<std::string> environmentWith(const std::vector<std::string>& extra) {
    std::vector<std::string> entries;
    for (char** entry = environ; entry && *entry; ++entry) {
        std::string_view text(*entry);
        auto overridden = [&](const std::string& added) {
            auto equals = added.find('=');
            return text.substr(0, text.find('=') + 1) == std::string_view(added).substr(0, equals + 1);
        };
        if (std::none_of(extra.begin(), extra.end(), overridden)) entries.emplace_back(text);
    }
    entries.insert(entries.end(), extra.begin(), extra.end());
    return entries;
}

std::vector<char*> pointersTo(std::vector<std::string>& words) {
    std::vector<char*> pointers;
    for (auto& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

Result<ChildProcess> ChildProcess::spawn(const Options& options) {
    if (::access(options.executable.c_str(), X_OK) != 0) {
        return Error{ErrorCode::notFound, "can't run " + options.executable + ": " + std::strerror(errno)};
    }
    std::vector<std::string> words{options.executable};
    words.insert(words.end(), options.arguments.begin(), options.arguments.end());
    std::vector<char*> argv = pointersTo(words);
    std::vector<std::string> environment = environmentWith(options.environment);
    std::vector<char*> envp = pointersTo(environment);
    int devNull = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    pid_t parent = ::getpid();
    int forkError = 0;
    int pid = ForkingThread::shared().run([&] {
        pid_t child = ::fork();
        if (child == 0) becomeChild(options, argv.data(), envp.data(), parent, devNull);
        if (child < 0) forkError = errno;
        return static_cast<int>(child);
    });
    if (devNull >= 0) ::close(devNull);
    if (pid < 0) return Error{ErrorCode::ioError, std::string("can't start a process: ") + std::strerror(forkError)};
    return ChildProcess(pid);
}

std::string ChildProcess::besideOwnExecutable(const std::string& name) {
    std::string own(4096, '\0');
    ssize_t length = ::readlink("/proc/self/exe", own.data(), own.size());
    if (length <= 0) return name;
    own.resize(static_cast<std::size_t>(length));
    return own.substr(0, own.rfind('/') + 1) + name;
}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept : processId(std::exchange(other.processId, -1)) {}

ChildProcess& ChildProcess::operator=(ChildProcess&& other) noexcept {
    if (this != &other) {
        if (processId > 0) {
            kill();
            wait();
        }
        processId = std::exchange(other.processId, -1);
    }
    return *this;
}

ChildProcess::~ChildProcess() {
    if (processId > 0) {
        kill();
        wait();
    }
}

void ChildProcess::kill() {
    if (processId > 0) ::kill(processId, SIGKILL);
}

std::string ChildProcess::wait() {
    if (processId <= 0) return "not running";
    int status = 0;
    pid_t ended;
    do {
        ended = ::waitpid(processId, &status, 0);
    } while (ended < 0 && errno == EINTR);
    processId = -1;
    if (ended < 0) return std::string("lost: ") + std::strerror(errno);
    if (WIFSIGNALED(status)) {
        int signal = WTERMSIG(status);
        return "killed by signal " + std::to_string(signal) + " (" + ::strsignal(signal) + ")";
    }
    return "exited with status " + std::to_string(WEXITSTATUS(status));
}

}  // namespace quester
