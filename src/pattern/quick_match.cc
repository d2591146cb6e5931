#include "pattern/quick_match.h"

#include <algorithm>
#include <cstring>

#include "pattern/ascii.h"

namespace zxpol {
namespace {

// Whether the text has less than 50 segments, so that none is ignored and none more would be.
bool hasFewSegments(const char* text, size_t length) {
    constexpr int limit = 50;
    return length < limit - 1 || std::count(text, text + length, '.') < limit - 1;
}

bool hasBlankEnds(const char* text, size_t length) {
    return length > 0 && (isBlank(text[0]) || isBlank(text[length - 1]));
}

// Whether the text holds nothing that is interpreted: neither stars nor blanks nor line ends.
bool isPlain(const char* text, size_t length) {
    for (size_t i = 0; i < length; ++i) {
        const char c = text[i];
        if (c == '*' || c == ' ' || (c >= '\t' && c <= '\r')) return false;
    }
    return true;
}

bool isSame(const char* a, const char* b, size_t length) {
    for (size_t i = 0; i < length; ++i) {
        if (a[i] != b[i] && lowerCase(a[i]) != lowerCase(b[i])) return false;
    }
    return true;
}

QuickAnswer answer(bool matches) {
    return matches ? QuickAnswer::yes : QuickAnswer::no;
}

}  // namespace

QuickAnswer quickMatch(const char* pattern, const char* subject) {
    if (pattern[0] == '*' && pattern[1] == '\0') return QuickAnswer::yes;
    const size_t patternLength = std::strlen(pattern);
    const size_t length = std::strlen(subject);
    if (!hasFewSegments(pattern, patternLength) || !hasFewSegments(subject, length) || hasBlankEnds(subject, length)) {
        return QuickAnswer::unknown;
    }

    // The text behind a leading "*" is the end of the subject, its dot included; before it there is one segment at
    // least, be it empty.
    const size_t star = pattern[0] == '*' && pattern[1] == '.' ? 1 : 0;
    const size_t plainLength = patternLength - star;
    if (!isPlain(pattern + star, plainLength)) return QuickAnswer::unknown;
    if (star == 0 ? length != plainLength : length < plainLength) return QuickAnswer::no;
    return answer(isSame(pattern + star, subject + length - plainLength, plainLength));
}

}  // namespace zxpol
