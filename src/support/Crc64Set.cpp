#include "support/Crc64Set.h"

namespace quester {

namespace {

constexpr std::size_t kInitialSlots = 1024;

// Spreads the key over the table's index bits, so that keys differing only in
// their high bits don't crowd one run of slots.
std::uint64_t mixed(std::int64_t key) {
    return static_cast<std::uint64_t>(key) * 0x9E3779B97F4A7C15ull;
}

}  // namespace

std::size_t Crc64Set::slotFor(std::int64_t key) const {
    const std::size_t mask = slots.size() - 1;
    std::size_t slot = static_cast<std::size_t>(mixed(key) >> 32) & mask;
    while (slots[slot] != 0 && slots[slot] != key) slot = (slot + 1) & mask;
    return slot;
}

bool Crc64Set::insert(std::int64_t key) {
    if (key == 0) {
        if (holdsZero) return false;
        holdsZero = true;
        ++count;
        return true;
    }
    // At most half full, so that runs stay short.
    if (2 * (count + 1) > slots.size()) grow();
    std::int64_t& slot = slots[slotFor(key)];
    if (slot == key) return false;
    slot = key;
    ++count;
    return true;
}

bool Crc64Set::contains(std::int64_t key) const {
    if (key == 0) return holdsZero;
    return !slots.empty() && slots[slotFor(key)] == key;
}

void Crc64Set::grow() {
    std::vector<std::int64_t> old = std::move(slots);
    slots.assign(old.empty() ? kInitialSlots : 2 * old.size(), 0);
    for (std::int64_t key : old) {
        if (key != 0) slots[slotFor(key)] = key;
    }
}

}  // namespace quester
