#include "log_text.h"

#include <cstdint>

namespace zxbase {
namespace {

void appendHex(std::string& line, unsigned char byte) {
    static const char digits[] = "0123456789abcdef";
    line += "\\x";
    line += digits[byte >> 4];
    line += digits[byte & 0x0f];
}

// One character of a text: its bytes, and its number where they are UTF-8.
struct Character {
    size_t size = 1;
    uint32_t number = 0;
    bool isWhole = false;
};

// How many bytes follow the first one, what they may be the number of at least, and the first one's own bits.
struct Lead {
    size_t more;
    uint32_t least;
    uint32_t bits;
};

// The bytes that can begin a character of more than one byte. False for all others.
bool readLead(unsigned char byte, Lead& lead) {
    if (byte >= 0xc2 && byte <= 0xdf) lead = {1, 0x80, byte & 0x1fU};
    if (byte >= 0xe0 && byte <= 0xef) lead = {2, 0x800, byte & 0x0fU};
    if (byte >= 0xf0 && byte <= 0xf4) lead = {3, 0x10000, byte & 0x07U};
    return byte >= 0xc2 && byte <= 0xf4;
}

// The character at a text's beginning, which is not its end. A byte that begins none stands for itself alone.
Character characterAt(const char* text) {
    const auto first = static_cast<unsigned char>(*text);
    if (first < 0x80) return {1, first, true};
    Lead lead{};
    if (!readLead(first, lead)) return {};
    uint32_t number = lead.bits;
    for (size_t i = 1; i <= lead.more; ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if ((byte & 0xc0) != 0x80) return {};  // the NUL at the end is such a byte too
        number = number << 6 | (byte & 0x3fU);
    }
    const bool isSurrogate = number >= 0xd800 && number <= 0xdfff;
    if (number < lead.least || number > 0x10ffff || isSurrogate) return {};
    return {lead.more + 1, number, true};
}

bool isHarmless(const Character& character) {
    const uint32_t number = character.number;
    const bool isControl = number < 0x20 || (number >= 0x7f && number < 0xa0);
    const bool isSeparator = number == 0x2028 || number == 0x2029;
    const bool isDirection = number == 0x061c || number == 0x200e || number == 0x200f ||
                             (number >= 0x202a && number <= 0x202e) || (number >= 0x2066 && number <= 0x2069);
    return character.isWhole && !isControl && !isSeparator && !isDirection;
}

}  // namespace

void appendEscaped(std::string& line, const char* text) {
    if (text == nullptr) return;
    while (*text != '\0') {
        const Character character = characterAt(text);
        if (isHarmless(character)) {
            line.append(text, character.size);
        } else {
            for (size_t i = 0; i < character.size; ++i)
                appendHex(line, static_cast<unsigned char>(text[i]));
        }
        text += character.size;
    }
}

}  // namespace zxbase
