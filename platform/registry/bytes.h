// Packing of numbers into bytes that are the same on every machine.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace zxreg {

inline unsigned char* asBytes(std::string& text) {
    return reinterpret_cast<unsigned char*>(text.data());
}
inline const unsigned char* asBytes(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

// Eight bytes, the lowest first.
inline void appendNumber(std::string& bytes, uint64_t number) {
    char packed[8];
    for (size_t i = 0; i < sizeof packed; ++i) {
        packed[i] = static_cast<char>(number >> (8 * i));
    }
    bytes.append(packed, sizeof packed);
}

inline uint64_t numberAt(std::string_view bytes, size_t offset) {
    uint64_t number = 0;
    for (size_t i = 8; i-- > 0;) {
        number = number << 8 | static_cast<unsigned char>(bytes[offset + i]);
    }
    return number;
}

}  // namespace zxreg
