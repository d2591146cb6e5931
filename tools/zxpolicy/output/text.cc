#include "output/text.h"

#include <cstdio>

namespace tool {

namespace {

// The length of the sequence that a first byte announces, and the bits of the code point in it; 0 for no first byte.
size_t sequenceLength(unsigned char first, uint32_t& bits) {
    if (first < 0x80) return bits = first, 1;
    if (first >= 0xc2 && first < 0xe0) return bits = first & 0x1fu, 2;
    if (first >= 0xe0 && first < 0xf0) return bits = first & 0x0fu, 3;
    if (first >= 0xf0 && first < 0xf5) return bits = first & 0x07u, 4;
    return 0;
}

// The bytes of the colour that a text begins with; 0 without one.
size_t colourSize(std::string_view text) {
    if (text.compare(0, 2, "\x1b[") != 0) return 0;
    const size_t end = text.find_first_not_of("0123456789;", 2);
    return end != std::string_view::npos && text[end] == 'm' ? end + 1 : 0;
}

void appendHex(std::string& out, unsigned char byte) {
    char text[8];
    std::snprintf(text, sizeof text, "\\x%02X", byte);
    out += text;
}

}  // namespace

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    for (char& c : lower)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return lower;
}

bool nextCodePoint(std::string_view text, size_t& position, uint32_t& codePoint) {
    if (position >= text.size()) return false;
    uint32_t bits = 0;
    const size_t length = sequenceLength(static_cast<unsigned char>(text[position]), bits);
    if (length == 0 || text.size() - position < length) return false;
    for (size_t i = 1; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(text[position + i]);
        if ((byte & 0xc0u) != 0x80u) return false;
        bits = bits << 6 | (byte & 0x3fu);
    }
    const uint32_t least = length == 3 ? 0x800u : length == 4 ? 0x10000u : 0u;
    if (bits < least || bits > 0x10ffff || (bits >= 0xd800 && bits < 0xe000)) return false;
    codePoint = bits;
    position += length;
    return true;
}

bool isFitForLine(uint32_t codePoint) {
    const bool isControl = codePoint < 0x20 || (codePoint >= 0x7f && codePoint < 0xa0);
    const bool isSeparator = codePoint == 0x2028 || codePoint == 0x2029;
    const bool isDirection = codePoint == 0x061c || codePoint == 0x200e || codePoint == 0x200f ||
                             (codePoint >= 0x202a && codePoint <= 0x202e) ||
                             (codePoint >= 0x2066 && codePoint <= 0x2069);
    return !isControl && !isSeparator && !isDirection;
}

bool isUtf8(std::string_view text) {
    uint32_t codePoint = 0;
    size_t position = 0;
    while (position < text.size())
        if (!nextCodePoint(text, position, codePoint)) return false;
    return true;
}

size_t displayWidth(std::string_view text) {
    size_t width = 0;
    uint32_t codePoint = 0;
    for (size_t position = 0; position < text.size();) {
        const size_t begin = position;
        position += colourSize(text.substr(position));
        if (position != begin) continue;
        if (!nextCodePoint(text, position, codePoint)) ++position;
        ++width;
    }
    return width;
}

std::string oneLine(std::string_view text) {
    std::string out;
    uint32_t codePoint = 0;
    for (size_t position = 0; position < text.size();) {
        const size_t begin = position;
        const bool isWhole = nextCodePoint(text, position, codePoint);
        if (!isWhole) ++position;
        const std::string_view bytes = text.substr(begin, position - begin);
        if (isWhole && isFitForLine(codePoint))
            out += bytes;
        else
            for (char c : bytes)
                appendHex(out, static_cast<unsigned char>(c));
    }
    return out;
}

std::string inQuotes(std::string_view text, size_t most) {
    std::string out = "\"";
    uint32_t codePoint = 0;
    size_t count = 0;
    for (size_t position = 0; position < text.size(); ++count) {
        if (count == most) return out + "...\"";
        const size_t begin = position;
        if (!nextCodePoint(text, position, codePoint)) ++position;
        const std::string_view bytes = text.substr(begin, position - begin);
        if (bytes == "\"" || bytes == "\\") out += '\\';
        out += oneLine(bytes);
    }
    return out + '"';
}

std::string grouped(uint64_t number) {
    std::string text = std::to_string(number);
    for (size_t at = text.size(); at > 3;) {
        at -= 3;
        text.insert(at, ",");
    }
    return text;
}

std::string counted(uint64_t number, const char* noun) {
    return grouped(number) + ' ' + noun + (number == 1 ? "" : "s");
}

}  // namespace tool
