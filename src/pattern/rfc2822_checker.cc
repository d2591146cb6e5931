#include "pattern/rfc2822_checker.h"

#include <cstring>

#include "pattern/address_split.h"
#include "pattern/scratch_text.h"

using zxpol::ScratchText;

namespace {

constexpr unsigned char tableEnd = 0x80;

bool isInTable(char c, const unsigned char* table) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= tableEnd) return false;
    for (; table[0] != tableEnd; table += 2) {
        if (table[0] <= byte && byte <= table[1]) return true;
    }
    return false;
}

// qtext and the blank.
constexpr unsigned char quotedText[] = {0x01, 0x08, 0x0b, 0x0c, 0x0e, 0x21, 0x23, 0x5b, 0x5d, 0x7f, tableEnd};

// Whether `s` is at least an opening and a closing character with legal text between them.
bool isEnclosed(const char* s, char open, char close, const unsigned char* table) {
    if (s == nullptr) return false;
    const size_t length = std::strlen(s);
    if (length < 2 || s[0] != open || s[length - 1] != close) return false;
    ScratchText content(s + 1, length - 2);
    return ZxPolRfc2822Checker::_is_xtext_or_quoted_pair(content.data(), table);
}

}  // namespace

const unsigned char ZxPolRfc2822Checker::atext[] = {'!', '!', '#', '\'', '*', '+', '-', '-', '/', '/',     '0',
                                                    '9', '=', '=', '?',  '?', 'A', 'Z', '^', '~', tableEnd};
const unsigned char ZxPolRfc2822Checker::qtext[] = {0x01, 0x08, 0x0b, 0x0c, 0x0e, 0x1f,    0x21,
                                                    0x21, 0x23, 0x5b, 0x5d, 0x7f, tableEnd};
const unsigned char ZxPolRfc2822Checker::dtext[] = {0x01, 0x08, 0x0b, 0x0c, 0x0e,    0x1f,
                                                    0x21, 0x5a, 0x5e, 0x7f, tableEnd};
const unsigned char ZxPolRfc2822Checker::text[] = {0x00, 0x09, 0x0b, 0x0c, 0x0e, 0x7f, tableEnd};

bool ZxPolRfc2822Checker::checkFormatValidity(const char* address) {
    if (address == nullptr) return false;
    const char* at = zxpol::findUnquotedAt(address);
    if (at == nullptr) return false;
    ScratchText local(address, static_cast<size_t>(at - address));
    return _checkLocalPartValidity(local.data()) && _checkDomainValidity(at + 1);
}

bool ZxPolRfc2822Checker::_checkLocalPartValidity(const char* s) {
    if (s == nullptr || *s == '\0') return false;
    return _is_dot_atom(s) || _is_quoted_string(s) || _is_obs_local_part(s);
}

bool ZxPolRfc2822Checker::_checkDomainValidity(const char* s) {
    if (s == nullptr || *s == '\0') return false;
    return _is_dot_atom(s) || _is_domain_literal(s) || _is_obs_domain(s);
}

bool ZxPolRfc2822Checker::_is_dot_atom(const char* s) {
    if (s == nullptr || *s == '\0' || *s == '.') return false;
    for (; *s != '\0'; ++s) {
        if (*s != '.' && !isInTable(*s, atext)) return false;
    }
    return true;
}

bool ZxPolRfc2822Checker::_is_obs_domain(const char* s) {
    return _is_dot_atom(s);
}

bool ZxPolRfc2822Checker::_is_obs_local_part(const char* s) {
    if (s == nullptr) return false;
    ScratchText copy(s, std::strlen(s));
    unsigned int count = 0;
    const char* word = getTokens(copy.data(), ".", count, '"');
    for (unsigned int i = 0; i < count; ++i) {
        if (*word == '\0' || !(_isAllCharLegal(word, atext) || _is_quoted_string(word))) return false;
        word += std::strlen(word) + 1;
    }
    return count > 0;
}

bool ZxPolRfc2822Checker::_is_quoted_string(const char* s) {
    return isEnclosed(s, '"', '"', quotedText);
}

bool ZxPolRfc2822Checker::_is_domain_literal(const char* s) {
    return isEnclosed(s, '[', ']', dtext);
}

bool ZxPolRfc2822Checker::_isAllCharLegal(const char* s, const unsigned char* table) {
    if (s == nullptr || table == nullptr) return false;
    for (; *s != '\0'; ++s) {
        if (!isInTable(*s, table)) return false;
    }
    return true;
}

bool ZxPolRfc2822Checker::_is_xtext_or_quoted_pair(const char* s, const unsigned char* table) {
    if (s == nullptr || table == nullptr) return false;
    bool escaped = false;
    bool afterCR = false;
    for (; *s != '\0'; ++s) {
        if (*s == '\\') {
            afterCR = false;
            escaped = true;
        } else if (isInTable(*s, table)) {
            // Every class lies within text, so a backslash stays in force.
            afterCR = false;
            if (!isInTable(*s, text)) escaped = false;
        } else if (!escaped || (*s == '\n' && afterCR)) {
            return false;
        } else if (*s == '\r') {
            afterCR = true;
        } else if (isInTable(*s, text)) {
            afterCR = false;
        }
    }
    return true;
}
