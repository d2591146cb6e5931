#include "analysis/address_spelling.h"

#include <utility>

#include "pattern/cond_wildcard_pattern.h"
#include "pattern/rfc2822_checker.h"
#include "text.h"

namespace tool {

AddressParts partsOf(const std::string& address) {
    const size_t colon = address.find(':');
    const std::string text = colon == std::string::npos ? address : address.substr(colon + 1);
    const ZxPolCondWildcardPattern parsed(text.c_str());
    std::string key(text.size() + 1, '\0');
    ZxPolRfc2822Checker::stripLocalPartBoundary(key.data(), text.c_str());
    key.resize(std::char_traits<char>::length(key.c_str()));
    return {parsed.getName(), parsed.getDomain(), lowerCase(key)};
}

std::vector<std::string> spellings(const std::string& name, const std::string& domain) {
    std::string quoted = "\"";
    quoted.append(name).push_back('"');
    std::vector<std::string> locals{name, std::move(quoted)};
    // A blank without quotes around it is nothing that people see.
    if (name.find(' ') != std::string::npos) std::swap(locals.front(), locals.back());
    std::vector<std::string> found;
    const auto addIfRight = [&](std::string text) {
        // What stands before the first colon is the kind of the address.
        if (text.find(':') != std::string::npos) text.insert(0, "smtp:");
        const AddressParts parts = partsOf(text);
        if (parts.name == name && parts.domain == domain) found.push_back(std::move(text));
    };
    for (const std::string& local : locals) {
        if (domain.empty()) addIfRight(local);
        addIfRight(std::string(local).append("@").append(domain));
    }
    return found;
}

}  // namespace tool
