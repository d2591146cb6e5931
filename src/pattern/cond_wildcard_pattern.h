// ZxPolCondWildcardPattern: a pattern for mail addresses, name@domain.
#pragma once

#include <cstddef>

#include "zxpolicy.h"

/**
 * What a rule's condition and a wildcard entry of an address list hold. Name and domain are matched separately, each as
 * a ZxPolWildcardPattern cut at dots; a domain in brackets is matched as one segment.
 *
 * Invariants: name and domain are NUL-terminated; the name has at most 254 characters and none of the quotes that
 * enclosed a word of it; the domain is what followed the first "@" outside quoted sections, at most 255 characters, and
 * empty when there was none. Longer input is cut. Letter case is kept, and ignored in matching.
 *
 * Comparing changes nothing, so one object may be used by several threads at once. Input of more than about 1000
 * characters may take memory: std::bad_alloc passes through.
 */
class ZXPOL_API ZxPolCondWildcardPattern {
public:
    static constexpr size_t maxName = 254;    ///< characters of the name that are kept
    static constexpr size_t maxDomain = 255;  ///< characters of the domain that are kept

    /// Empty name and domain.
    ZxPolCondWildcardPattern();
    /// `pattern` is copied; null counts as empty.
    ZxPolCondWildcardPattern(const char* pattern);
    /// Takes another pattern, as the constructor does.
    ZxPolCondWildcardPattern& operator=(const char* pattern);

    /// The name. Never null; valid as long as the object, until it is assigned to.
    const char* getName() const { return _name; }

    /// The domain; as getName.
    const char* getDomain() const { return _domain; }

    /// Whether the pattern stands for every address: the name is "*", the domain empty or "*".
    bool isSingleWildcard() const;

    /// Whether a text is exactly "*" or "*@*". False for null.
    static bool isSingleWildcard(const char* s);

    /// Whether the pattern matches an address. A single wildcard matches everything, a null address too; any other
    /// pattern does not match null.
    bool operator==(const char* address) const;

    /// Whether the pattern matches everything that the other pattern names literally.
    bool operator==(const ZxPolCondWildcardPattern& other) const;

    /// Whether `pattern` may stand in a condition or a list: a full address, "*", "*@*", and addresses with "*" as the
    /// whole name, as the whole domain, as the first label of the domain, or as all of a bracketed domain.
    static bool isPatternValid(const char* pattern);

    /// Whether the name alone matches; open to tests.
    bool _matchName(const char* name) const;

    /// Whether the domain alone matches; open to tests.
    bool _matchDomain(const char* domain) const;

private:
    void _parseString(const char* s);
    void _parseQuoted(const char* s);
    void _setDomain(const char* domain);

    char _name[maxName + 2];
    char _domain[maxDomain + 1];
};
