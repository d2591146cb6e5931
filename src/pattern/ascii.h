// Single characters, whatever the locale.
#pragma once

namespace zxpol {

// An upper-case ASCII letter as its lower-case one, any other byte as it is.
inline char lowerCase(char c) {
    const bool upper = static_cast<unsigned char>(static_cast<unsigned char>(c) - 'A') < 26;
    return upper ? static_cast<char>(c | 0x20) : c;
}

// What trimming takes away.
inline bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n';
}

}  // namespace zxpol
