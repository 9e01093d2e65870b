#include <gtest/gtest.h>

#include "support/Utf8Text.h"

namespace quester {
namespace {

TEST(Utf8, WellFormedTextOnly) {
    EXPECT_TRUE(isValidUTF8(""));
    EXPECT_TRUE(isValidUTF8("caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80"));
    EXPECT_FALSE(isValidUTF8("\xC0\xAF"));          // overlong "/"
    EXPECT_FALSE(isValidUTF8("\xED\xA0\x80"));      // surrogate
    EXPECT_FALSE(isValidUTF8("\xF4\x90\x80\x80"));  // past U+10FFFF
    EXPECT_FALSE(isValidUTF8("\xE2\x82"));          // cut short
    EXPECT_FALSE(isValidUTF8("\x80"));
}

}  // namespace
}  // namespace quester
