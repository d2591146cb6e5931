// Wildcard entries as regular expressions, and their weights.
#include <algorithm>

#include "contestant.h"

namespace bench {

namespace {

std::string escaped(const std::string& text) {
    std::string result;
    for (const char c : text) {
        if (c == '.') result += '\\';
        result += c;
    }
    return result;
}

bool startsWith(const std::string& text, const char* beginning) {
    return text.rfind(beginning, 0) == 0;
}

}  // namespace

std::string expressionOf(const std::string& entry) {
    const size_t at = entry.find('@');
    const std::string name = entry.substr(0, at);
    const std::string domain = entry.substr(at + 1);
    const std::string beginning = name == "*" ? "" : "^" + escaped(name);
    if (domain == "[*]") return beginning + "@\\[.*\\]$";
    if (domain == "*") return beginning + "@";
    if (!startsWith(domain, "*.")) return beginning + "@" + escaped(domain) + "$";
    return beginning + (name == "*" ? "" : "@.+") + escaped(domain.substr(1)) + "$";
}

uint32_t weightOf(const std::string& entry) {
    const size_t at = entry.find('@');
    const bool isNameOpen = entry.compare(0, at, "*") == 0;
    const std::string domain = entry.substr(at + 1);
    if (domain == "*") return 1000;
    if (domain.find('*') == std::string::npos) return isNameOpen ? 4000 : weightOfAddress;
    const auto labels = domain == "[*]" ? 0 : std::count(domain.begin(), domain.end(), '.');
    return (isNameOpen ? 2000u : 3000u) + static_cast<uint32_t>(labels);
}

}  // namespace bench
