// The stores that are open in this process.
#pragma once

#include <string_view>
#include <utility>

#include "store.h"

namespace zxreg {

// A counted handle on an open store; the last one closes it.
class StoreRef {
public:
    // Takes a handle over that has been counted already.
    explicit StoreRef(Store* counted) noexcept : _store(counted) {}
    StoreRef(const StoreRef& other) noexcept : _store(other._store) { _store->retain(); }
    StoreRef(StoreRef&& other) noexcept : _store(std::exchange(other._store, nullptr)) {}
    StoreRef& operator=(const StoreRef&) = delete;
    ~StoreRef() {
        if (_store != nullptr && !_store->releaseUnlessLast()) releaseLast(_store);
    }

    Store* operator->() const noexcept { return _store; }

private:
    static void releaseLast(Store* store) noexcept;

    Store* _store;
};

// Opens the store at a location, or shares the one that is open there. Throws a Failure.
StoreRef openStore(std::string_view location);

}  // namespace zxreg
