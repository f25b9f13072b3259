// Hashes passwords and tokens.
#include "Password.h"

#include <crypt.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <sys/random.h>

#include <cerrno>
#include <memory>
#include <new>

namespace {

char const METHOD[] = "$y$";
unsigned long const COST = 4;

// A setting that no user has, hashed with where there is no usable hash.
char const NOBODY[] = "$y$j8T$PvYC9jOZnkVIQKKkxEGrB/$";

std::string hexOf(unsigned char const* bytes, size_t size) {
    std::string text;
    for (size_t i = 0; i < size; ++i) {
        text += "0123456789abcdef"[bytes[i] >> 4U];
        text += "0123456789abcdef"[bytes[i] & 15U];
    }
    return text;
}

// Returns an empty string if the setting is not valid, or there is no memory.
std::string hashWith(std::string const& setting, std::string const& password) {
    auto const work = std::make_unique<crypt_data>();  // too large for a small stack
    char const* const hash =
        crypt_rn(password.c_str(), setting.c_str(), work.get(), sizeof(crypt_data));
    return hash != nullptr ? hash : "";
}

}  // namespace

bool passwordMatches(std::string const& stored, std::string const& password) {
    bool const isSlow =
        stored.starts_with(METHOD) || stored.starts_with("$6$");  // not of one round
    std::string const actual = isSlow ? hashWith(stored, password) : "";
    if (actual.empty()) {
        bool const cannotHash = hashWith(NOBODY, password).empty();
        if (cannotHash && errno != ERANGE) {  // ERANGE: the password is too long
            throw std::bad_alloc();
        }
        return false;
    }
    return stored.size() == actual.size() &&
           CRYPTO_memcmp(stored.data(), actual.data(), actual.size()) == 0;
}

std::string hashOf(std::string const& password) {
    char setting[CRYPT_GENSALT_OUTPUT_SIZE];
    bool const isMade =
        crypt_gensalt_rn(METHOD, COST, nullptr, 0, setting, sizeof(setting)) != nullptr;
    return isMade ? hashWith(setting, password) : "";
}

std::string randomToken() {
    unsigned char bytes[32];
    return getrandom(bytes, sizeof(bytes), 0) == sizeof(bytes) ? hexOf(bytes, sizeof(bytes)) : "";
}

std::string keyedHash(std::string const& secret, std::string const& token) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    auto const* const text = reinterpret_cast<unsigned char const*>(token.data());
    if (HMAC(EVP_sha256(), secret.data(), static_cast<int>(secret.size()), text, token.size(),
             digest, &size) == nullptr) {
        throw std::bad_alloc();  // an empty name would match every token
    }
    return hexOf(digest, size);
}
