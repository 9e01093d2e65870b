#include "platform/MountMonitor.h"

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>

#include "testing/TempDir.h"

namespace quester {
namespace {

using namespace std::chrono_literals;

TEST(MountMonitorTest, StartsAndStopsWithoutAChange) {
    auto monitor = MountMonitor::start([](const MountChanges&) {});
    ASSERT_TRUE(monitor.ok()) << monitor.error().message;
    monitor->reset();
}

// Mounts a real tmpfs below a temp folder, which needs root; elsewhere it is skipped.
TEST(MountMonitorTest, ReportsARealMountAndUnmount) {
    if (geteuid() != 0) GTEST_SKIP() << "mounting needs root";
    testing::TempDir dir;
    auto target = dir.mkdir("mountpoint").string();
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<std::string> mounted, unmounted;
    auto monitor = MountMonitor::start([&](const MountChanges& changes) {
        std::lock_guard guard(mutex);
        for (const auto& entry : changes.mounted) mounted.push_back(entry.mountPoint);
        for (const auto& entry : changes.unmounted) unmounted.push_back(entry.mountPoint);
        changed.notify_all();
    });
    ASSERT_TRUE(monitor.ok()) << monitor.error().message;
    if (mount("quester-test", target.c_str(), "tmpfs", 0, "size=1m") != 0) GTEST_SKIP() << "mount not permitted here";
    auto contains = [&](const std::vector<std::string>& list) {
        return std::find(list.begin(), list.end(), target) != list.end();
    };
    {
        std::unique_lock lock(mutex);
        EXPECT_TRUE(changed.wait_for(lock, 30s, [&] { return contains(mounted); }));
    }
    auto cached = MountTable::current();
    ASSERT_NE(cached, nullptr);
    EXPECT_NE(cached->entryAt(target), nullptr) << "the cached table follows a mount";
    ASSERT_EQ(umount(target.c_str()), 0);
    EXPECT_EQ(MountTable::current()->entryAt(target), nullptr) << "and an unmount";
    std::unique_lock lock(mutex);
    EXPECT_TRUE(changed.wait_for(lock, 30s, [&] { return contains(unmounted); }));
}

}  // namespace
}  // namespace quester
