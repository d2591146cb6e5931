// Numbers as text.
#include <algorithm>

#include "zxbase.h"

extern "C" char* kr_itoa(int value, char* buffer, int radix) {
    if (buffer == nullptr) return nullptr;
    char* out = buffer;
    if (radix >= 2 && radix <= 36) {
        const bool negative = value < 0 && radix == 10;
        unsigned int rest = static_cast<unsigned int>(value);
        if (negative) rest = 0U - rest;
        const auto base = static_cast<unsigned int>(radix);
        do {
            *out++ = "0123456789abcdefghijklmnopqrstuvwxyz"[rest % base];
            rest /= base;
        } while (rest != 0);
        if (negative) *out++ = '-';
        std::reverse(buffer, out);
    }
    *out = '\0';
    return buffer;
}
