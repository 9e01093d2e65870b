#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quester {

// Message digests, by OpenSSL. MD4 comes from OpenSSL's legacy provider; on a
// system without it, MD4 answers none.
enum class HashType { md4, md5, sha1, sha224, sha256, sha384, sha512 };

enum class HashOutputType {
    hex,     // two lower-case digits a byte ("%02hhx"), nothing between
    base64,  // standard alphabet with padding, no line breaks
};

// The digest length in bytes: 16, 16, 20, 28, 32, 48, 64.
std::size_t digestLength(HashType type);

// The raw digest of `data`; none when the digest is unavailable. Thread-safe.
std::optional<std::vector<unsigned char>> digest(std::string_view data, HashType type);

// The digest of `data` (bytes, or text as its UTF-8 bytes) as text.
std::optional<std::string> hashed(std::string_view data, HashType type, HashOutputType output);

}  // namespace quester
