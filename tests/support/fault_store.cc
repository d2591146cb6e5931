#include "support/fault_store.h"

#include <dlfcn.h>

#include <cstdlib>
#include <map>
#include <mutex>
#include <utility>

#include "zxpolicy.h"

namespace zxtest {

namespace {

struct Plan {
    uint64_t call = 0;
    int code = 0;
    StoreOp op = StoreOp::any;
};

struct Books {
    std::mutex mutex;
    std::map<_ZxPolComHandle*, std::string> keys;
    std::vector<std::string> violations;
    Plan plan;
    uint64_t planCalls = 0;  // counted calls of the planned operation
    uint64_t calls = 0;
    bool failed = false;
    std::string failedCall;
    std::function<void(uint64_t)> watcher;
    std::function<void()> endWatcher;
};

// Never destroyed: keys may be closed while the process ends.
Books& books() {
    static Books* all = new Books;
    return *all;
}

thread_local int countingDepth = 0;
thread_local int storeDepth = 0;
thread_local int booksDepth = 0;
thread_local int updateDepth = 0;
thread_local bool isWatching = false;

constexpr const char* kOpNames[] = {"any",         "openKey",   "createKey",    "closeKey",   "deleteKey",
                                    "queryValue",  "setValue",  "deleteValue",  "enumSubkey", "enumValue",
                                    "beginUpdate", "endUpdate", "cancelUpdate", "stamp",      "identity"};

const char* nameOf(StoreOp op) {
    return kOpNames[static_cast<int>(op)];
}

// The real function of this name, behind the program's own.
template <class Function>
Function* real(const char* name) {
    void* found = dlsym(RTLD_NEXT, name);
    if (found == nullptr) std::abort();
    return reinterpret_cast<Function*>(found);
}

// Marks this thread as inside the real store; its own calls of zxreg_* there are no business of the books.
struct InStore {
    InStore() { ++storeDepth; }
    ~InStore() { --storeDepth; }
};

// Marks this thread as writing the books.
struct InBooks {
    InBooks() { ++booksDepth; }
    ~InBooks() { --booksDepth; }
};

// Everything that is done on entry to an operation. True when the call is to fail with `*error`.
bool enter(StoreOp op, _ZxPolComHandle* key, const char* name, int* error) {
    if (storeDepth > 0) return false;
    const InBooks bookkeeping;
    Books& all = books();
    const std::lock_guard<std::mutex> lock(all.mutex);
    const std::string text = name == nullptr ? "(null)" : name;
    if (key != nullptr && all.keys.count(key) == 0) {
        all.violations.push_back(std::string(nameOf(op)) + " " + text + ": the key is not open");
    }
    if (error == nullptr) all.violations.push_back(std::string(nameOf(op)) + " " + text + ": null result");
    if (countingDepth == 0 || isWatching) return false;
    ++all.calls;
    if (all.plan.call == 0 || (all.plan.op != StoreOp::any && all.plan.op != op)) return false;
    if (++all.planCalls != all.plan.call) return false;
    all.failed = true;
    all.failedCall = std::string(nameOf(op)) + " " + text;
    if (error != nullptr) *error = all.plan.code;
    return true;
}

// Tells the watcher of ends that an update has ended, well or not.
void noteEnd() {
    if (storeDepth > 0 || countingDepth == 0 || isWatching || !books().endWatcher) return;
    const InBooks bookkeeping;
    isWatching = true;
    books().endWatcher();
    isWatching = false;
}

// Tells the watcher of a counted call that wrote.
void noteWrite() {
    if (storeDepth > 0 || countingDepth == 0 || isWatching || !books().watcher) return;
    const InBooks bookkeeping;
    isWatching = true;
    books().watcher(countedStoreCalls());
    isWatching = false;
}

_ZxPolComHandle* noteOpened(_ZxPolComHandle* handle, const char* name) {
    if (storeDepth > 0 || handle == nullptr) return handle;
    const InBooks bookkeeping;
    Books& all = books();
    const std::lock_guard<std::mutex> lock(all.mutex);
    all.keys[handle] = name == nullptr ? "(null)" : name;
    return handle;
}

// Strikes a key off the books; false when it was not open.
bool noteClosed(_ZxPolComHandle* key) {
    const InBooks bookkeeping;
    Books& all = books();
    const std::lock_guard<std::mutex> lock(all.mutex);
    return all.keys.erase(key) == 1;
}

void noteUpdate(int change) {
    if (storeDepth > 0) return;
    const InBooks bookkeeping;
    updateDepth += change;
    if (updateDepth >= 0) return;
    updateDepth = 0;
    Books& all = books();
    const std::lock_guard<std::mutex> lock(all.mutex);
    all.violations.push_back("endUpdate: no update is open");
}

}  // namespace

std::vector<std::string> storeViolations() {
    Books& all = books();
    const std::lock_guard<std::mutex> lock(all.mutex);
    return all.violations;
}

std::vector<std::string> openStoreKeys() {
    Books& all = books();
    const std::lock_guard<std::mutex> lock(all.mutex);
    std::vector<std::string> names;
    for (const auto& key : all.keys)
        names.push_back(key.second);
    return names;
}

int openStoreUpdates() {
    return updateDepth;
}

void resetFaultStore() {
    failNoStoreCall();
    Books& all = books();
    const std::lock_guard<std::mutex> lock(all.mutex);
    all.violations.clear();
}

void failStoreCall(uint64_t call, int code, StoreOp op) {
    Books& all = books();
    const std::lock_guard<std::mutex> lock(all.mutex);
    all.plan = Plan{call, code, op};
    all.planCalls = all.calls = 0;
    all.failed = false;
    all.failedCall.clear();
}

void failNoStoreCall() {
    failStoreCall(0, 0);
}

bool storeCallFailed() {
    Books& all = books();
    const std::lock_guard<std::mutex> lock(all.mutex);
    return all.failed;
}

std::string failedStoreCall() {
    Books& all = books();
    const std::lock_guard<std::mutex> lock(all.mutex);
    return all.failedCall;
}

uint64_t countedStoreCalls() {
    Books& all = books();
    const std::lock_guard<std::mutex> lock(all.mutex);
    return all.calls;
}

void watchStore(std::function<void(uint64_t call)> watcher) {
    books().watcher = std::move(watcher);
}

void watchUpdateEnds(std::function<void()> watcher) {
    books().endWatcher = std::move(watcher);
}

CountedCalls::CountedCalls() {
    ++countingDepth;
}

CountedCalls::~CountedCalls() {
    --countingDepth;
}

UncountedCalls::UncountedCalls() : _depth(countingDepth) {
    countingDepth = 0;
}

UncountedCalls::~UncountedCalls() {
    countingDepth = _depth;
}

bool insideRealStore() {
    return storeDepth > 0;
}

bool insideStoreBooks() {
    return booksDepth > 0;
}

}  // namespace zxtest

