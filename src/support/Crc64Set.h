#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace quester {

// A set of path keys (`crc64` values), such as the keys a search has already
// judged or shown. Open addressing in one flat table: a search inserts a key
// or more for every item it finds, and a node-based set spent more time
// allocating nodes and relinking them as it grew than on the lookups.
// Any 64-bit value is a valid key, 0 included. Not synchronised.
class Crc64Set {
public:
    // True when `key` was not in the set before.
    bool insert(std::int64_t key);
    bool contains(std::int64_t key) const;
    std::size_t size() const { return count; }

private:
    std::size_t slotFor(std::int64_t key) const;
    void grow();

    // A free slot holds 0; the key 0 itself is kept apart in `holdsZero`.
    std::vector<std::int64_t> slots;
    std::size_t count = 0;
    bool holdsZero = false;
};

}  // namespace quester
