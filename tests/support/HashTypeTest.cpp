#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "support/HashType.h"

namespace quester {
namespace {

TEST(HashType, HexDigestsOfAbcMatchThePublishedVectors) {
    const std::vector<std::pair<HashType, std::string>> vectors = {
        {HashType::md4, "a448017aaf21d8525fc10ae87aa6729d"},
        {HashType::md5, "900150983cd24fb0d6963f7d28e17f72"},
        {HashType::sha1, "a9993e364706816aba3e25717850c26c9cd0d89d"},
        {HashType::sha224, "23097d223405d8228642a477bda255b32aadbce4bda0b3f7e36c9da7"},
        {HashType::sha256, "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
        {HashType::sha384,
         "cb00753f45a35e8bb5a03d699ac65007272c32ab0eded1631a8b605a43ff5bed8086072ba1e7cc2358baeca134c825a7"},
        {HashType::sha512,
         "ddaf35a193617abacc417349ae20413112e6fa4e89a97ea20a9eeee64b55d39a2192992a274fc1a836ba3c23a3feebbd454d4423643ce"
         "80e"
         "2a9ac94fa54ca49f"},
    };
    for (const auto& [type, expected] : vectors) {
        auto text = hashed("abc", type, HashOutputType::hex);
        ASSERT_TRUE(text.has_value()) << static_cast<int>(type);
        EXPECT_EQ(*text, expected);
    }
}

TEST(HashType, Base64HasPaddingAndNoLineBreaks) {
    EXPECT_EQ(hashed("abc", HashType::md5, HashOutputType::base64), "kAFQmDzST7DWlj99KOF/cg==");
    EXPECT_EQ(hashed("abc", HashType::sha1, HashOutputType::base64), "qZk+NkcGgWq6PiVxeFDCbJzQ2J0=");
    // 88 characters: longer than the 64 after which line-wrapping encoders break.
    EXPECT_EQ(hashed("abc", HashType::sha512, HashOutputType::base64),
              "3a81oZNherrMQXNJriBBMRLm+k6JqX6iCp7u5ktV05ohkpkqJ0/BqDa6PCOj/uu9RU1EI2Q86A4qmslPpUyknw==");
}

TEST(HashType, EmptyAndBinaryDataAreHashedWhole) {
    EXPECT_EQ(hashed("", HashType::md5, HashOutputType::hex), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(hashed(std::string("a\0b", 3), HashType::sha256, HashOutputType::hex),
              "59b271ae1bbcb1d31d41929817f4b16fb439eb4f31520b5ad1d5ce98920a7138");
}

}  // namespace
}  // namespace quester
