#include "log_text.h"

namespace zxbase {
namespace {

void appendHex(std::string& line, unsigned char byte) {
    static const char digits[] = "0123456789abcdef";
    line += "\\x";
    line += digits[byte >> 4];
    line += digits[byte & 0x0f];
}

bool isAsciiControl(unsigned char byte) {
    return byte < 0x20 || byte == 0x7f;
}

// Whether the bytes are the UTF-8 form of U+0080 to U+009F.
bool isC1Control(unsigned char first, unsigned char second) {
    return first == 0xc2 && second >= 0x80 && second <= 0x9f;
}

}  // namespace

void appendEscaped(std::string& line, const char* text) {
    if (text == nullptr) return;
    for (; *text != '\0'; ++text) {
        const auto byte = static_cast<unsigned char>(*text);
        const auto next = static_cast<unsigned char>(text[1]);
        if (isAsciiControl(byte)) {
            appendHex(line, byte);
        } else if (isC1Control(byte, next)) {
            appendHex(line, byte);
            appendHex(line, next);
            ++text;
        } else {
            line += *text;
        }
    }
}

}  // namespace zxbase
