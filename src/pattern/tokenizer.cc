// ZxPolRfc2822Checker::getTokens: cutting a text in place at separators outside quoted sections.
#include <cstring>

#include "pattern/rfc2822_checker.h"

namespace {

class Tokenizer {
public:
    Tokenizer(char* begin, const char* separators)
        : _begin(begin), _end(begin + std::strlen(begin)), _separators(separators), _tokenStart(begin) {}

    unsigned int cutPlain() {
        cut(_begin, _end);
        return _count + 1;
    }

    unsigned int cutOutsideQuotes(char quote) {
        for (char* at = find(quote, _begin); at != nullptr; at = find(quote, at + 1))
            visitQuote(at);
        if (_tokenStart != _end) {
            cut(_tokenStart, _end);
            ++_count;
        }
        return _count;
    }

private:
    char* find(char c, char* from) const {
        return static_cast<char*>(std::memchr(from, c, static_cast<size_t>(_end - from)));
    }

    bool isSeparator(char c) const { return c != '\0' && std::strchr(_separators, c) != nullptr; }

    char* findSeparator(char* from, char* end) const {
        if (_separators[0] == '\0') return nullptr;
        if (_separators[1] == '\0') {
            return static_cast<char*>(std::memchr(from, _separators[0], static_cast<size_t>(end - from)));
        }
        for (; from < end; ++from) {
            if (isSeparator(*from)) return from;
        }
        return nullptr;
    }

    // Ends a token at every separator between `from` and `end`.
    void cut(char* from, char* end) {
        while (from < end && (from = findSeparator(from, end)) != nullptr) {
            *from++ = '\0';
            ++_count;
        }
    }

    // Decides what the quote at `at` is: an opening one, a closing one, or plain text.
    void visitQuote(char* at) {
        if (at == _begin) {
            _inside = true;
        } else if (_inside && at + 1 == _end) {
            closeAtEnd();
        } else if ((!_inside || _escaped) && isSeparator(at[-1])) {
            openBehindSeparator(at);
        } else if (_inside && isSeparator(at[1])) {
            closeBeforeSeparator(at);
        }
    }

    // The last quote of all: no flag is looked at any more.
    void closeAtEnd() {
        ++_count;
        _tokenStart = _end;
    }

    // The text between the last token and the separator before the quote is cut now that it is known to be unquoted.
    void openBehindSeparator(char* at) {
        _inside = true;
        _escaped = false;
        at[-1] = '\0';
        cut(_tokenStart, at - 1);
        ++_count;
        _tokenStart = at;
    }

    // A quote behind a backslash may close the section or not: what follows decides.
    void closeBeforeSeparator(char* at) {
        if (at[-1] == '\\') {
            _escaped = true;
        } else {
            _inside = _escaped = false;
        }
        _tokenStart = at + 1;
    }

    char* const _begin;
    char* const _end;
    const char* const _separators;
    char* _tokenStart;
    bool _inside = false;
    bool _escaped = false;
    unsigned int _count = 0;
};

}  // namespace

char* ZxPolRfc2822Checker::getTokens(char* s, const char* separators, unsigned int& n, char quote) {
    n = 0;
    if (s == nullptr) return nullptr;
    Tokenizer tokenizer(s, separators != nullptr ? separators : "");
    n = quote == '\0' ? tokenizer.cutPlain() : tokenizer.cutOutsideQuotes(quote);
    return s;
}
