// Reading what stood in a store at one moment.
#pragma once

#include "output/text.h"
#include "stored/store.h"
#include "tool_error.h"

namespace tool {

// Throws a StoreError when the store has another stamp.
inline void requireUnchanged(const Store& store, uint64_t stamp) {
    if (store.stamp() != stamp)
        throw StoreError("cannot read " + oneLine(store.location()) + " at one moment", ZXREG_E_BUSY);
}

// Runs `read` and returns what it returns, which is of one moment, whatever other processes do to the store. It may run
// several times; what it throws counts only when the store did not change meanwhile.
template <class Read>
auto readAtOneMoment(const Store& store, Read read) {
    constexpr int kTries = 3;
    for (int i = 0; i < kTries; ++i) {
        const uint64_t before = store.stamp();
        try {
            auto result = read();
            if (store.stamp() == before) return result;
        } catch (const ToolError&) {
            if (store.stamp() == before) throw;
        }
    }
    // Other writers wait, but for those of a file that may only be read.
    StoreUpdate update(store);
    const uint64_t before = store.stamp();
    auto result = read();
    requireUnchanged(store, before);
    update.cancel();
    return result;
}

}  // namespace tool
