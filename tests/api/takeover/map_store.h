// A host's store in a few maps: names are case-blind, enumeration is alphabetical, the codes are its own, and none of
// the optional services is there.
#pragma once

#include <cstddef>
#include <cstdint>

#include "zxregistry.h"

extern "C" {

// Opens the root of the one store that the process has.
ZXREG_API _ZxPolComHandle* zxhost_openRoot(void);

// The calls of the nine operations so far, and the keys open now.
ZXREG_API uint64_t zxhost_calls(void);
ZXREG_API size_t zxhost_openKeys(void);
}

// The host's codes: another facility, the three reasons that are fixed, and one of its own.
constexpr int kHostOk = 0;
constexpr int kHostTooSmall = static_cast<int>(0x87770006);
constexpr int kHostEnd = static_cast<int>(0x8777000c);
constexpr int kHostNotFound = static_cast<int>(0x87771804);
constexpr int kHostRefused = static_cast<int>(0x87770099);
