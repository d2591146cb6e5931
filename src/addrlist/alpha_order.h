// Sorting addresses by their sort keys.
#pragma once

#include <cstdint>
#include <vector>

#include "addrlist/text_arena.h"

namespace zxpol {

// Sorts items, no two of which have the same key, by their keys as kr_stricmp compares them.
void sortByKey(const TextArena& texts, std::vector<uint32_t>& items);

}  // namespace zxpol
