#include "policy/yaml_text.h"

#include <yaml-cpp/binary.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>

#include "output/text.h"

namespace tool {

namespace {

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isPlainCharacter(char c) {
    return isLetter(c) || (c >= '0' && c <= '9') || c == '_' || c == '.' || c == '/' || c == '-' || c == '@';
}

// Words that some reader or other takes for a truth value or for nothing.
bool isReserved(std::string_view text) {
    constexpr std::array<const char*, 9> kWords{"true", "false", "yes", "no", "on", "off", "null", "y", "n"};
    const std::string lower = lowerCase(text);
    return std::find(kWords.begin(), kWords.end(), lower) != kWords.end();
}

// Letters first, then letters, digits and a few signs, with single blanks in between.
bool isPlainText(std::string_view text) {
    if (text.empty() || !isLetter(text.front()) || text.back() == ' ' || isReserved(text)) return false;
    for (size_t i = 0; i < text.size(); ++i) {
        const bool isSingleBlank = text[i] == ' ' && text[i + 1] != ' ';
        if (!isPlainCharacter(text[i]) && !isSingleBlank) return false;
        if (text[i] == ' ' && text[i + 1] == '-') return false;
    }
    return true;
}

bool needsEscape(uint32_t codePoint) {
    return !isFitForLine(codePoint) || codePoint == 0xfeff || (codePoint & 0xfffeu) == 0xfffeu;
}

std::string escape(uint32_t codePoint) {
    switch (codePoint) {
        case '\n':
            return "\\n";
        case '\t':
            return "\\t";
        case '\r':
            return "\\r";
        default:
            break;
    }
    char text[16];
    const auto number = static_cast<unsigned int>(codePoint);
    if (codePoint < 0x100)
        std::snprintf(text, sizeof text, "\\x%02X", number);
    else if (codePoint < 0x10000)
        std::snprintf(text, sizeof text, "\\u%04X", number);
    else
        std::snprintf(text, sizeof text, "\\U%08X", number);
    return text;
}

std::string binary(std::string_view text) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    return "!!binary \"" + YAML::EncodeBase64(bytes, text.size()) + "\"";
}

}  // namespace

std::string yamlQuoted(std::string_view text) {
    std::string out = "\"";
    uint32_t codePoint = 0;
    for (size_t position = 0; position < text.size();) {
        const size_t begin = position;
        if (!nextCodePoint(text, position, codePoint)) return binary(text);
        if (codePoint == '"' || codePoint == '\\')
            out.append(1, '\\').append(1, static_cast<char>(codePoint));
        else if (needsEscape(codePoint))
            out += escape(codePoint);
        else
            out += text.substr(begin, position - begin);
    }
    return out + '"';
}

std::string yamlText(std::string_view text) {
    return isPlainText(text) ? std::string(text) : yamlQuoted(text);
}

}  // namespace tool
