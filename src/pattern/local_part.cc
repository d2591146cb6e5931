// ZxPolRfc2822Checker::stripLocalPartBoundary: the local part in the form in which addresses are compared.
#include <cstring>

#include "pattern/address_split.h"
#include "pattern/rfc2822_checker.h"
#include "pattern/scratch_text.h"

namespace {

// Copies one word of a local part without the quotes around it, and returns the end of the copy.
char* copyWord(char* dst, const char* word, size_t length) {
    const bool quoted = length >= 2 && word[0] == '"' && word[length - 1] == '"';
    if (quoted) {
        ++word;
        length -= 2;
    }
    std::memcpy(dst, word, length);
    return dst + length;
}

// Writes the words of `local`, which is cut up on the way, with dots between them; returns the end.
char* copyWords(char* dst, char* local) {
    unsigned int count = 0;
    const char* word = ZxPolRfc2822Checker::getTokens(local, ".", count, '"');
    for (unsigned int i = 0; i < count; ++i) {
        if (i > 0) *dst++ = '.';
        const size_t length = std::strlen(word);
        dst = copyWord(dst, word, length);
        word += length + 1;
    }
    return dst;
}

}  // namespace

void ZxPolRfc2822Checker::stripLocalPartBoundary(char* dst, const char* src) {
    if (dst == nullptr || src == nullptr) return;
    const size_t length = std::strlen(src);
    const char* at = zxpol::findUnquotedAt(src);
    const size_t localLength = at != nullptr ? static_cast<size_t>(at - src) : length;
    char* end = dst;
    const char* rest = src;
    if (std::memchr(src, '"', localLength) != nullptr) {
        zxpol::ScratchText local(src, localLength);
        end = copyWords(dst, local.data());
        rest = src + localLength;
    }
    // The words never grow, so the rest is still untouched when dst is src.
    std::memmove(end, rest, length - static_cast<size_t>(rest - src) + 1);
}
