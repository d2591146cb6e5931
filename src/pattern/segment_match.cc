// ZxPolWildcardPattern::_partialMatch: one segment against one segment.
#include <cstring>

#include "pattern/ascii.h"
#include "pattern/scratch_text.h"
#include "pattern/segments.h"
#include "pattern/wildcard_pattern.h"
#include "zxbase.h"

namespace {

using zxpol::isBlank;
using zxpol::lowerCase;

// Whether the texts are the same and hold neither "*" nor blanks at the end: then nothing else needs to be looked at.
bool isSamePlainText(const char* patternSegment, const char* subject) {
    const char* p = patternSegment;
    for (; *p != '\0' && *p != '*' && lowerCase(*p) == lowerCase(*subject); ++p)
        ++subject;
    return *p == '\0' && *subject == '\0' && !isBlank(patternSegment[0]) && !isBlank(p[-1]);
}

// A pattern segment without "*", which is compared without the blanks around it.
bool equalsLiteral(const char* patternSegment, const char* subject) {
    while (isBlank(*patternSegment))
        ++patternSegment;
    size_t length = std::strlen(patternSegment);
    while (length > 0 && isBlank(patternSegment[length - 1]))
        --length;
    return kr_strnicmp(patternSegment, subject, length) == 0 && subject[length] == '\0';
}

// The texts between the stars of a pattern segment.
struct Pieces {
    char* texts[ZxPolWildcardPattern::maxSegments];
    unsigned int count;

    // Cuts `buffer`, which has room for the segment, and keeps pointing into it.
    Pieces(const char* patternSegment, char* buffer)
        : count(zxpol::cutSegments(patternSegment, buffer, texts, ZxPolWildcardPattern::maxSegments, '\0', "*")) {}
};

// Where the subject goes on behind the piece `index`, or null when the piece is not there.
const char* skipPiece(const Pieces& pieces, unsigned int index, const char* subject) {
    const char* piece = pieces.texts[index];
    const size_t length = std::strlen(piece);
    if (length == 0) return subject;
    if (index == 0) return kr_strnicmp(piece, subject, length) == 0 ? subject + length : nullptr;
    if (index + 1 == pieces.count) {
        const size_t left = std::strlen(subject);
        return length <= left && kr_stricmp(piece, subject + left - length) == 0 ? subject + left : nullptr;
    }
    const char* found = std::strstr(subject, piece);
    return found != nullptr ? found + length : nullptr;
}

}  // namespace

bool ZxPolWildcardPattern::_partialMatch(const char* patternSegment, const char* subjectSegment) {
    if (patternSegment == nullptr || subjectSegment == nullptr) return false;
    if (*patternSegment == '\0') return *subjectSegment == '\0';
    if (isSamePlainText(patternSegment, subjectSegment)) return true;
    if (std::strchr(patternSegment, '*') == nullptr) return equalsLiteral(patternSegment, subjectSegment);

    zxpol::ScratchText buffer(std::strlen(patternSegment) + 1);
    const Pieces pieces(patternSegment, buffer.data());
    unsigned int visited = 0;
    // Nothing is visited any more once the subject is used up: a "*" at the end needs a character of its own.
    for (; visited < pieces.count && *subjectSegment != '\0'; ++visited) {
        subjectSegment = skipPiece(pieces, visited, subjectSegment);
        if (subjectSegment == nullptr) return false;
    }
    const bool endsInStar = *pieces.texts[pieces.count - 1] == '\0';
    return visited == pieces.count && (*subjectSegment == '\0' || endsInStar);
}
