#include "addrlist/folded_text.h"

#include <algorithm>
#include <chrono>
#include <random>

#include "pattern/ascii.h"
#include "pattern/rfc2822_checker.h"

namespace zxpol {

namespace {

// The two words of the product of two words, one upon the other.
uint64_t mix(uint64_t a, uint64_t b) noexcept {
#ifdef __SIZEOF_INT128__
    __extension__ using Wide = unsigned __int128;
    const Wide product = static_cast<Wide>(a) * b;
    return static_cast<uint64_t>(product) ^ static_cast<uint64_t>(product >> 64);
#else
    const uint64_t aLow = static_cast<uint32_t>(a), aHigh = a >> 32;
    const uint64_t bLow = static_cast<uint32_t>(b), bHigh = b >> 32;
    const uint64_t lowest = aLow * bLow;
    const uint64_t middle = aHigh * bLow + (lowest >> 32);
    const uint64_t other = aLow * bHigh + static_cast<uint32_t>(middle);
    const uint64_t low = other << 32 | static_cast<uint32_t>(lowest);
    const uint64_t high = aHigh * bHigh + (middle >> 32) + (other >> 32);
    return low ^ high;
#endif
}

// The first `count` bytes of a word in memory, zeros in place of the others.
uint64_t firstBytes(uint64_t word, size_t count) noexcept {
    return count >= 8 ? word : word & ((uint64_t{1} << count * 8) - 1);
}

// What is readable behind a key.
constexpr size_t kSlack = sizeof(uint64_t) + 1;

// Whether a word holds the byte `c`.
bool hasByte(uint64_t word, unsigned char c) noexcept {
    constexpr uint64_t ones = ~uint64_t{0} / 0xff;
    const uint64_t other = word ^ ones * c;
    return ((other - ones) & ~other & ones * 0x80) != 0;
}

// Lower-cases a text, word by word and up to seven bytes behind it. Whether there is a quote in it.
bool fold(char* text, size_t length) noexcept {
    bool hasQuote = false;
    for (size_t i = 0; i < length; i += sizeof(uint64_t)) {
        const uint64_t word = foldWord(loadWord(text + i));
        hasQuote = hasQuote || hasByte(word, '"');
        std::memcpy(text + i, &word, sizeof word);
    }
    return hasQuote;
}

struct Secret {
    uint64_t first;
    uint64_t second;

    Secret() {
        try {
            std::random_device random;
            first = uint64_t{random()} << 32 | random();
            second = uint64_t{random()} << 32 | random();
        } catch (...) {
            // Where there is no source of randomness, at least no two processes have the same secret.
            first = static_cast<uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
            second = reinterpret_cast<uintptr_t>(this) * 0x9e3779b97f4a7c15u ^ first;
        }
    }
};

const Secret secret;

}  // namespace

bool equalsFolded(const char* a, const char* b, size_t length) noexcept {
    constexpr size_t wordSize = sizeof(uint64_t);
    const auto isSame = [&](size_t at) {
        const uint64_t left = loadWord(a + at);
        const uint64_t right = loadWord(b + at);
        return left == right || foldWord(left) == foldWord(right);
    };
    if (length < wordSize) {
        for (size_t i = 0; i < length; ++i) {
            if (lowerCase(a[i]) != lowerCase(b[i])) return false;
        }
        return true;
    }
    for (size_t i = 0; i + wordSize < length; i += wordSize) {
        if (!isSame(i)) return false;
    }
    // The last word overlaps the one before it, and nothing beyond the texts is read.
    return isSame(length - wordSize);
}

uint64_t hashFolded(const char* folded, size_t length) noexcept {
    uint64_t hash = secret.first ^ length;
    for (; length > 16; length -= 16, folded += 16) {
        hash = mix(loadWord(folded) ^ hash, loadWord(folded + 8) ^ secret.second);
    }
    const uint64_t first = firstBytes(loadWord(folded), length);
    const uint64_t second = length > 8 ? firstBytes(loadWord(folded + 8), length - 8) : 0;
    return mix(mix(first ^ hash, second ^ secret.second), secret.first ^ secret.second);
}

uint64_t hashText(std::string_view text) {
    ScratchText folded(text.size() + sizeof(uint64_t));
    std::transform(text.begin(), text.end(), folded.data(), lowerCase);
    std::memset(folded.data() + text.size(), 0, sizeof(uint64_t));
    return hashFolded(folded.data(), text.size());
}

uint64_t joinHashes(uint64_t first, uint64_t second) noexcept {
    return mix(first ^ secret.second, second ^ secret.first);
}

FoldedKey::FoldedKey(std::string_view address)
    : _buffer(address.size() + kSlack), _text(_buffer.data()), _length(address.size()) {
    char* key = _buffer.data();
    std::memcpy(key, address.data(), _length);
    std::memset(key + _length, 0, kSlack);
    if (fold(key, _length)) {
        ZxPolRfc2822Checker::stripLocalPartBoundary(key, key);
        _length = std::strlen(key);
        _hadQuotes = true;
    }
    _hash = hashFolded(key, _length);
}

}  // namespace zxpol
