// The names that an enumerating function of the library gives.
#pragma once

#include <string>
#include <vector>

#include "result_names.h"
#include "stored/raw_key.h"
#include "tool_error.h"
#include "zxpolicy.h"

namespace tool {

// Walks an enumeration to its end. Throws a StoreError "cannot read WHAT".
template <class Enumerate>
std::vector<std::string> namesOf(Enumerate enumerate, _ZxPolComHandle* handle, const std::string& what) {
    std::vector<std::string> names;
    for (;;) {
        char name[ZXPOL_NAME_SIZE];
        uint32_t size = sizeof name;
        int result = ZXPOL_S_OK;
        enumerate(handle, static_cast<uint32_t>(names.size()), name, &size, &result);
        if (hasReason(result, kReasonEnd)) return names;
        require(result, "cannot read " + what);
        names.emplace_back(name);
    }
}

// Throws a StoreError that names the first of the stored names that is not among those given. The library passes over a
// child whose position it cannot read.
void requireAll(std::vector<std::string> given, const std::vector<std::string>& stored, const std::string& what);

// The same as namesOf, but they must be all that are stored: the subkeys of `container`.
template <class Enumerate>
std::vector<std::string> allNamesOf(Enumerate enumerate, _ZxPolComHandle* handle, const KeyHandle& container,
                                    const std::string& what) {
    std::vector<std::string> names = namesOf(enumerate, handle, what);
    requireAll(names, rawSubkeys(container.get()), what);
    return names;
}

}  // namespace tool
