// Texts without regard to ASCII case: words of eight bytes at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "pattern/scratch_text.h"

namespace zxpol {

// The upper-case ASCII letters of a word as lower-case ones, all other bytes as they are.
inline uint64_t foldWord(uint64_t word) noexcept {
    constexpr uint64_t ones = ~uint64_t{0} / 0xff;
    const uint64_t low = word & (ones * 0x7f);
    const uint64_t fromA = low + ones * (0x80 - 'A');
    const uint64_t beyondZ = low + ones * (0x7f - 'Z');
    const uint64_t isUpper = (fromA ^ beyondZ) & ~word & (ones * 0x80);
    return word | isUpper >> 2;
}

// Eight bytes of a text as a word.
inline uint64_t loadWord(const char* bytes) noexcept {
    uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

// Whether two texts of one length are the same but for case.
bool equalsFolded(const char* a, const char* b, size_t length) noexcept;

// A hash of a lower-cased text, behind which eight bytes more must be readable. It depends on a secret of the process,
// so that nobody can make up texts that collide.
uint64_t hashFolded(const char* folded, size_t length) noexcept;

// The same of any text.
uint64_t hashText(std::string_view text);

// Joins two hashes, in this order.
uint64_t joinHashes(uint64_t first, uint64_t second) noexcept;

// The sort key of an address, lower-cased, with its hash: what makes two addresses of a list the same.
class FoldedKey {
public:
    // `address` is not null.
    explicit FoldedKey(std::string_view address);

    // NUL-terminated; eight bytes more are readable.
    const char* text() const noexcept { return _text; }
    size_t length() const noexcept { return _length; }
    uint64_t hash() const noexcept { return _hash; }

    // Whether the key differs from the address by more than its case: words of the local part may have lost quotes.
    bool hadQuotes() const noexcept { return _hadQuotes; }

private:
    ScratchText _buffer;
    const char* _text;
    size_t _length;
    uint64_t _hash;
    bool _hadQuotes = false;
};

}  // namespace zxpol
