// Comparing and lower-casing without regard to the locale. A null text counts as an empty one.
#include "ascii_case.h"
#include "zxbase.h"

using zxbase::toLower;

extern "C" int kr_stricmp(const char* a, const char* b) {
    if (a == nullptr) a = "";
    if (b == nullptr) b = "";
    for (;; ++a, ++b) {
        const int difference = toLower(*a) - toLower(*b);
        if (difference != 0 || *a == '\0') return difference;
    }
}

extern "C" int kr_strnicmp(const char* a, const char* b, size_t n) {
    if (a == nullptr) a = "";
    if (b == nullptr) b = "";
    for (; n > 0; ++a, ++b, --n) {
        const int difference = toLower(*a) - toLower(*b);
        if (difference != 0 || *a == '\0') return difference;
    }
    return 0;
}

extern "C" char* kr_strlwr(char* text) {
    if (text == nullptr) return nullptr;
    for (char* c = text; *c != '\0'; ++c)
        *c = static_cast<char>(toLower(*c));
    return text;
}
