// Reading result codes: the sign tells failure, and a few reasons are recognised by the low 16 bits,
// so that the store's codes and the library's own codes of one reason are treated alike.
#pragma once

#include <cstdint>

#include "zxpolicy.h"

namespace zxpol {

constexpr bool failed(int code) {
    return code < 0;
}
constexpr bool succeeded(int code) {
    return code >= 0;
}

constexpr uint32_t kReasonBufferTooSmall = 0x0006;
constexpr uint32_t kReasonInvalidFormat = 0x000a;
constexpr uint32_t kReasonNoMoreItems = 0x000c;
constexpr uint32_t kReasonNotFound = 0x1804;

constexpr bool hasReason(int code, uint32_t reason) {
    return (static_cast<uint32_t>(code) & 0xffffu) == reason;
}

// The end of an enumeration, whichever side reports it.
constexpr bool isEnd(int code) {
    return hasReason(code, kReasonNoMoreItems);
}

}  // namespace zxpol
