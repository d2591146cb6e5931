// Handles of the library and the store that close themselves.
#pragma once

#include <utility>

#include "zxpolicy.h"
#include "zxregistry.h"

namespace tool {

using CloseFunction = void (*)(_ZxPolComHandle*, int*);

// Owns one handle; `close` releases it. May be empty.
template <CloseFunction close>
class Handle {
public:
    Handle() = default;
    explicit Handle(_ZxPolComHandle* handle) : _handle(handle) {}
    ~Handle() { reset(); }
    Handle(Handle&& other) noexcept : _handle(std::exchange(other._handle, nullptr)) {}
    Handle& operator=(Handle&& other) noexcept {
        if (this != &other) {
            reset();
            _handle = std::exchange(other._handle, nullptr);
        }
        return *this;
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    _ZxPolComHandle* get() const { return _handle; }
    explicit operator bool() const { return _handle != nullptr; }

private:
    void reset() {
        int result = ZXPOL_S_OK;
        if (_handle != nullptr) close(_handle, &result);
        _handle = nullptr;
    }

    _ZxPolComHandle* _handle = nullptr;
};

using KeyHandle = Handle<zxreg_closeKey>;
using RuleHiveHandle = Handle<zxpol_closeRuleHive>;
using RuleHandle = Handle<zxpol_closeRule>;
using TaskHandle = Handle<zxpol_closeTask>;
using ListHiveHandle = Handle<zxpol_closeAddrListHive>;
using ClassificationHiveHandle = Handle<zxpol_closeClassificationHive>;
using ClassificationHandle = Handle<zxpol_closeClassification>;
using ActionHandle = Handle<zxpol_closeAction>;
using ListHandle = Handle<zxpol_closeAddrList>;

}  // namespace tool
