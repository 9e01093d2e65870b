#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <thread>

#include "platform/MountTable.h"
#include "support/Result.h"

namespace quester {

// Watches the kernel's mount table with libmount's monitor on a thread of its
// own and reports each change as the mounts and unmounts since the previous
// reading. The handler runs on the monitor's thread; it must not destroy the
// monitor.
class MountMonitor {
public:
    using Handler = std::function<void(const MountChanges&)>;

    // Starts watching; changes are told against `baseline`, the table read now
    // when none is given. Fails when the table or the monitor can't be opened.
    static Result<std::unique_ptr<MountMonitor>> start(Handler handler,
                                                       std::optional<MountTable> baseline = std::nullopt);

    // Stops the thread and waits for it; no handler call begins afterwards.
    ~MountMonitor();
    MountMonitor(const MountMonitor&) = delete;
    MountMonitor& operator=(const MountMonitor&) = delete;

private:
    struct Native;
    MountMonitor(std::unique_ptr<Native> native, MountTable initial, Handler handler);
    void run();
    void reportChanges();

    std::unique_ptr<Native> native;
    MountTable lastTable;
    Handler handler;
    std::thread thread;
};

}  // namespace quester