using namespace zxtest;

#define ZX_REAL(function) static const auto forward = real<decltype(function)>(#function)

_ZxPolComHandle* zxreg_openStore(const char* location, int* error) {
    ZX_REAL(zxreg_openStore);
    _ZxPolComHandle* handle = nullptr;
    {
        InStore inside;
        handle = forward(location, error);
    }
    return noteOpened(handle, location);
}

_ZxPolComHandle* zxreg_openKey(_ZxPolComHandle* key, const char* name, int* error) {
    ZX_REAL(zxreg_openKey);
    if (enter(StoreOp::openKey, key, name, error)) return nullptr;
    _ZxPolComHandle* handle = nullptr;
    {
        InStore inside;
        handle = forward(key, name, error);
    }
    return noteOpened(handle, name);
}

_ZxPolComHandle* zxreg_createKey(_ZxPolComHandle* key, const char* name, int* error) {
    ZX_REAL(zxreg_createKey);
    if (enter(StoreOp::createKey, key, name, error)) return nullptr;
    _ZxPolComHandle* handle = nullptr;
    {
        InStore inside;
        handle = forward(key, name, error);
    }
    noteOpened(handle, name);
    noteWrite();
    return handle;
}

void zxreg_closeKey(_ZxPolComHandle* key, int* error) {
    ZX_REAL(zxreg_closeKey);
    const bool fails = enter(StoreOp::closeKey, key, "", error);
    if (storeDepth == 0 && !noteClosed(key)) return;
    InStore inside;
    int result = 0;
    forward(key, fails ? &result : error);
}

