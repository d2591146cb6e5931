// Reading what stood in a store at one moment.
#pragma once

#include "store.h"
#include "tool_error.h"

namespace tool {

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
        } catch (const StoreError&) {
            if (store.stamp() == before) throw;
        }
    }
    // Other writers wait.
    StoreUpdate update(store);
    auto result = read();
    update.cancel();
    return result;
}

}  // namespace tool
