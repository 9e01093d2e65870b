#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <numeric>
#include <vector>

#include "support/Munge.h"

namespace quester {
namespace {

std::vector<std::uint8_t> bytes(size_t count) {
    std::vector<std::uint8_t> data(count);
    std::iota(data.begin(), data.end(), std::uint8_t{1});
    return data;
}

TEST(Munge, IsItsOwnInverse) {
    const auto original = bytes(26 * 8 * 2 + 5);  // past the end of the table, with a tail
    auto data = original;
    Munge::munge(data, 1);
    EXPECT_NE(data, original);
    Munge::munge(data, 1);
    EXPECT_EQ(data, original);
}

TEST(Munge, BytesAfterTheLastWholeWordStay) {
    const auto original = bytes(19);
    auto data = original;
    Munge::munge(data, 1);
    EXPECT_NE(std::vector<std::uint8_t>(data.begin(), data.begin() + 16),
              std::vector<std::uint8_t>(original.begin(), original.begin() + 16));
    EXPECT_EQ(std::vector<std::uint8_t>(data.begin() + 16, data.end()),
              std::vector<std::uint8_t>(original.begin() + 16, original.end()));
}

TEST(Munge, TableRestartsAndMultiplierScales) {
    std::vector<std::uint8_t> zeros(27 * 8, 0);
    Munge::munge(zeros, 1);
    EXPECT_TRUE(std::equal(zeros.begin(), zeros.begin() + 8, zeros.begin() + 26 * 8))
        << "word 26 uses the first constant again";
    std::vector<std::uint8_t> once(8, 0);
    std::vector<std::uint8_t> twice(8, 0);
    Munge::munge(once, 1);
    Munge::munge(twice, 2);
    std::uint64_t a = 0;
    std::uint64_t b = 0;
    std::memcpy(&a, once.data(), 8);
    std::memcpy(&b, twice.data(), 8);
    EXPECT_EQ(b, a * 2);
}

}  // namespace
}  // namespace quester
