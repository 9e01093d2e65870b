#include "support/GCDAdditions.h"

#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>

#include "support/Locked.h"
#include "support/MainLoop.h"
#include "support/SourceLocation.h"

namespace quester {
namespace {

using KeysAndOperations = std::map<std::string, std::shared_ptr<Operation>>;

Locked<KeysAndOperations>& keysAndOperations() {
    static Locked<KeysAndOperations> map;
    return map;
}

// Runs the block, then frees the key's slot unless a later call took it.
class KeyedBlockOperation final : public Operation {
public:
    KeyedBlockOperation(std::function<void()> block, std::optional<std::string> key)
        : block(std::move(block)), key(std::move(key)) {}

protected:
    void main() override {
        block();
        if (!key) return;
        keysAndOperations().access([&](KeysAndOperations& map) {
            auto found = map.find(*key);
            if (found != map.end() && found->second.get() == this) map.erase(found);
        });
    }

private:
    std::function<void()> block;
    std::optional<std::string> key;
};

// One private thread that waits out delays, then runs a short step.
class DelayedSteps {
public:
    using SteadyClock = std::chrono::steady_clock;

    static DelayedSteps& shared() {
        static DelayedSteps steps;
        return steps;
    }

    // The main loop is made first, so that it is destroyed after this thread
    // has stopped posting to it.
    DelayedSteps() { MainLoop::shared(); }

    ~DelayedSteps() {
        {
            std::lock_guard guard(mutex);
            stopping = true;
        }
        changed.notify_all();
        if (thread.joinable()) thread.join();
    }

    void after(SteadyClock::duration delay, std::function<void()> step) {
        {
            std::lock_guard guard(mutex);
            due.emplace(SteadyClock::now() + delay, std::move(step));
            if (!thread.joinable()) thread = std::thread([this] { run(); });
        }
        changed.notify_all();
    }

private:
    void run() {
        std::unique_lock guard(mutex);
        while (!stopping) {
            if (due.empty()) {
                changed.wait(guard);
                continue;
            }
            auto first = due.begin();
            if (first->first > SteadyClock::now()) {
                changed.wait_until(guard, first->first);
                continue;
            }
            auto step = std::move(first->second);
            due.erase(first);
            guard.unlock();
            step();
            guard.lock();
        }
    }

    std::mutex mutex;
    std::condition_variable changed;
    std::multimap<SteadyClock::time_point, std::function<void()>> due;
    std::thread thread;
    bool stopping = false;
};

}  // namespace

std::shared_ptr<Operation> GCDAdditions::perform(std::chrono::duration<double> afterDelay,
                                                 std::optional<std::string> key, Block block) {
    auto operation = std::make_shared<KeyedBlockOperation>(std::move(block), std::move(key));
    auto delay = std::chrono::duration_cast<std::chrono::steady_clock::duration>(afterDelay);
    DelayedSteps::shared().after(delay, [operation] {
        // A cancelled operation finishes here without running, so nobody
        // waiting for it waits for ever.
        if (operation->isCancelled()) {
            operation->start();
            return;
        }
        MainLoop::shared().post([operation] { operation->start(); });
    });
    return operation;
}

std::shared_ptr<Operation> GCDAdditions::cancelPreviousThenPerform(const std::string& key,
                                                                   std::chrono::duration<double> afterDelay,
                                                                   Block block) {
    return keysAndOperations().access([&](KeysAndOperations& map) {
        auto previous = map.find(key);
        if (previous != map.end() && !previous->second->isFinished() && !previous->second->isExecuting()) {
            previous->second->cancel();
        }
        auto operation = perform(afterDelay, key, std::move(block));
        operation->setName(key);
        map[key] = operation;
        return operation;
    });
}

std::shared_ptr<Operation> GCDAdditions::cancelPreviousThenPerform(std::chrono::duration<double> afterDelay,
                                                                   Block block, SourceLocation where) {
    return cancelPreviousThenPerform(callSiteName(where), afterDelay, std::move(block));
}

}  // namespace quester
