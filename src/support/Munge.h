#pragma once

#include <cstdint>
#include <span>

namespace quester {

// A scrambler that is its own inverse: each whole 64-bit word of the data, in
// memory order, is XORed with the next entry of a fixed table of 26 constants
// times `multiplier` (mod 2^64); the table restarts after its last entry, and
// bytes after the last whole word stay as they are. It hides data from a casual
// look, nothing more. The compiled-in template data is stored this way with
// multiplier 1; the build tool that writes it uses this same function.
struct Munge {
    static void munge(std::span<std::uint8_t> data, std::uint64_t multiplier);
};

}  // namespace quester
