#pragma once

#include <utility>

#include "support/Lock.h"

namespace quester {

// A value that is only ever touched under its own lock. Every
// read-modify-write goes through `access`; `fn` must not call back into the
// same `Locked`.
template <typename T>
class Locked {
public:
    Locked() = default;
    explicit Locked(T initial) : storage(std::move(initial)) {}
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;

    // A copy of the value, read under the lock.
    T value() const {
        LockGuard guard(lock);
        return storage;
    }

    void setValue(T newValue) {
        LockGuard guard(lock);
        storage = std::move(newValue);
    }

    // Runs `fn(T&)` under the lock and returns what it returns. The return
    // types are deduced rather than spelled with invoke_result, so a generic
    // lambda (`auto& value`) is never instantiated for the other overload.
    template <typename Fn>
    decltype(auto) access(Fn&& fn) {
        LockGuard guard(lock);
        return std::forward<Fn>(fn)(storage);
    }

    template <typename Fn>
    decltype(auto) access(Fn&& fn) const {
        LockGuard guard(lock);
        return std::forward<Fn>(fn)(storage);
    }

    bool isAlreadyAquired() const { return lock.isAlreadyAquired(); }

private:
    mutable Lock lock;
    T storage GUARDED_BY(lock){};
};

}  // namespace quester
