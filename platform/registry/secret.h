// Sealing of protected strings.
#pragma once

#include <sodium.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zxreg {

// A key that is wiped from memory when it goes.
class SecretKey {
public:
    static constexpr size_t size = crypto_aead_xchacha20poly1305_ietf_KEYBYTES;
    static constexpr size_t fingerprintSize = 16;

    SecretKey() noexcept : _bytes{} {}
    SecretKey(const SecretKey&) = default;
    SecretKey& operator=(const SecretKey&) = default;
    ~SecretKey() { sodium_memzero(_bytes.data(), size); }

    static SecretKey random();

    unsigned char* data() noexcept { return _bytes.data(); }
    const unsigned char* data() const noexcept { return _bytes.data(); }

    // Tells keys apart without revealing them.
    std::string fingerprint() const;

private:
    std::array<unsigned char, size> _bytes;
};

// Where a protected string stands; sealed bytes open in their own place only.
struct SecretPlace {
    uint64_t node;
    uint64_t value;
    std::string_view name;
};

// How many bytes sealing adds.
constexpr uint32_t sealOverhead =
    crypto_aead_xchacha20poly1305_ietf_NPUBBYTES + crypto_aead_xchacha20poly1305_ietf_ABYTES;

std::string seal(const SecretKey& key, const SecretPlace& place, const void* plain, uint32_t size);

// Writes `sealed.size() - sealOverhead` bytes to `plain`. False, with the output wiped, when the bytes were not sealed
// with this key for this place.
bool unseal(const SecretKey& key, const SecretPlace& place, std::string_view sealed, void* plain);

}  // namespace zxreg
