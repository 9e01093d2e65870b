#include "support/Munge.h"

#include <array>
#include <cstring>

namespace quester {

namespace {

// Fixed forever: the data in the program was written with exactly these.
constexpr std::array<std::uint64_t, 26> mungeTable = {
    0x9E3779B97F4A7C15ULL, 0xBF58476D1CE4E5B9ULL, 0x94D049BB133111EBULL, 0x2545F4914F6CDD1DULL, 0xD6E8FEB86659FD93ULL,
    0xA0761D6478BD642FULL, 0xE7037ED1A0B428DBULL, 0x8EBC6AF09C88C6E3ULL, 0x589965CC75374CC3ULL, 0x1D8E4E27C47D124FULL,
    0xC2B2AE3D27D4EB4FULL, 0x165667B19E3779F9ULL, 0x85EBCA77C2B2AE63ULL, 0x27D4EB2F165667C5ULL, 0xFF51AFD7ED558CCDULL,
    0xC4CEB9FE1A85EC53ULL, 0x87C37B91114253D5ULL, 0x4CF5AD432745937FULL, 0x52DCE729DA3ED8A5ULL, 0x38495AB5B3F24A6BULL,
    0x6A09E667F3BCC908ULL, 0xBB67AE8584CAA73BULL, 0x3C6EF372FE94F82BULL, 0xA54FF53A5F1D36F1ULL, 0x510E527FADE682D1ULL,
    0x9B05688C2B3E6C1FULL,
};

}  // namespace

void Munge::munge(std::span<std::uint8_t> data, std::uint64_t multiplier) {
    const size_t words = data.size() / sizeof(std::uint64_t);
    for (size_t i = 0; i < words; ++i) {
        std::uint64_t word;
        std::memcpy(&word, data.data() + i * sizeof word, sizeof word);
        word ^= mungeTable[i % mungeTable.size()] * multiplier;
        std::memcpy(data.data() + i * sizeof word, &word, sizeof word);
    }
}

}  // namespace quester
