#include "support/Utf8Text.h"

#include <gtest/gtest.h>

#include <string>

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

// The ASCII runs are passed over a block at a time: a bad or non-ASCII byte
// at every place around the block edges must still be seen.
TEST(Utf8, BytesAtEveryPlaceAroundTheBlocks) {
    for (std::size_t length : {1u, 31u, 32u, 33u, 64u, 95u}) {
        for (std::size_t at = 0; at < length; ++at) {
            std::string text(length, 'a');
            text[at] = '\x80';
            EXPECT_EQ(asciiPrefixLength(text), at) << length << " " << at;
            EXPECT_FALSE(isASCII(text));
            EXPECT_FALSE(isValidUTF8(text)) << length << " " << at;
            if (at + 1 < length) {
                text[at] = '\xC3';
                text[at + 1] = '\xA9';
                EXPECT_TRUE(isValidUTF8(text)) << length << " " << at;
            }
        }
        EXPECT_TRUE(isASCII(std::string(length, 'z')));
    }
}

}  // namespace
}  // namespace quester
