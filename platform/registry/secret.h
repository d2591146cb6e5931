// Sealing of protected strings.
#pragma once

#include <sodium.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace zxreg {

// A key. It lies in memory of its own between pages that cannot be touched, which is in no core file, is not swapped
// where the limits of the process allow that, and is wiped when the key goes. There is one of it: a key can be moved,
// but not copied.
class SecretKey {
public:
    static constexpr size_t size = crypto_aead_xchacha20poly1305_ietf_KEYBYTES;
    static constexpr size_t fingerprintSize = 16;

    // All zero.
    SecretKey();

    static SecretKey random();

    unsigned char* data() noexcept { return _bytes.get(); }
    const unsigned char* data() const noexcept { return _bytes.get(); }

    // Tells keys apart without revealing them.
    std::string fingerprint() const;

private:
    struct Wiper {
        void operator()(unsigned char* bytes) const noexcept { sodium_free(bytes); }
    };
    std::unique_ptr<unsigned char, Wiper> _bytes;
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
