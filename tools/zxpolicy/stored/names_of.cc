#include "stored/names_of.h"

#include <algorithm>

#include "output/text.h"

namespace tool {

void requireAll(std::vector<std::string> given, const std::vector<std::string>& stored, const std::string& what) {
    std::sort(given.begin(), given.end());
    for (const std::string& name : stored)
        if (!std::binary_search(given.begin(), given.end(), name))
            throw StoreError("cannot read all of " + what + ": " + inQuotes(name, 255) +
                                 " is stored, but has no order that can be read",
                             ZXPOL_E_NO_MORE_ITEMS);
}

}  // namespace tool
