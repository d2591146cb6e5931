// ZxPolWildcardPattern: one text against a pattern in which "*" stands for unknown text.
#pragma once

#include <cstddef>

#include "zxpolicy.h"

/**
 * One text against a pattern in which "*" stands for unknown text.
 *
 * Pattern and subject are cut into segments at separator characters and compared segment by segment, without regard to
 * ASCII case. A segment that is "*" alone stands for one or more whole segments; a "*" inside a segment stands for a
 * run of characters of that segment. At the beginning of a segment "*" may stand for nothing, at its end it stands for
 * at least one character: "*ab" matches "ab", "ab*" does not.
 *
 * Texts of more than 50 segments count as their first 50. Leading and trailing blanks, tabs and line feeds of pattern
 * and subject do not count. Bad input never fails loudly: a null pattern has no segments, a null subject matches
 * nothing.
 *
 * Invariants: the first segmentCount() segments are lower-cased, NUL-terminated and lie in the object's own buffer; the
 * others are unused. The object does not change but by assignment, so comparisons may run in several threads at once.
 * Texts longer than usual take memory: std::bad_alloc passes through, and leaves an assigned object as it was.
 */
class ZXPOL_API ZxPolWildcardPattern {
public:
    static constexpr unsigned int maxSegments = 50;  ///< segments of a text that count
    static constexpr size_t maxSeparators = 29;      ///< separator characters that count

    /// `separators`: the characters that cut, the first 29 of them; null or empty, the pattern is one segment.
    /// `quoteChar`: sections quoted with it are not cut (see ZxPolRfc2822Checker::getTokens); 0, no quoting. All is
    /// copied.
    ZxPolWildcardPattern(const char* pattern, const char* separators, char quoteChar);
    ~ZxPolWildcardPattern();
    ZxPolWildcardPattern(const ZxPolWildcardPattern&) = delete;
    ZxPolWildcardPattern& operator=(const ZxPolWildcardPattern&) = delete;

    /// Takes another pattern. The separators are forgotten: the new pattern is one segment. The quote character stays.
    ZxPolWildcardPattern& operator=(const char* pattern);

    /// Whether the subject matches. An empty pattern matches the empty subject only, a single wildcard every subject;
    /// any other pattern needs at least as many subject segments as it has itself.
    bool operator==(const char* subject) const;

    /// Whether the pattern is one segment and that one a wildcard.
    bool isSingleWildcard() const;

    /// Whether a segment stands for whole segments: it consists of "*", blanks, tabs and line ends only, and not just
    /// of what trim takes away. False for null.
    static bool isSingleWildcard(const char* segment);

    /// Copies `src` without leading and trailing blanks, tabs and line feeds. `dst` needs room for `src` with its NUL
    /// and may be `src` itself. Returns `dst`, or null when either is null.
    static char* trim(char* dst, const char* src);

    /// The number of segments of the pattern.
    unsigned int segmentCount() const { return _segmentCount; }
    /// The segment `index`, or null from segmentCount() on.
    const char* segment(unsigned int index) const { return index < _segmentCount ? _segments[index] : nullptr; }
    /// The separator characters; empty after an assignment.
    const char* separators() const { return _separators; }
    /// The quote character; 0 for none.
    char quoteChar() const { return _quoteChar; }

    // The steps of a comparison, open to tests.

    /// Trims `src` into `buf`, cuts `buf` and stores the lower-cased segments in `segs`. `count`: the room in `segs` on
    /// entry, the segments stored on return. `quote` 0xFF and null `seps` stand for the object's own. Nothing happens
    /// when `src`, `buf` or `segs` is null.
    void _parseString(const char* src, char* buf, char** segs, unsigned int& count, char quote, const char* seps) const;

    /// As ZxPolRfc2822Checker::getTokens.
    static char* _getTokens(char* s, const char* seps, unsigned int& n, char quote);

    /// The smallest distance at which all segments of `run` match subject segments in a row, or -1.
    static int _findSegInSeg(const char* const* subject, unsigned int subjectCount, const char* const* run,
                             unsigned int runCount);

    /// Whether one segment of a pattern matches one segment of a subject. False when either is null.
    static bool _partialMatch(const char* patternSegment, const char* subjectSegment);

private:
    static constexpr size_t shortPattern = 256;

    void _initial();
    char* _newBuffer(const char* pattern);
    void _freeBuffer(char* buffer);
    void _parsePattern(const char* pattern);
    unsigned int _nextWildcard(unsigned int from) const;
    bool _matchForward(const char* const* subject, unsigned int count) const;
    bool _matchBackward(const char* const* subject, unsigned int count) const;

    char* _buffer;
    char* _segments[maxSegments];
    char _separators[maxSeparators + 1];
    char _quoteChar;
    unsigned int _segmentCount;
    char _shortBuffer[shortPattern];  // what _buffer points to for patterns of the usual length
};
