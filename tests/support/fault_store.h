// A store that stands between the library and the real one: it keeps books on every key and update, counts the
// library's calls, and can make one of them fail.
//
// A program that contains fault_store.cc (see zx_fault_store in its CMakeLists.txt) defines all zxreg_* functions
// itself, so the library binds to them; each forwards to the real store behind it.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "zxregistry.h"

namespace zxtest {

enum class StoreOp {
    any,
    openKey,
    createKey,
    closeKey,
    deleteKey,
    queryValue,
    setValue,
    deleteValue,
    enumSubkey,
    enumValue,
    beginUpdate,
    endUpdate,
    cancelUpdate,
    stamp,
    identity,
};

// What went wrong in the use of the store: a key closed twice or never opened, a closed key used, an update ended
// that was not begun. Each entry names the operation and the key.
std::vector<std::string> storeViolations();

// The keys open now, by the names they were opened with, and the updates open in this thread.
std::vector<std::string> openStoreKeys();
int openStoreUpdates();

// Forgets violations and the plan. Keys still open stay known.
void resetFaultStore();

// Makes the `call`-th counted call (from 1; of `op` only, unless it is any) fail with `code` before it is executed.
// A failing close still closes, and a failing end takes the update back: the store reported a failure, and kept
// nothing.
void failStoreCall(uint64_t call, int code, StoreOp op = StoreOp::any);
void failNoStoreCall();

// Whether the planned failure has happened, and where: the operation and the name it was given.
bool storeCallFailed();
std::string failedStoreCall();

// Calls counted since the last plan (or its removal).
uint64_t countedStoreCalls();

// Has `watcher` called after each counted call that writes, with that call's number; null: nobody. It may use the
// store: what it calls itself is not counted.
void watchStore(std::function<void(uint64_t call)> watcher);

// Has `watcher` called after each counted call that ends an update, well or not, before it returns; null: nobody.
void watchUpdateEnds(std::function<void()> watcher);

// As long as one of these lives, the calls of its thread are counted, and the planned one fails.
class CountedCalls {
public:
    CountedCalls();
    ~CountedCalls();
    CountedCalls(const CountedCalls&) = delete;
    CountedCalls& operator=(const CountedCalls&) = delete;
};

// As long as one of these lives, the calls of its thread are not counted, and none fails.
class UncountedCalls {
public:
    UncountedCalls();
    ~UncountedCalls();
    UncountedCalls(const UncountedCalls&) = delete;
    UncountedCalls& operator=(const UncountedCalls&) = delete;

private:
    int _depth;
};

// Whether this thread is inside the real store, or writing the books: allocations there are not the library's.
bool insideRealStore();
bool insideStoreBooks();

}  // namespace zxtest
