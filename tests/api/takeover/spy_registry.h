// The counter of a store library that should never be called.
#pragma once

#include <stdint.h>

extern "C" __attribute__((visibility("default"))) uint64_t zxspy_calls(void);
