#pragma once

#include <cstdint>
#include <string_view>

namespace quester {

// CRC-64/ECMA-182 of the bytes of `text` (polynomial 0x42F0E1EBA9EA3693,
// most significant bit first, initial value 0, no reflection, no final XOR),
// returned as a signed 64-bit value. The empty text gives 0. From
// `startingFrom`, the crc64 of the text before, it goes on over `text`:
// crc64(b, crc64(a)) is crc64(a + b).
//
// A cheap identity for paths: the search keeps sets of these instead of the
// paths themselves. No stored format depends on it. Thread-safe.
std::int64_t crc64(std::string_view text, std::int64_t startingFrom = 0);

}  // namespace quester
