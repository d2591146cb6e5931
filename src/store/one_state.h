// Reads that must all be of one state of the store, while other processes and threads may change it.
#pragma once

#include "store/key_state.h"
#include "store/result.h"
#include "store/update.h"
#include "zxpolicy.h"

namespace zxpol {

// How often a read is tried beside others who write before they are made to wait.
constexpr int kFreeReads = 3;

// The stamps of two keys, of which the second may be null.
struct StampPair {
    uint64_t first = 0;
    uint64_t second = 0;

    bool operator==(const StampPair& other) const { return first == other.first && second == other.second; }
};

StampPair stampsOf(_ZxPolComHandle* first, _ZxPolComHandle* second, int* error);

// Runs `read`, which reports through *error, until nothing at or below the two keys has changed meanwhile; where that
// does not come about, once more inside an update, which keeps others from writing. `undo` takes back what came of a
// read that does not count. A store that gives no stamps is read once; one with stamps but without updates may in the
// end be read beside a change, as nothing better is to be had there.
template <class Read, class Undo>
void readOneState(_ZxPolComHandle* first, _ZxPolComHandle* second, int* error, Read read, Undo undo) {
    for (int attempt = 1; attempt <= kFreeReads; ++attempt) {
        const StampPair before = stampsOf(first, second, error);
        if (failed(*error)) return;
        read();
        int result = ZXPOL_S_OK;
        const bool isSame = stampsOf(first, second, &result) == before;
        if (succeeded(result) && (isSame || (attempt == kFreeReads && !canUpdate()))) return;
        undo();
        *error = result;
        if (failed(result)) return;
    }
    const Update update(first, error);
    if (update) read();
}

}  // namespace zxpol
