// Allocations that fail: a program that contains fault_memory.cc has operator new replaced.
#pragma once

#include <cstdint>

namespace zxtest {

// As long as one of these lives, allocations of its thread are counted, but for those inside the real store.
class CountedAllocations {
public:
    CountedAllocations();
    ~CountedAllocations();
    CountedAllocations(const CountedAllocations&) = delete;
    CountedAllocations& operator=(const CountedAllocations&) = delete;
};

// Makes the `call`-th counted allocation (from 1) fail: bad_alloc, or null where that was asked for. 0: none.
// `inStore` counts the allocations of the real store too.
void failAllocation(uint64_t call, bool inStore = false);

// Whether the planned failure has happened; the number of counted allocations since the last plan.
bool allocationFailed();
uint64_t countedAllocations();

}  // namespace zxtest
