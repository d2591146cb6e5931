// A slow and obvious wildcard matcher, to compare the real one with. It knows nothing of the real one's code: texts are
// strings, segments are vectors, and each step is spelled out.
#pragma once

#include <string>
#include <vector>

namespace oracle {

using Segments = std::vector<std::string>;

inline std::string lower(std::string text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return text;
}

inline std::string trim(const std::string& text) {
    const size_t first = text.find_first_not_of(" \t\n");
    if (first == std::string::npos) return "";
    return text.substr(first, text.find_last_not_of(" \t\n") - first + 1);
}

inline bool contains(const std::string& set, char c) {
    return set.find(c) != std::string::npos;
}

// Which characters of `text` end a token.
inline std::vector<bool> cutMarks(const std::string& text, const std::string& separators, char quote) {
    std::vector<bool> marks(text.size(), false);
    const auto markRange = [&](size_t from, size_t to) {
        for (size_t i = from; i < to; ++i) {
            if (contains(separators, text[i])) marks[i] = true;
        }
    };
    if (quote == '\0') {
        markRange(0, text.size());
        return marks;
    }
    size_t tokenStart = 0;
    bool inside = false;
    bool escaped = false;
    for (size_t at = 0; at < text.size(); ++at) {
        if (text[at] != quote) continue;
        const bool first = at == 0;
        const bool last = at == text.size() - 1;
        const bool separatorBefore = !first && contains(separators, text[at - 1]);
        const bool separatorAfter = !last && contains(separators, text[at + 1]);
        if (first) {
            inside = true;
        } else if (inside && last) {
            inside = escaped = false;
            tokenStart = text.size();
        } else if (separatorBefore && (!inside || escaped)) {
            inside = true;
            escaped = false;
            marks[at - 1] = true;
            markRange(tokenStart, at - 1);
            tokenStart = at;
        } else if (inside && separatorAfter) {
            if (text[at - 1] == '\\') {
                escaped = true;
            } else {
                inside = escaped = false;
            }
            tokenStart = at + 1;
        }
    }
    markRange(tokenStart, text.size());
    return marks;
}

inline Segments tokens(const std::string& text, const std::string& separators, char quote) {
    if (text.empty() && quote != '\0') return {};
    const std::vector<bool> marks = cutMarks(text, separators, quote);
    Segments result(1);
    for (size_t i = 0; i < text.size(); ++i) {
        if (marks[i]) {
            result.emplace_back();
        } else {
            result.back() += text[i];
        }
    }
    return result;
}

// The first 50 segments of a text, in lower case.
inline Segments parse(const std::string& text, const std::string& separators, char quote) {
    const std::string trimmed = trim(text);
    if (trimmed.empty()) return {};
    Segments result = tokens(trimmed, separators, quote);
    if (result.size() > 50) result.resize(50);
    for (std::string& segment : result)
        segment = lower(segment);
    return result;
}

inline bool isWildcard(const std::string& segment) {
    return !trim(segment).empty() && segment.find_first_not_of("* \t\n\r") == std::string::npos;
}

// One segment of a pattern against one of a subject, piece by piece between the stars.
inline bool segmentMatches(const std::string& pattern, const std::string& subject) {
    if (pattern.empty()) return subject.empty();
    const Segments pieces = parse(pattern, "*", '\0');
    size_t position = 0;
    size_t visited = 0;
    for (size_t i = 0; i < pieces.size(); ++i) {
        if (position == subject.size()) break;
        ++visited;
        const std::string& piece = pieces[i];
        if (piece.empty()) continue;
        if (i == 0) {
            if (lower(subject.substr(position, piece.size())) != piece) return false;
            position += piece.size();
        } else if (i == pieces.size() - 1) {
            if (piece.size() > subject.size() - position) return false;
            if (lower(subject.substr(subject.size() - piece.size())) != piece) return false;
            position = subject.size();
        } else {
            const size_t found = subject.find(piece, position);
            if (found == std::string::npos) return false;
            position = found + piece.size();
        }
    }
    if (visited < pieces.size()) return false;
    return position == subject.size() || (!pieces.empty() && pieces.back().empty());
}

inline bool runMatchesAt(const Segments& run, const Segments& subject, size_t at) {
    for (size_t t = 0; t < run.size(); ++t) {
        if (!segmentMatches(run[t], subject[at + t])) return false;
    }
    return true;
}

inline bool backwardMatches(const Segments& pattern, const Segments& subject) {
    int p = static_cast<int>(pattern.size()) - 1;
    int s = static_cast<int>(subject.size()) - 1;
    while (p >= 0 && s >= 0) {
        const std::string& segment = pattern[static_cast<size_t>(p)];
        if (isWildcard(segment)) break;
        if (!segmentMatches(segment, subject[static_cast<size_t>(s)])) return false;
        --p;
        --s;
    }
    if (p >= 0) return isWildcard(pattern[static_cast<size_t>(p)]);
    return s < 0 || isWildcard(pattern.front());
}

// The comparison from the cut texts on, for a pattern that has segments and is not a single wildcard.
inline bool segmentsMatch(const Segments& pattern, const Segments& subject) {
    if (pattern.size() > subject.size()) return false;
    size_t i = 0;
    size_t j = 0;
    bool afterWildcard = true;
    bool mayJump = true;
    while (i < pattern.size() && j < subject.size()) {
        if (isWildcard(pattern[i])) {
            ++i;
            ++j;
            afterWildcard = true;
        } else if (i > 0 && afterWildcard) {
            if (!mayJump) return backwardMatches(pattern, subject);
            size_t k = i;
            while (k < pattern.size() && !isWildcard(pattern[k]))
                ++k;
            if (k == pattern.size()) {
                mayJump = false;
                continue;
            }
            const Segments run(pattern.begin() + static_cast<long>(i), pattern.begin() + static_cast<long>(k));
            size_t at = j;
            while (at + run.size() <= subject.size() && !runMatchesAt(run, subject, at))
                ++at;
            if (at + run.size() > subject.size()) return false;
            j = at + run.size();
            i = k;
        } else {
            if (!segmentMatches(pattern[i], subject[j])) return false;
            afterWildcard = false;
            ++i;
            ++j;
        }
    }
    if (i < pattern.size()) return false;
    if (j < subject.size()) return isWildcard(pattern.back());
    return true;
}

// The whole comparison. `pattern` and `cutSubject` are what `parse` made of the two texts.
inline bool matches(const Segments& pattern, const std::string& subject, const Segments& cutSubject) {
    if (pattern.empty()) return subject.empty();
    if (pattern.size() == 1 && isWildcard(pattern[0])) return true;
    return segmentsMatch(pattern, cutSubject);
}

}  // namespace oracle
