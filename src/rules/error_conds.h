// Lists of conditions that conflict with the rule tree: collected by value, handed out in the interface's shape.
#pragma once

#include <string>
#include <vector>

#include "zxpolicy.h"

namespace zxpol {

using CondList = std::vector<_ZxPolAddrPairCond>;

// The pair behind a pointer of the interface's condition lists.
inline const _ZxPolAddrPairCond& asPair(const unsigned char* record) {
    return *reinterpret_cast<const _ZxPolAddrPairCond*>(record);
}

// A copy of a caller's pair whose sides end within their widths.
_ZxPolAddrPairCond terminatedCopy(const _ZxPolAddrPairCond& pair);

// Pointers to the pairs, closed by a null pointer, as the operations on conditions take them; valid as long
// as `pairs` is unchanged.
std::vector<const unsigned char*> pointersTo(const CondList& pairs);

// Copies of the pairs in an array closed by a null pointer; released with freeCondArray.
unsigned char** newCondArray(const CondList& pairs);
void freeCondArray(unsigned char** conditions);

// The rules concerned by a check or a clean-up, with their pairs.
class ErrorConds {
public:
    // Adds an entry and returns its place.
    size_t add(const std::string& ruleName, const CondList& pairs);

    // Takes an entry out again.
    void remove(size_t place);

    // A new list in the shape that crosses the interface; released with freeErrorConds.
    _ZxPolErrorCond** toFlat() const;

private:
    struct Entry {
        std::string ruleName;
        CondList pairs;
    };
    std::vector<Entry> _entries;
};

// Releases such a list, but for its entry records. A null list is nothing to release.
void freeErrorConds(_ZxPolErrorCond** list);

}  // namespace zxpol
