#pragma once

#include <memory>

namespace quester {

// One weak reference, for lists of observers that must not keep their
// observers alive.
template <typename T>
class WeakObject {
public:
    explicit WeakObject(std::weak_ptr<T> object) : object(std::move(object)) {}
    explicit WeakObject(const std::shared_ptr<T>& object) : object(object) {}

    // The object, or null once it has gone.
    std::shared_ptr<T> value() const { return object.lock(); }
    bool isAlive() const { return !object.expired(); }
    // True if this refers to `other`, alive or not.
    bool refersTo(const T* other) const {
        auto alive = object.lock();
        return alive.get() == other;
    }

private:
    std::weak_ptr<T> object;
};

}  // namespace quester
