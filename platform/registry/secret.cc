#include "secret.h"

#include <new>

#include "bytes.h"
#include "failure.h"

namespace zxreg {
namespace {

constexpr size_t nonceSize = crypto_aead_xchacha20poly1305_ietf_NPUBBYTES;

// To be called before anything else of it: whoever has a key has called it.
void startSodium() {
    static const int started = sodium_init();
    if (started < 0) throw Failure(ZXREG_E_SECRET, "The encryption library cannot be started.");
}

std::string placeBytes(const SecretPlace& place) {
    std::string bytes;
    appendNumber(bytes, place.node);
    appendNumber(bytes, place.value);
    bytes += place.name;
    return bytes;
}

}  // namespace

SecretKey::SecretKey() {
    startSodium();
    _bytes.reset(static_cast<unsigned char*>(sodium_malloc(size)));
    if (!_bytes) throw std::bad_alloc();
    sodium_memzero(data(), size);
}

SecretKey SecretKey::random() {
    SecretKey key;
    crypto_aead_xchacha20poly1305_ietf_keygen(key.data());
    return key;
}

std::string SecretKey::fingerprint() const {
    static constexpr char purpose[] = "fingerprint";
    std::string print(fingerprintSize, '\0');
    crypto_generichash(asBytes(print), print.size(), asBytes(purpose), sizeof purpose, data(), size);
    return print;
}

std::string seal(const SecretKey& key, const SecretPlace& place, const void* plain, uint32_t size) {
    std::string sealed(size + sealOverhead, '\0');
    randombytes_buf(sealed.data(), nonceSize);
    const std::string bound = placeBytes(place);
    crypto_aead_xchacha20poly1305_ietf_encrypt(asBytes(sealed) + nonceSize, nullptr,
                                               static_cast<const unsigned char*>(plain), size, asBytes(bound),
                                               bound.size(), nullptr, asBytes(sealed), key.data());
    return sealed;
}

bool unseal(const SecretKey& key, const SecretPlace& place, std::string_view sealed, void* plain) {
    if (sealed.size() < sealOverhead) return false;
    const std::string bound = placeBytes(place);
    return crypto_aead_xchacha20poly1305_ietf_decrypt(static_cast<unsigned char*>(plain), nullptr, nullptr,
                                                      asBytes(sealed) + nonceSize, sealed.size() - nonceSize,
                                                      asBytes(bound), bound.size(), asBytes(sealed), key.data()) == 0;
}

}  // namespace zxreg
