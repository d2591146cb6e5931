// The end of a target that found something.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace fuzz {

// A text in which every byte can be seen.
inline std::string shown(const std::string& text) {
    std::string plain;
    for (const char c : text) {
        char code[8];
        std::snprintf(code, sizeof code, "\\x%02x", static_cast<unsigned>(static_cast<unsigned char>(c)));
        plain += c >= ' ' && c <= '~' && c != '\\' ? std::string(1, c) : code;
    }
    return "<" + plain + ">";
}

// Says what is wrong and aborts, which the fuzzer and the replay take for a finding.
[[noreturn]] inline void fail(const std::string& what) {
    std::fprintf(stderr, "found: %s\n", what.c_str());
    std::abort();
}

inline void require(bool holds, const char* what) {
    if (!holds) fail(what);
}

// The same for a difference between what is right and what was found.
template <class Value>
void requireSame(const Value& right, const Value& found, const std::string& what) {
    if (!(right == found)) fail(what);
}

}  // namespace fuzz
