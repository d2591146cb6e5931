// Services that a host's store may lack.
#pragma once

namespace zxpol {

// Whether a function, which may be null, comes from the module that the store's required operations come from. Only
// then it is used: a program that brings a store without the service must not have its keys handed to another store
// that happens to be loaded beside it.
bool isInStoreModule(const void* function);

template <class Function>
bool isOfTheStore(Function* function) {
    return isInStoreModule(reinterpret_cast<const void*>(function));
}

}  // namespace zxpol
