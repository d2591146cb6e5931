// Patterns and subjects as segments, and the comparison of the two.
#include "pattern/wildcard_pattern.h"

#include <algorithm>
#include <cstring>

#include "pattern/ascii.h"
#include "pattern/rfc2822_checker.h"
#include "pattern/scratch_text.h"
#include "pattern/segments.h"

namespace {

constexpr char ownQuote = static_cast<char>(0xFF);

}  // namespace

ZxPolWildcardPattern::ZxPolWildcardPattern(const char* pattern, const char* separators, char quoteChar)
    : _quoteChar(quoteChar) {
    _initial();
    if (separators != nullptr) std::memcpy(_separators, separators, strnlen(separators, maxSeparators));
    _buffer = _newBuffer(pattern);
    _parsePattern(pattern);
}

ZxPolWildcardPattern::~ZxPolWildcardPattern() {
    _freeBuffer(_buffer);
}

ZxPolWildcardPattern& ZxPolWildcardPattern::operator=(const char* pattern) {
    char* old = _buffer;
    // The pattern may lie in the old buffer, so that one is freed last.
    _buffer = _newBuffer(pattern);
    _initial();
    _parsePattern(pattern);
    if (old != _buffer) _freeBuffer(old);
    return *this;
}

void ZxPolWildcardPattern::_initial() {
    std::memset(_separators, 0, sizeof(_separators));
    _segmentCount = 0;
}

// The memory for a pattern; nothing of the object changes.
char* ZxPolWildcardPattern::_newBuffer(const char* pattern) {
    const size_t size = pattern != nullptr ? std::strlen(pattern) + 1 : 1;
    return size <= sizeof(_shortBuffer) ? _shortBuffer : new char[size];
}

void ZxPolWildcardPattern::_freeBuffer(char* buffer) {
    if (buffer != _shortBuffer) delete[] buffer;
}

void ZxPolWildcardPattern::_parsePattern(const char* pattern) {
    _segmentCount = pattern != nullptr ? maxSegments : 0;
    _parseString(pattern, _buffer, _segments, _segmentCount, ownQuote, nullptr);
}

void ZxPolWildcardPattern::_parseString(const char* src, char* buf, char** segs, unsigned int& count, char quote,
                                        const char* seps) const {
    if (src == nullptr || buf == nullptr || segs == nullptr) return;
    count = zxpol::cutSegments(src, buf, segs, count, quote == ownQuote ? _quoteChar : quote,
                               seps != nullptr ? seps : _separators);
}

char* ZxPolWildcardPattern::_getTokens(char* s, const char* seps, unsigned int& n, char quote) {
    return ZxPolRfc2822Checker::getTokens(s, seps, n, quote);
}

char* ZxPolWildcardPattern::trim(char* dst, const char* src) {
    if (dst == nullptr || src == nullptr) return nullptr;
    return zxpol::trimText(dst, src);
}

bool ZxPolWildcardPattern::isSingleWildcard() const {
    return _segmentCount == 1 && isSingleWildcard(_segments[0]);
}

bool ZxPolWildcardPattern::isSingleWildcard(const char* segment) {
    if (segment == nullptr) return false;
    bool moreThanBlanks = false;
    for (; *segment != '\0'; ++segment) {
        if (*segment == '*' || *segment == '\r') {
            moreThanBlanks = true;
        } else if (!zxpol::isBlank(*segment)) {
            return false;
        }
    }
    return moreThanBlanks;
}

bool ZxPolWildcardPattern::operator==(const char* subject) const {
    if (subject == nullptr) return false;
    if (_segmentCount == 0) return *subject == '\0';
    if (isSingleWildcard()) return true;
    zxpol::ScratchText scratch(std::strlen(subject) + 1);
    char* segments[maxSegments];
    unsigned int count = maxSegments;
    _parseString(subject, scratch.data(), segments, count, ownQuote, nullptr);
    return _segmentCount <= count && _matchForward(segments, count);
}

// The next wildcard segment, or the number of segments when there is none.
unsigned int ZxPolWildcardPattern::_nextWildcard(unsigned int from) const {
    while (from < _segmentCount && !isSingleWildcard(_segments[from]))
        ++from;
    return from;
}

bool ZxPolWildcardPattern::_matchForward(const char* const* subject, unsigned int count) const {
    unsigned int i = 0;
    unsigned int j = 0;
    bool afterWildcard = false;
    while (i < _segmentCount && j < count) {
        if (isSingleWildcard(_segments[i])) {
            // One segment for now; the search for what follows the wildcard skips the others.
            ++i;
            ++j;
            afterWildcard = true;
        } else if (afterWildcard) {
            const unsigned int next = _nextWildcard(i);
            // The last run of literal segments is anchored at the end of the subject.
            if (next == _segmentCount) return _matchBackward(subject, count);
            const int distance = _findSegInSeg(subject + j, count - j, _segments + i, next - i);
            if (distance < 0) return false;
            j += next - i + static_cast<unsigned int>(distance);
            i = next;
        } else {
            if (!_partialMatch(_segments[i], subject[j])) return false;
            ++i;
            ++j;
        }
    }
    return i == _segmentCount && (j == count || isSingleWildcard(_segments[_segmentCount - 1]));
}

// Compares the segments behind the last wildcard, from the end on. Which segments of the subject the forward scan used
// already does not matter.
bool ZxPolWildcardPattern::_matchBackward(const char* const* subject, unsigned int count) const {
    unsigned int i = _segmentCount;
    unsigned int j = count;
    for (; i > 0 && j > 0 && !isSingleWildcard(_segments[i - 1]); --i, --j) {
        if (!_partialMatch(_segments[i - 1], subject[j - 1])) return false;
    }
    if (i > 0) return isSingleWildcard(_segments[i - 1]);
    return j == 0 || isSingleWildcard(_segments[0]);
}

int ZxPolWildcardPattern::_findSegInSeg(const char* const* subject, unsigned int subjectCount, const char* const* run,
                                        unsigned int runCount) {
    if (subject == nullptr || run == nullptr) return -1;
    for (unsigned int distance = 0; distance < subjectCount && subjectCount - distance >= runCount; ++distance) {
        unsigned int matched = 0;
        while (matched < runCount && _partialMatch(run[matched], subject[distance + matched]))
            ++matched;
        if (matched == runCount) return static_cast<int>(distance);
    }
    return -1;
}
