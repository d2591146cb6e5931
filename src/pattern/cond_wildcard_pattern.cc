#include "pattern/cond_wildcard_pattern.h"

#include <algorithm>
#include <cstring>

#include "pattern/address_split.h"
#include "pattern/quick_match.h"
#include "pattern/rfc2822_checker.h"
#include "pattern/wildcard_pattern.h"

namespace {

bool equals(const char* a, const char* b) {
    return std::strcmp(a, b) == 0;
}

bool hasStar(const char* s) {
    return std::strchr(s, '*') != nullptr;
}

// Whether the stars of a name are where a valid pattern may have them.
bool isNameAllowed(const char* name) {
    return !hasStar(name) || equals(name, "*") || equals(name, "\"*\"");
}

bool isDomainAllowed(const char* domain) {
    if (!hasStar(domain) || ZxPolCondWildcardPattern::isSingleWildcard(domain)) return true;
    const bool leadingLabel = domain[0] == '*' && domain[1] == '.' && !hasStar(domain + 2);
    return leadingLabel || equals(domain, "[*]");
}

// Marks the characters of atoms but the star, and the dot between them.
class PlainCharacters {
public:
    PlainCharacters() {
        for (int c = 1; c < 0x80; ++c) {
            const char text[] = {static_cast<char>(c), '\0'};
            _isPlain[c] =
                c == '.' || (c != '*' && ZxPolRfc2822Checker::_isAllCharLegal(text, ZxPolRfc2822Checker::atext));
        }
    }

    // The end of the plain characters from `s` on.
    const char* skip(const char* s) const {
        while (_isPlain[static_cast<unsigned char>(*s)])
            ++s;
        return s;
    }

private:
    bool _isPlain[256] = {};
};

// Whether `s` is atoms with dots between them on both sides of an "@", and has no wildcard: what addresses nearly
// always are. False says nothing.
bool isPlainAddress(const char* s) {
    static const PlainCharacters plain;
    const char* at = plain.skip(s);
    if (*at != '@' || at == s || *s == '.') return false;
    const char* end = plain.skip(at + 1);
    return *end == '\0' && end != at + 1 && at[1] != '.';
}

bool matchPart(const char* pattern, const char* separators, const char* subject) {
    if (subject == nullptr) return false;
    const zxpol::QuickAnswer quick = zxpol::quickMatch(pattern, subject);
    if (quick != zxpol::QuickAnswer::unknown) return quick == zxpol::QuickAnswer::yes;
    return ZxPolWildcardPattern(pattern, separators, '\0') == subject;
}

}  // namespace

ZxPolCondWildcardPattern::ZxPolCondWildcardPattern() {
    _name[0] = '\0';
    _domain[0] = '\0';
}

ZxPolCondWildcardPattern::ZxPolCondWildcardPattern(const char* pattern) {
    _parseString(pattern);
}

ZxPolCondWildcardPattern& ZxPolCondWildcardPattern::operator=(const char* pattern) {
    _parseString(pattern);
    return *this;
}

void ZxPolCondWildcardPattern::_parseString(const char* s) {
    if (s == nullptr) s = "";
    // Nearly always the first "@" comes before any quote, and there is nothing to interpret.
    size_t length = 0;
    while (length < maxName && s[length] != '@' && s[length] != '"' && s[length] != '\0')
        ++length;
    const bool divided = s[length] == '@';
    if (!divided && s[length] != '\0') return _parseQuoted(s);
    // The text may be this object's own name or domain; in this order nothing is overwritten too early.
    std::memmove(_name, s, length);
    _name[length] = '\0';
    _setDomain(divided ? s + length + 1 : "");
}

// The general case: a local part with quotes, or a very long one.
void ZxPolCondWildcardPattern::_parseQuoted(const char* s) {
    const char* at = zxpol::findUnquotedAt(s);
    const size_t length = std::min(at != nullptr ? static_cast<size_t>(at - s) : std::strlen(s), maxName);
    // The "@" marks the end of the local part while its quotes are taken off.
    char name[sizeof(_name)];
    std::memcpy(name, s, length);
    std::memcpy(name + length, "@", 2);
    _setDomain(at != nullptr ? at + 1 : "");
    ZxPolRfc2822Checker::stripLocalPartBoundary(_name, name);
    _name[std::strlen(_name) - 1] = '\0';
}

void ZxPolCondWildcardPattern::_setDomain(const char* domain) {
    const size_t length = strnlen(domain, maxDomain);
    std::memmove(_domain, domain, length);
    _domain[length] = '\0';
}

bool ZxPolCondWildcardPattern::isSingleWildcard() const {
    return equals(_name, "*") && (_domain[0] == '\0' || equals(_domain, "*"));
}

bool ZxPolCondWildcardPattern::isSingleWildcard(const char* s) {
    return s != nullptr && (equals(s, "*") || equals(s, "*@*"));
}

bool ZxPolCondWildcardPattern::operator==(const char* address) const {
    if (isSingleWildcard()) return true;
    return address != nullptr && *this == ZxPolCondWildcardPattern(address);
}

bool ZxPolCondWildcardPattern::operator==(const ZxPolCondWildcardPattern& other) const {
    return isSingleWildcard() || (_matchName(other._name) && _matchDomain(other._domain));
}

bool ZxPolCondWildcardPattern::_matchName(const char* name) const {
    return matchPart(_name, ".", name);
}

bool ZxPolCondWildcardPattern::_matchDomain(const char* domain) const {
    const size_t length = std::strlen(_domain);
    const bool literal = length >= 2 && _domain[0] == '[' && _domain[length - 1] == ']';
    return matchPart(_domain, literal ? "" : ".", domain);
}

bool ZxPolCondWildcardPattern::isPatternValid(const char* pattern) {
    if (pattern == nullptr) return false;
    if (isPlainAddress(pattern)) return true;
    if (isSingleWildcard(pattern)) return true;
    if (!ZxPolRfc2822Checker::checkFormatValidity(pattern)) return false;
    const ZxPolCondWildcardPattern parsed(pattern);
    return isNameAllowed(parsed._name) && isDomainAllowed(parsed._domain);
}
