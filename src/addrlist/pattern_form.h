// What can be looked up of a wildcard pattern, and what an address is looked up by.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "pattern/cond_wildcard_pattern.h"

namespace zxpol {

/*
 * The forms of patterns that can be found by a lookup. The name is "*" or one text, the domain one of four: "*" (any),
 * one text, "*." and a text (any text that ends in the dot and the text), or "[*]" (any text in brackets). Texts are
 * literal when nothing in them is interpreted: no stars, no blanks around a segment, fewer than 50 segments.
 */
enum class DomainForm : uint8_t { any, literal, suffix, bracket };

struct PatternForm {
    explicit PatternForm(const ZxPolCondWildcardPattern& pattern);

    static constexpr size_t count = 8;
    static constexpr size_t numberOf(bool isAnyName, DomainForm domain) {
        return static_cast<size_t>(domain) * 2 + (isAnyName ? 1 : 0);
    }
    size_t number() const { return numberOf(isAnyName, domainForm); }

    // The hash under which the pattern is found. Not for an unusual one.
    uint64_t hash() const;

    bool isUnusual = false;  // none of these forms: to be compared
    bool isAnyName = false;
    DomainForm domainForm = DomainForm::any;
    std::string_view name;    // empty where any name is meant
    std::string_view domain;  // the text, without what stands for any text; behind the dot of a suffix
};

// The hash of a pattern of the form `number` from those of its texts; an empty text's where there is none.
uint64_t formHash(size_t number, uint64_t nameHash, uint64_t domainHash);

// One half of an address as patterns see it: without the blanks around it, its first 50 segments, lower-cased.
class SubjectPart {
public:
    explicit SubjectPart(const char* text);

    std::string_view text() const { return {_text, _length}; }
    uint64_t hashFrom(size_t begin) const;
    bool isBracketed() const { return _isBracketed; }

private:
    char _text[ZxPolCondWildcardPattern::maxDomain + 1 + 16];
    size_t _length;
    bool _isBracketed;
};

}  // namespace zxpol