void zxreg_deleteKey(_ZxPolComHandle* key, const char* name, int* error) {
    ZX_REAL(zxreg_deleteKey);
    if (enter(StoreOp::deleteKey, key, name, error)) return;
    {
        InStore inside;
        forward(key, name, error);
    }
    noteWrite();
}

void zxreg_queryValue(_ZxPolComHandle* key, const char* name, uint32_t* type, void* data, uint32_t* size, int* error) {
    ZX_REAL(zxreg_queryValue);
    if (enter(StoreOp::queryValue, key, name, error)) return;
    InStore inside;
    forward(key, name, type, data, size, error);
}

void zxreg_setValue(_ZxPolComHandle* key, const char* name, uint32_t type, const void* data, uint32_t size,
                    int* error) {
    ZX_REAL(zxreg_setValue);
    if (enter(StoreOp::setValue, key, name, error)) return;
    {
        InStore inside;
        forward(key, name, type, data, size, error);
    }
    noteWrite();
}

void zxreg_deleteValue(_ZxPolComHandle* key, const char* name, int* error) {
    ZX_REAL(zxreg_deleteValue);
    if (enter(StoreOp::deleteValue, key, name, error)) return;
    {
        InStore inside;
        forward(key, name, error);
    }
    noteWrite();
}

void zxreg_enumSubkey(_ZxPolComHandle* key, uint32_t index, char* name, uint32_t* size, int* error) {
    ZX_REAL(zxreg_enumSubkey);
    if (enter(StoreOp::enumSubkey, key, "", error)) return;
    InStore inside;
    forward(key, index, name, size, error);
}

void zxreg_enumValue(_ZxPolComHandle* key, uint32_t index, char* name, uint32_t* nameSize, uint32_t* type, void* data,
                     uint32_t* dataSize, int* error) {
    ZX_REAL(zxreg_enumValue);
    if (enter(StoreOp::enumValue, key, "", error)) return;
    InStore inside;
    forward(key, index, name, nameSize, type, data, dataSize, error);
}

void zxreg_beginUpdate(_ZxPolComHandle* key, int* error) {
    ZX_REAL(zxreg_beginUpdate);
    if (enter(StoreOp::beginUpdate, key, "", error)) return;
    {
        InStore inside;
        forward(key, error);
    }
    if (error != nullptr && ZX_SUCCESS(*error)) noteUpdate(+1);
}

void zxreg_endUpdate(_ZxPolComHandle* key, int* error) {
    ZX_REAL(zxreg_endUpdate);
    if (enter(StoreOp::endUpdate, key, "", error)) {
        noteUpdate(-1);
        {
            InStore inside;
            int result = 0;
            real<decltype(zxreg_cancelUpdate)>("zxreg_cancelUpdate")(key, &result);
        }
        return noteEnd();
    }
    noteUpdate(-1);
    {
        InStore inside;
        forward(key, error);
    }
    noteEnd();
}

void zxreg_cancelUpdate(_ZxPolComHandle* key, int* error) {
    ZX_REAL(zxreg_cancelUpdate);
    const bool fails = enter(StoreOp::cancelUpdate, key, "", error);
    noteUpdate(-1);
    InStore inside;
    int result = 0;
    forward(key, fails ? &result : error);
}

uint64_t zxreg_stamp(_ZxPolComHandle* key, int* error) {
    ZX_REAL(zxreg_stamp);
    if (enter(StoreOp::stamp, key, "", error)) return 0;
    InStore inside;
    return forward(key, error);
}

uint64_t zxreg_identity(_ZxPolComHandle* key, int* error) {
    ZX_REAL(zxreg_identity);
    if (enter(StoreOp::identity, key, "", error)) return 0;
    InStore inside;
    return forward(key, error);
}

const char* zxreg_lastErrorText(void) {
    ZX_REAL(zxreg_lastErrorText);
    return forward();
}
