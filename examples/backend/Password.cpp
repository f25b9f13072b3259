#include "Password.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <sys/random.h>

namespace {

std::string hexOf(unsigned char const* bytes, size_t size) {
    std::string text;
    for (size_t i = 0; i < size; ++i) {
        text += "0123456789abcdef"[bytes[i] >> 4U];
        text += "0123456789abcdef"[bytes[i] & 15U];
    }
    return text;
}

std::string sha256(std::string const& text) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    EVP_Digest(text.data(), text.size(), digest, &size, EVP_sha256(), nullptr);
    return hexOf(digest, size);
}

}  // namespace

bool passwordMatches(std::string const& stored, std::string const& password) {
    size_t const salt = stored.find('$') + 1;
    size_t const hash = stored.find('$', salt) + 1;
    bool const isHash = salt == 7 && hash > salt && stored.rfind("sha256$", 0) == 0;
    std::string const expected = isHash ? stored.substr(hash) : std::string(64, '-');
    std::string const actual =
        sha256((isHash ? stored.substr(salt, hash - 1 - salt) : "00000000") + password);
    return expected.size() == actual.size() &&
           CRYPTO_memcmp(expected.data(), actual.data(), actual.size()) == 0;
}

std::string randomToken() {
    unsigned char bytes[32];
    return getrandom(bytes, sizeof(bytes), 0) == sizeof(bytes) ? hexOf(bytes, sizeof(bytes)) : "";
}

std::string keyedHash(std::string const& secret, std::string const& token) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    HMAC(EVP_sha256(), secret.data(), static_cast<int>(secret.size()),
         reinterpret_cast<unsigned char const*>(token.data()), token.size(), digest, &size);
    return hexOf(digest, size);
}
