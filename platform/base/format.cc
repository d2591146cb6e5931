// Formatting into a buffer of a given size.
#include <cstdio>

#include "zxbase.h"

extern "C" __attribute__((format(printf, 3, 0))) int kr_vsnprintf(char* buffer, size_t size, const char* format,
                                                                  va_list arguments) {
    const int length = std::vsnprintf(buffer, size, format, arguments);
    // A text that could not be formatted is empty, not whatever stood in the buffer before.
    if (length < 0 && size > 0) buffer[0] = '\0';
    return length;
}
