// ZxPolRfc2822Checker: the syntax of mail addresses, and the cutting of texts that may hold quoted sections.
#pragma once

#include "zxpolicy.h"

/**
 * Decides whether a text is an acceptable address after the addr-spec grammar of RFC 2822: local part "@" domain, with
 * dot-atoms, quoted strings, domain literals and the obsolete forms. It is more lenient than the grammar in these ways:
 * empty atoms are allowed behind the first one ("a..b", "a."), DEL is allowed in quoted strings and domain literals,
 * and once a backslash stood in a quoted string or a domain literal nearly every byte may follow in it.
 *
 * All operations are static, keep no state and may run in any thread. Texts may be of any length; a null text is never
 * valid. Only copying a text of more than about 1000 characters takes memory: std::bad_alloc passes through.
 */
class ZXPOL_API ZxPolRfc2822Checker {
public:
    /// Character classes: pairs of bytes, the first and the last of a range, closed by 0x80. Bytes from 0x80 on are in
    /// no class.
    static const unsigned char atext[];  ///< in atoms
    static const unsigned char qtext[];  ///< in quoted strings
    static const unsigned char dtext[];  ///< in domain literals
    static const unsigned char text[];   ///< behind a backslash

    /// Whether `address` is a local part, "@" and a domain. The first "@" outside quoted sections divides them.
    static bool checkFormatValidity(const char* address);

    /// Whether `s` is a local part. The empty text is none.
    static bool _checkLocalPartValidity(const char* s);

    /// Whether `s` is a domain. The empty text is none.
    static bool _checkDomainValidity(const char* s);

    /// Atoms with dots between them; the first atom must not be empty, the others may be.
    static bool _is_dot_atom(const char* s);

    /// Text between double quotes. A blank is allowed in it besides qtext.
    static bool _is_quoted_string(const char* s);

    /// Words with dots between them, each one an atom or a quoted string, none of them empty.
    static bool _is_obs_local_part(const char* s);

    /// Text between "[" and "]".
    static bool _is_domain_literal(const char* s);

    /// The same as _is_dot_atom.
    static bool _is_obs_domain(const char* s);

    /// Whether `s` holds only characters of `table` and pairs of a backslash and a character. A backslash frees all the
    /// text behind it, not one character only; then just a line feed directly behind a carriage return is refused.
    static bool _is_xtext_or_quoted_pair(const char* s, const unsigned char* table);

    /// Whether every character of `s` is in `table`; true for the empty text.
    static bool _isAllCharLegal(const char* s, const unsigned char* table);

    /**
     * Cuts `s` in place at each character that is in `separators`, by writing NULs, and returns `s`. The tokens are the
     * `n` NUL-terminated texts that follow each other from `s` on; two separators in a row enclose an empty token.
     *
     * With a `quote` other than 0, separators in a quoted section do not cut. A section opens with a quote at the very
     * beginning or directly behind a separator, and closes with a quote at the very end or directly before a separator;
     * quotes elsewhere are plain text. A quote behind a backslash does not close the section, yet a separator and a
     * quote after it open a new one. Quotes stay in the tokens. A section that never closes does not protect the
     * separators in it.
     *
     * An empty `s` is one empty token without a quote character, and none with one. A null `s` has no tokens; null
     * `separators` are an empty set.
     */
    static char* getTokens(char* s, const char* separators, unsigned int& n, char quote);

    /**
     * Copies `src` to `dst` without the quotes around the words of its local part: `"a.b".c@x` becomes `a.b.c@x`. The
     * text from the first "@" outside quoted sections on is kept as it is. `dst` needs room for `src` with its NUL, and
     * may be `src` itself. Nothing happens when either is null.
     */
    static void stripLocalPartBoundary(char* dst, const char* src);
};
