// Conditions compared with addresses step by step, slow and obvious, to compare the real ones with.
#pragma once

#include <string>

#include "slow_address.h"

namespace slow {

// What a condition keeps of an address: its name without quotes, and its domain, each cut to what fits.
struct Halves {
    std::string name, domain;
};

inline Halves halvesOf(const std::string& address) {
    constexpr size_t kMaxName = 254, kMaxDomain = 255;
    const size_t at = dividingAt(address);
    Halves halves;
    halves.name = stripped(address.substr(0, at).substr(0, kMaxName) + "@");
    halves.name.pop_back();
    if (at != std::string::npos) halves.domain = address.substr(at + 1, kMaxDomain);
    return halves;
}

inline bool textMatches(const std::string& pattern, const std::string& subject, const std::string& separators,
                        char quote = '\0') {
    return oracle::matches(oracle::parse(pattern, separators, quote), subject,
                           oracle::parse(subject, separators, quote));
}

// Name and domain by themselves, each cut at dots; a domain in brackets is not.
inline bool conditionMatches(const std::string& condition, const std::string& address) {
    const Halves pattern = halvesOf(condition), subject = halvesOf(address);
    if (pattern.name == "*" && (pattern.domain.empty() || pattern.domain == "*")) return true;
    const std::string& domain = pattern.domain;
    const bool isLiteral = domain.size() >= 2 && domain.front() == '[' && domain.back() == ']';
    return textMatches(pattern.name, subject.name, ".") && textMatches(domain, subject.domain, isLiteral ? "" : ".");
}

}  // namespace slow
