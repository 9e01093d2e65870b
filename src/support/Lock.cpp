#include "support/Lock.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace quester {

namespace {

long futex(std::atomic<int>& word, int operation, int value) {
    return syscall(SYS_futex, reinterpret_cast<int*>(&word), operation | FUTEX_PRIVATE_FLAG, value, nullptr, nullptr,
                   0);
}

}  // namespace

// Marks the lock as contended and sleeps until a release finds it free.
void Lock::lockContended(int seen) {
    if (seen != heldWithWaiters) seen = state.exchange(heldWithWaiters, std::memory_order_acquire);
    while (seen != free) {
        futex(state, FUTEX_WAIT, heldWithWaiters);
        seen = state.exchange(heldWithWaiters, std::memory_order_acquire);
    }
}

void Lock::wakeOne() {
    futex(state, FUTEX_WAKE, 1);
}

}  // namespace quester
