#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "support/MainLoop.h"

namespace quester {

// Named notifications ("preferencesDidChange", "RebuildLocationPopup", ...)
// between parts of the program that don't know each other.
//
// `post` may be called from any thread and returns at once: each observer of
// that name is called later on the main loop, in the order the observers were
// added. An observer removed before its turn comes is not called. Handlers
// must not block the loop. Thread-safe.
class NotificationCenter {
public:
    using Handler = std::function<void()>;
    using Token = std::uint64_t;

    // `loop` must outlive the posts made through this center.
    explicit NotificationCenter(MainLoop& loop = MainLoop::shared());
    NotificationCenter(const NotificationCenter&) = delete;
    NotificationCenter& operator=(const NotificationCenter&) = delete;

    // The process-wide center, delivering on `MainLoop::shared()`.
    static NotificationCenter& shared();

    // Registers `handler` for `name`; the token undoes it. Never 0.
    Token addObserver(const std::string& name, Handler handler);
    // Unknown or already removed tokens are ignored.
    void removeObserver(Token token);

    void post(const std::string& name);

private:
    struct State;
    MainLoop& loop;
    std::shared_ptr<State> state;
};

}  // namespace quester
