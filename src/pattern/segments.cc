#include "pattern/segments.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "pattern/ascii.h"
#include "pattern/rfc2822_checker.h"
#include "zxbase.h"

namespace zxpol {
namespace {

// Takes the blanks at the end of a text off its length.
size_t trimmedLength(const char* text) {
    size_t length = std::strlen(text);
    while (length > 0 && isBlank(text[length - 1]))
        --length;
    return length;
}

char* copyText(char* dst, const char* src, size_t length) {
    std::memmove(dst, src, length);
    dst[length] = '\0';
    return dst;
}

// Lower-cases eight characters at once: bit 7 of each byte tells whether the byte is an upper-case letter.
uint64_t lowerCaseEight(uint64_t bytes) {
    constexpr uint64_t each = 0x0101010101010101;
    const uint64_t low = bytes & (each * 0x7f);
    const uint64_t fromA = low + each * (0x80 - 'A');
    const uint64_t aboveZ = low + each * (0x7f - 'Z');
    const uint64_t upper = (fromA ^ aboveZ) & ~bytes & (each * 0x80);
    return bytes | (upper >> 2);
}

// Copies a text in lower case; `dst` may lie at or before `src` in the same memory.
void copyLowerCase(char* dst, const char* src, size_t length) {
    for (; length >= sizeof(uint64_t); length -= sizeof(uint64_t)) {
        uint64_t bytes = 0;
        std::memcpy(&bytes, src, sizeof(bytes));
        bytes = lowerCaseEight(bytes);
        std::memcpy(dst, &bytes, sizeof(bytes));
        src += sizeof(bytes);
        dst += sizeof(bytes);
    }
    for (; length > 0; --length)
        *dst++ = lowerCase(*src++);
    *dst = '\0';
}

// Whether the text may be lower-cased before it is cut, and cut at a single character.
bool isSimpleSeparator(const char* seps) {
    return lowerCase(seps[0]) == seps[0] && !(seps[0] >= 'a' && seps[0] <= 'z') && (seps[0] == '\0' || seps[1] == '\0');
}

// The usual case of no quoting and at most one separator (0: none): the text is lower-case already.
unsigned int cutAtOne(char* buf, size_t length, char** segs, unsigned int capacity, char separator) {
    unsigned int count = 0;
    char* const end = buf + length;
    while (count < capacity) {
        segs[count++] = buf;
        void* cut = separator != '\0' ? std::memchr(buf, separator, static_cast<size_t>(end - buf)) : nullptr;
        if (cut == nullptr) break;
        buf = static_cast<char*>(cut);
        *buf++ = '\0';
    }
    return count;
}

unsigned int cutGeneral(char* buf, char** segs, unsigned int capacity, char quote, const char* seps) {
    unsigned int tokens = 0;
    ZxPolRfc2822Checker::getTokens(buf, seps, tokens, quote);
    const unsigned int count = std::min(capacity, tokens);
    for (unsigned int i = 0; i < count; ++i) {
        segs[i] = kr_strlwr(buf);
        buf += std::strlen(buf) + 1;
    }
    return count;
}

}  // namespace

char* trimText(char* dst, const char* src) {
    while (isBlank(*src))
        ++src;
    return copyText(dst, src, trimmedLength(src));
}

unsigned int cutSegments(const char* src, char* buf, char** segs, unsigned int capacity, char quote, const char* seps) {
    while (isBlank(*src))
        ++src;
    const size_t length = trimmedLength(src);
    if (length > 0 && quote == '\0' && isSimpleSeparator(seps)) {
        copyLowerCase(buf, src, length);
        return cutAtOne(buf, length, segs, capacity, seps[0]);
    }
    copyText(buf, src, length);
    return length > 0 ? cutGeneral(buf, segs, capacity, quote, seps) : 0;
}

}  // namespace zxpol
