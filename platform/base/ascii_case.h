// ASCII letter case, whatever the locale.
#pragma once

namespace zxbase {

// The byte, an upper-case ASCII letter as its lower-case one.
inline unsigned char toLower(char c) {
    const auto byte = static_cast<unsigned char>(c);
    const bool upper = static_cast<unsigned char>(byte - 'A') < 26;
    return static_cast<unsigned char>(upper ? byte + ('a' - 'A') : byte);
}

}  // namespace zxbase
