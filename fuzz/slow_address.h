// Addresses taken apart step by step, slow and obvious, to compare the real ones with.
#pragma once

#include <algorithm>
#include <string>

#include "support/wildcard_oracle.h"

namespace slow {

using Table = bool (*)(unsigned);

inline bool isAtomText(unsigned c) {
    return c != 0 && c < 0x80 &&
           std::string("!#$%&'*+-/0123456789=?ABCDEFGHIJKLMNOPQRSTUVWXYZ^_`abcdefghijklmnopqrstuvwxyz{|}~")
                   .find(static_cast<char>(c)) != std::string::npos;
}
inline bool isEscapable(unsigned c) {
    return c < 0x80 && c != '\n' && c != '\r';
}
inline bool isQuotedText(unsigned c) {
    return c != 0 && isEscapable(c) && c != '"' && c != '\\' && c != '\t';
}
inline bool isDomainText(unsigned c) {
    return c != 0 && isEscapable(c) && c != '[' && c != '\\' && c != ']' && c != '\t' && c != ' ';
}

inline bool areAll(const std::string& text, Table table) {
    for (const char c : text) {
        if (!table(static_cast<unsigned char>(c))) return false;
    }
    return true;
}

// From the first backslash on only a line feed behind a carriage return is refused; bytes from 0x80 on between the two
// do not part them.
inline bool isTextOrPairs(const std::string& text, Table table) {
    const size_t backslash = text.find('\\');
    if (!areAll(text.substr(0, backslash), table)) return false;
    bool isBehindReturn = false;
    for (size_t at = std::min(backslash, text.size()); at < text.size(); ++at) {
        const auto byte = static_cast<unsigned char>(text[at]);
        if (byte == '\n' && isBehindReturn) return false;
        if (byte == '\r') isBehindReturn = true;
        if (isEscapable(byte)) isBehindReturn = false;
    }
    return true;
}

inline bool isEnclosed(const std::string& text, char open, char close, Table table) {
    return text.size() >= 2 && text.front() == open && text.back() == close &&
           isTextOrPairs(text.substr(1, text.size() - 2), table);
}

inline bool isDotAtom(const std::string& text) {
    const oracle::Segments words = oracle::tokens(text, ".", '\0');
    for (const std::string& word : words) {
        if (!areAll(word, isAtomText)) return false;
    }
    return !words[0].empty();
}

inline bool isQuotedString(const std::string& text) {
    return isEnclosed(text, '"', '"', isQuotedText);
}

inline bool areObsoleteWords(const std::string& text) {
    const oracle::Segments words = oracle::tokens(text, ".", '"');
    for (const std::string& word : words) {
        if (word.empty() || !(areAll(word, isAtomText) || isQuotedString(word))) return false;
    }
    return !words.empty();
}

inline bool isLocalPart(const std::string& text) {
    return !text.empty() && (isDotAtom(text) || isQuotedString(text) || areObsoleteWords(text));
}

inline bool isDomain(const std::string& text) {
    return !text.empty() && (isDotAtom(text) || isEnclosed(text, '[', ']', isDomainText));
}

inline std::string withoutQuotes(const std::string& word) {
    const bool isQuoted = word.size() >= 2 && word.front() == '"' && word.back() == '"';
    return isQuoted ? word.substr(1, word.size() - 2) : word;
}

// The place of the "@" that divides an address, or npos.
inline size_t dividingAt(const std::string& address) {
    const oracle::Segments parts = oracle::tokens(address, "@", '"');
    return parts.size() < 2 ? std::string::npos : parts[0].size();
}

inline bool isAddress(const std::string& address) {
    const size_t at = dividingAt(address);
    return at != std::string::npos && isLocalPart(address.substr(0, at)) && isDomain(address.substr(at + 1));
}

inline std::string stripped(const std::string& address) {
    const size_t at = dividingAt(address);
    const oracle::Segments words = oracle::tokens(address.substr(0, at), ".", '"');
    std::string result;
    for (size_t i = 0; i < words.size(); ++i)
        result += (i == 0 ? "" : ".") + withoutQuotes(words[i]);
    return at == std::string::npos ? result : result + address.substr(at);
}

}  // namespace slow
