// Texts as the library takes several at once.
#pragma once

#include <string>
#include <vector>

namespace tool {

// An array of them, closed by a null pointer. It lives no longer than the texts.
inline std::vector<const char*> textArray(const std::vector<std::string>& texts) {
    std::vector<const char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (const std::string& text : texts)
        pointers.push_back(text.c_str());
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace tool
