#include "support/HashType.h"

#include <openssl/evp.h>
#include <openssl/provider.h>

#include <memory>

namespace quester {
namespace {

struct LibraryContextDeleter {
    void operator()(OSSL_LIB_CTX* context) const { OSSL_LIB_CTX_free(context); }
};
struct DigestDeleter {
    void operator()(EVP_MD* md) const { EVP_MD_free(md); }
};
struct DigestContextDeleter {
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};
using OwnedDigest = std::unique_ptr<EVP_MD, DigestDeleter>;

// MD4 lives in the legacy provider. It is loaded into a library context of
// its own, so the process-wide default context keeps its usual providers.
class LegacyDigests {
public:
    LegacyDigests() : context(OSSL_LIB_CTX_new()) {
        if (!context) return;
        provider = OSSL_PROVIDER_load(context.get(), "legacy");
        if (provider) md4.reset(EVP_MD_fetch(context.get(), "MD4", nullptr));
    }
    ~LegacyDigests() {
        md4.reset();
        if (provider) OSSL_PROVIDER_unload(provider);
    }
    LegacyDigests(const LegacyDigests&) = delete;
    LegacyDigests& operator=(const LegacyDigests&) = delete;

    const EVP_MD* md4Digest() const { return md4.get(); }

private:
    std::unique_ptr<OSSL_LIB_CTX, LibraryContextDeleter> context;
    OSSL_PROVIDER* provider = nullptr;
    OwnedDigest md4;
};

class DefaultDigests {
public:
    DefaultDigests() {
        const char* names[] = {"MD5", "SHA1", "SHA224", "SHA256", "SHA384", "SHA512"};
        for (std::size_t index = 0; index < std::size(names); ++index)
            digests[index].reset(EVP_MD_fetch(nullptr, names[index], nullptr));
    }
    const EVP_MD* digest(HashType type) const {
        return digests[static_cast<std::size_t>(type) - static_cast<std::size_t>(HashType::md5)].get();
    }

private:
    OwnedDigest digests[6];
};

const EVP_MD* digestFor(HashType type) {
    if (type == HashType::md4) {
        static const LegacyDigests legacy;
        return legacy.md4Digest();
    }
    static const DefaultDigests defaults;
    return defaults.digest(type);
}

std::string hexText(const std::vector<unsigned char>& bytes) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (unsigned char byte : bytes) {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 0x0F];
    }
    return text;
}

std::string base64Text(const std::vector<unsigned char>& bytes) {
    std::string text(4 * ((bytes.size() + 2) / 3), '\0');
    int length =
        EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), bytes.data(), static_cast<int>(bytes.size()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

}  // namespace

std::size_t digestLength(HashType type) {
    switch (type) {
        case HashType::md4:
        case HashType::md5:
            return 16;
        case HashType::sha1:
            return 20;
        case HashType::sha224:
            return 28;
        case HashType::sha256:
            return 32;
        case HashType::sha384:
            return 48;
        case HashType::sha512:
            return 64;
    }
    return 0;
}

std::optional<std::vector<unsigned char>> digest(std::string_view data, HashType type) {
    const EVP_MD* md = digestFor(type);
    if (!md) return std::nullopt;
    std::unique_ptr<EVP_MD_CTX, DigestContextDeleter> context(EVP_MD_CTX_new());
    std::vector<unsigned char> bytes(EVP_MAX_MD_SIZE);
    unsigned int length = 0;
    if (!context || !EVP_DigestInit_ex(context.get(), md, nullptr) ||
        !EVP_DigestUpdate(context.get(), data.data(), data.size()) ||
        !EVP_DigestFinal_ex(context.get(), bytes.data(), &length)) {
        return std::nullopt;
    }
    bytes.resize(length);
    return bytes;
}

std::optional<std::string> hashed(std::string_view data, HashType type, HashOutputType output) {
    auto bytes = digest(data, type);
    if (!bytes) return std::nullopt;
    return output == HashOutputType::hex ? hexText(*bytes) : base64Text(*bytes);
}

}  // namespace quester
