#include "platform/MountMonitor.h"

#include <libmount.h>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>

namespace quester {

struct MountMonitor::Native {
    libmnt_monitor* monitor = nullptr;
    int monitorFd = -1;
    int stopFd = -1;

    ~Native() {
        if (stopFd >= 0) close(stopFd);
        if (monitor != nullptr) mnt_unref_monitor(monitor);
    }
};

Result<std::unique_ptr<MountMonitor>> MountMonitor::start(Handler handler, std::optional<MountTable> baseline) {
    Result<MountTable> initial = baseline ? Result<MountTable>(std::move(*baseline)) : MountTable::read();
    if (!initial) return initial.error();
    auto native = std::make_unique<Native>();
    native->monitor = mnt_new_monitor();
    if (native->monitor == nullptr || mnt_monitor_enable_kernel(native->monitor, 1) != 0) {
        return makeError(ErrorCode::unsupported, "libmount cannot watch the mount table");
    }
    native->monitorFd = mnt_monitor_get_fd(native->monitor);
    native->stopFd = eventfd(0, EFD_CLOEXEC);
    if (native->monitorFd < 0 || native->stopFd < 0) {
        return makeError(ErrorCode::ioError, std::string("cannot set up the mount monitor: ") + std::strerror(errno));
    }
    return std::unique_ptr<MountMonitor>(new MountMonitor(std::move(native), std::move(*initial), std::move(handler)));
}

MountMonitor::MountMonitor(std::unique_ptr<Native> nativeParts, MountTable initial, Handler changeHandler)
    : native(std::move(nativeParts)), lastTable(std::move(initial)), handler(std::move(changeHandler)) {
    thread = std::thread([this] { run(); });
}

MountMonitor::~MountMonitor() {
    std::uint64_t one = 1;
    [[maybe_unused]] ssize_t written = write(native->stopFd, &one, sizeof one);
    thread.join();
}

void MountMonitor::run() {
    pthread_setname_np(pthread_self(), "MountMonitor");
    pollfd watched[2] = {{native->monitorFd, POLLIN, 0}, {native->stopFd, POLLIN, 0}};
    while (true) {
        if (poll(watched, 2, -1) < 0) {
            if (errno == EINTR) continue;
            return;
        }
        if (watched[1].revents != 0) return;
        if (watched[0].revents == 0) continue;
        const char* filename = nullptr;
        int type = 0;
        bool changed = false;
        while (mnt_monitor_next_change(native->monitor, &filename, &type) == 0) changed = true;
        if (changed) reportChanges();
    }
}

void MountMonitor::reportChanges() {
    auto table = MountTable::read();
    if (!table) return;
    MountChanges changes = table->changesSince(lastTable);
    lastTable = std::move(*table);
    if (!changes.empty()) handler(changes);
}

}  // namespace quester
