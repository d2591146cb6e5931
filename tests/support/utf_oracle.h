// Conversions between UTF-16 and UTF-8 that spell out the table of well-formed sequences, slow and obvious, to compare
// the real ones with.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace oracle {

// The well-formed sequences: the first byte, and the range of the second; all later bytes are 80 to BF.
struct Form {
    unsigned firstLow, firstHigh, length, secondLow, secondHigh;
};
inline constexpr Form kForms[] = {
    {0x00, 0x7F, 1, 0, 0},       {0xC2, 0xDF, 2, 0x80, 0xBF}, {0xE0, 0xE0, 3, 0xA0, 0xBF},
    {0xE1, 0xEC, 3, 0x80, 0xBF}, {0xED, 0xED, 3, 0x80, 0x9F}, {0xEE, 0xEF, 3, 0x80, 0xBF},
    {0xF0, 0xF0, 4, 0x90, 0xBF}, {0xF1, 0xF3, 4, 0x80, 0xBF}, {0xF4, 0xF4, 4, 0x80, 0x8F},
};

inline unsigned byteAt(const std::string& bytes, size_t at) {
    return static_cast<unsigned char>(bytes[at]);
}

inline void appendUnits(std::u16string& units, uint32_t scalar) {
    if (scalar < 0x10000) {
        units += static_cast<char16_t>(scalar);
        return;
    }
    units += static_cast<char16_t>(0xD800 + (scalar - 0x10000) / 0x400);
    units += static_cast<char16_t>(0xDC00 + (scalar - 0x10000) % 0x400);
}

inline void appendBytes(std::string& bytes, uint32_t scalar) {
    const auto add = [&](uint32_t byte) { bytes += static_cast<char>(byte); };
    const auto addLater = [&](uint32_t divisor) { add(0x80 + scalar / divisor % 64); };
    if (scalar < 0x80) {
        add(scalar);
    } else if (scalar < 0x800) {
        add(0xC0 + scalar / 64);
        addLater(1);
    } else if (scalar < 0x10000) {
        add(0xE0 + scalar / 4096);
        addLater(64);
        addLater(1);
    } else {
        add(0xF0 + scalar / 262144);
        addLater(4096);
        addLater(64);
        addLater(1);
    }
}

// The length of the well-formed sequence at `at`, or 0.
inline size_t sequenceAt(const std::string& bytes, size_t at) {
    for (const Form& form : kForms) {
        if (byteAt(bytes, at) < form.firstLow || byteAt(bytes, at) > form.firstHigh) continue;
        if (bytes.size() - at < form.length) return 0;
        for (size_t later = 1; later < form.length; ++later) {
            const unsigned byte = byteAt(bytes, at + later);
            const unsigned low = later == 1 ? form.secondLow : 0x80, high = later == 1 ? form.secondHigh : 0xBF;
            if (byte < low || byte > high) return 0;
        }
        return form.length;
    }
    return 0;
}

inline std::optional<std::u16string> rightUnits(const std::string& bytes) {
    static constexpr unsigned payload[] = {0, 0x80, 0x20, 0x10, 0x08};
    std::u16string units;
    for (size_t at = 0; at < bytes.size();) {
        const size_t length = sequenceAt(bytes, at);
        if (length == 0) return std::nullopt;
        uint32_t scalar = byteAt(bytes, at) % payload[length];
        for (size_t later = 1; later < length; ++later)
            scalar = scalar * 64 + byteAt(bytes, at + later) % 64;
        appendUnits(units, scalar);
        at += length;
    }
    return units;
}

inline std::optional<std::string> rightBytes(const std::u16string& units) {
    std::string bytes;
    for (size_t at = 0; at < units.size(); ++at) {
        uint32_t scalar = units[at];
        if (scalar >= 0xDC00 && scalar <= 0xDFFF) return std::nullopt;
        if (scalar >= 0xD800 && scalar <= 0xDBFF) {
            if (++at == units.size() || units[at] < 0xDC00 || units[at] > 0xDFFF) return std::nullopt;
            scalar = 0x10000 + (scalar - 0xD800) * 0x400 + (units[at] - 0xDC00u);
        }
        appendBytes(bytes, scalar);
    }
    return bytes;
}

}  // namespace oracle
