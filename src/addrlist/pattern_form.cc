#include "addrlist/pattern_form.h"

#include <cstring>

#include "addrlist/folded_text.h"
#include "pattern/ascii.h"
#include "pattern/wildcard_pattern.h"

namespace zxpol {

namespace {

// Whether nothing in a text is interpreted when it is compared as a pattern.
bool isLiteral(std::string_view text) {
    size_t dots = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '*' || (c >= '\t' && c <= '\r')) return false;
        if (c == '.') ++dots;
        if (c != ' ') continue;
        const bool isInside = i > 0 && text[i - 1] != '.' && i + 1 < text.size() && text[i + 1] != '.';
        if (!isInside) return false;
    }
    return dots + 1 < ZxPolWildcardPattern::maxSegments;
}

// Where the text ends that lies before the separator number `segments`.
size_t lengthOfSegments(const char* text, size_t length, size_t segments) {
    if (length < segments) return length;
    for (size_t i = 0; i < length; ++i) {
        if (text[i] == '.' && --segments == 0) return i;
    }
    return length;
}

}  // namespace

PatternForm::PatternForm(const ZxPolCondWildcardPattern& pattern) : name(pattern.getName()) {
    const std::string_view whole = pattern.getDomain();
    isAnyName = name == "*";
    if (isAnyName) name = {};
    if (pattern.isSingleWildcard()) return;
    if (whole == "*") {
        domainForm = DomainForm::any;
    } else if (whole == "[*]") {
        domainForm = DomainForm::bracket;
    } else if (whole.substr(0, 2) == "*.") {
        domainForm = DomainForm::suffix;
        domain = whole.substr(2);
    } else {
        domainForm = DomainForm::literal;
        domain = whole;
    }
    // The dot of a suffix counts for where its blanks are.
    const std::string_view rest = domainForm == DomainForm::suffix ? whole.substr(1) : domain;
    // What is empty matches the empty text alone, of which the blanks count.
    const bool hasEmptyHalf = (name.empty() && !isAnyName) || whole.empty();
    isUnusual = hasEmptyHalf || !isLiteral(name) || !isLiteral(rest);
}

uint64_t PatternForm::hash() const {
    return formHash(number(), hashText(name), hashText(domain));
}

uint64_t formHash(size_t number, uint64_t nameHash, uint64_t domainHash) {
    return joinHashes(nameHash + number, domainHash);
}

SubjectPart::SubjectPart(const char* text) {
    while (isBlank(*text))
        ++text;
    _length = strnlen(text, ZxPolCondWildcardPattern::maxDomain);
    while (_length > 0 && isBlank(text[_length - 1]))
        --_length;
    _isBracketed = _length >= 2 && text[0] == '[' && text[_length - 1] == ']';
    _length = lengthOfSegments(text, _length, ZxPolWildcardPattern::maxSegments);
    std::memcpy(_text, text, _length);
    std::memset(_text + _length, 0, 16);
    for (size_t i = 0; i < _length; i += sizeof(uint64_t)) {
        const uint64_t word = foldWord(loadWord(_text + i));
        std::memcpy(_text + i, &word, sizeof word);
    }
}

uint64_t SubjectPart::hashFrom(size_t begin) const {
    return hashFolded(_text + begin, _length - begin);
}

}  // namespace zxpol
