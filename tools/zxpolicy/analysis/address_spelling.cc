#include "analysis/address_spelling.h"

#include <algorithm>

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
    const std::string quoted = '"' + name + '"';
    std::vector<std::string> texts;
    for (const std::string& local : {name, quoted}) {
        if (!domain.empty()) {
            texts.push_back(local + "@" + domain);
        } else {
            texts.push_back(local);
            texts.push_back(local + "@");
        }
    }
    // A blank is nothing that people see.
    if (name.find(' ') != std::string::npos)
        std::stable_partition(texts.begin(), texts.end(),
                              [&](const std::string& text) { return !text.empty() && text.front() == '"'; });
    std::vector<std::string> found;
    for (std::string& text : texts) {
        // What stands before the first colon is the kind of the address.
        if (text.find(':') != std::string::npos) text.insert(0, "smtp:");
        const AddressParts parts = partsOf(text);
        if (parts.name == name && parts.domain == domain) found.push_back(std::move(text));
    }
    return found;
}

}  // namespace tool
