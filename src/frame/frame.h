// The one frame of all flat functions: the checks made before any work is done, in their order, the
// wrapping of new objects in handles, and the barrier that no exception passes. A flat function is one
// statement that names its object's class and operation.
#pragma once

#include <memory>
#include <new>

#include "store/result.h"
#include "zxpolicy.h"

class ZxPolAction;
class ZxPolAddrList;
class ZxPolAddrListHive;
class ZxPolClass;
class ZxPolClassHive;
class ZxPolRule;
class ZxPolRuleHive;
class ZxPolTask;

namespace zxpol {

// Stands for an open key of the store where a function takes one; the key is the handle itself.
struct StoreKeyHandle;

// The kind of the handles that designate an object of a class.
template <class Object>
constexpr uint32_t kHandleKind = 0;
template <>
inline constexpr uint32_t kHandleKind<StoreKeyHandle> = ZXREG_HANDLE_KEY;
template <>
inline constexpr uint32_t kHandleKind<ZxPolAddrListHive> = ZXPOL_HANDLE_ADDRLIST_HIVE;
template <>
inline constexpr uint32_t kHandleKind<ZxPolAddrList> = ZXPOL_HANDLE_ADDRLIST;
template <>
inline constexpr uint32_t kHandleKind<ZxPolClassHive> = ZXPOL_HANDLE_CLASS_HIVE;
template <>
inline constexpr uint32_t kHandleKind<ZxPolClass> = ZXPOL_HANDLE_CLASSIFICATION;
template <>
inline constexpr uint32_t kHandleKind<ZxPolAction> = ZXPOL_HANDLE_ACTION;
template <>
inline constexpr uint32_t kHandleKind<ZxPolRuleHive> = ZXPOL_HANDLE_RULE_HIVE;
template <>
inline constexpr uint32_t kHandleKind<ZxPolRule> = ZXPOL_HANDLE_RULE;
template <>
inline constexpr uint32_t kHandleKind<ZxPolTask> = ZXPOL_HANDLE_TASK;

namespace frame {

// Whether a call with this result argument is to run: there is one, and it holds no failure.
inline bool mayRun(const int* error) {
    return error != nullptr && succeeded(*error);
}

// Whether `handle` designates an object of kind `kind`; else writes why not.
bool checkHandle(const _ZxPolComHandle* handle, uint32_t kind, int* error);

// Runs `body`; an exception becomes a result code and an empty result.
template <class Body>
auto guarded(int* error, Body body) -> decltype(body()) {
    using Result = decltype(body());
    try {
        return body();
    } catch (const std::bad_alloc&) {
        *error = ZXPOL_E_OUT_OF_MEMORY;
    } catch (...) {
        *error = ZXPOL_E_EXCEPTION;
    }
    return Result();
}

template <class Object>
Object& objectOf(_ZxPolComHandle* handle) {
    return *static_cast<Object*>(handle->object);
}

// A function without a handle: body().
template <class Body>
auto run(int* error, Body body) -> decltype(body()) {
    using Result = decltype(body());
    if (!mayRun(error)) return Result();
    return guarded(error, body);
}

// A function on one object: body(object).
template <class Object, class Body>
auto call(_ZxPolComHandle* handle, int* error, Body body) -> decltype(body(objectOf<Object>(handle))) {
    using Result = decltype(body(objectOf<Object>(handle)));
    if (!mayRun(error) || !checkHandle(handle, kHandleKind<Object>, error)) return Result();
    return guarded(error, [&] { return body(objectOf<Object>(handle)); });
}

// A function on a key of the store: body(key).
template <class Body>
auto callWithKey(_ZxPolComHandle* key, int* error, Body body) -> decltype(body(key)) {
    using Result = decltype(body(key));
    if (!mayRun(error) || !checkHandle(key, kHandleKind<StoreKeyHandle>, error)) return Result();
    return guarded(error, [&] { return body(key); });
}

// A function on two objects: body(first, second). Both handles are looked at for null before either is
// for its kind.
template <class First, class Second, class Body>
void callWithTwo(_ZxPolComHandle* first, _ZxPolComHandle* second, int* error, Body body) {
    if (!mayRun(error)) return;
    if (first == nullptr || second == nullptr) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    if (!checkHandle(first, kHandleKind<First>, error) || !checkHandle(second, kHandleKind<Second>, error)) return;
    guarded(error, [&] { body(objectOf<First>(first), objectOf<Second>(second)); });
}

// Wraps a new object in a handle; with a failure, or without memory, the object is destroyed and the
// result null: a handle never comes together with a failure.
template <class Made>
_ZxPolComHandle* wrap(std::unique_ptr<Made> made, int* error) {
    if (failed(*error) || made == nullptr) return nullptr;
    _ZxPolComHandle* handle = makeHandle(made.get(), kHandleKind<Made>);
    if (handle == nullptr) {
        *error = ZXPOL_E_OUT_OF_MEMORY;
        return nullptr;
    }
    made.release();
    return handle;
}

// A function that makes an object from another one: body(object) returns a Made* that the frame takes over.
template <class Object, class Made, class Body>
_ZxPolComHandle* open(_ZxPolComHandle* handle, int* error, Body body) {
    return call<Object>(handle, error,
                        [&](Object& object) { return wrap(std::unique_ptr<Made>(body(object)), error); });
}

// A function on the policy below a key of the store, behind the gate of the store's version: body(key).
template <class Body>
auto callWithPolicy(_ZxPolComHandle* key, int* error, Body body) -> decltype(body(key)) {
    using Result = decltype(body(key));
    return callWithKey(key, error, [&](_ZxPolComHandle* storeKey) {
        if (checkVersion(storeKey, error, nullptr)) return body(storeKey);
        *error = ZXPOL_E_VERSION;
        return Result();
    });
}

// A function that opens a hive: body(key) returns a Hive* that the frame takes over.
template <class Hive, class Body>
_ZxPolComHandle* openHive(_ZxPolComHandle* key, int* error, Body body) {
    return callWithPolicy(
        key, error, [&](_ZxPolComHandle* storeKey) { return wrap(std::unique_ptr<Hive>(body(storeKey)), error); });
}

// Closes a handle, also when *error holds a failure: clean-up must work after an error.
template <class Object>
void close(_ZxPolComHandle* handle, int* error) {
    if (error == nullptr) return;
    if (handle == nullptr) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    if (handle->kind != kHandleKind<Object>) {
        *error = ZXPOL_E_WRONG_HANDLE;
        return;
    }
    delete static_cast<Object*>(handle->object);
    delete handle;
    *error = ZXPOL_S_OK;
}

}  // namespace frame
}  // namespace zxpol
