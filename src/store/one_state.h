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

// The result when the state changed even while nobody should have been able to write: as if the store were busy.
extern const int kStateIsChanging;

// Runs `read`, which reports through *error, until nothing at or below the two keys has changed meanwhile; where that
// does not come about, once more inside an update, which keeps others of the store of the first key from writing. There
// are stores where it does not, such as a file that may only be read: a state that changes all the same is
// kStateIsChanging. `undo` takes back what came of a read that does not count. A store that gives no stamps is read
// once; one with stamps but without updates may in the end be read beside a change, as nothing better is to be had
// there.
template <class Read, class Undo>
void readOneState(_ZxPolComHandle* first, _ZxPolComHandle* second, int* error, Read read, Undo undo) {
    // Whether what is read now is of the state that has these stamps. Else *error says so, or that it cannot be told.
    const auto isOfState = [&](const StampPair& before, bool mustBe) {
        read();
        int result = ZXPOL_S_OK;
        const bool isSame = stampsOf(first, second, &result) == before;
        if (succeeded(result) && (isSame || !mustBe)) return true;
        undo();
        *error = failed(result) ? result : kStateIsChanging;
        return false;
    };
    for (int attempt = 1; attempt <= kFreeReads; ++attempt) {
        // As long as another thread has an update open each stamp is a new one: then there is no use in reading.
        const StampPair now = stampsOf(first, second, error);
        if (failed(*error)) return;
        if (canUpdate() && !(stampsOf(first, second, error) == now)) break;
        if (failed(*error)) return;
        const bool mustBe = canUpdate() || attempt < kFreeReads;
        if (isOfState(now, mustBe) || *error != kStateIsChanging) return;
    }
    *error = ZXPOL_S_OK;
    Update update(first, error);
    if (!update) return;
    const StampPair now = stampsOf(first, second, error);
    if (failed(*error)) return;
    if (isOfState(now, true) && !update.end()) undo();
}

}  // namespace zxpol
