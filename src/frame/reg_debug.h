// ZxRegDebug: the library's log entries.
#pragma once

#include "zxpolicy.h"

/**
 * Writes debug entries, which trace what the library does, and application entries, which report results.
 * Both go to the host's log; a caller may redirect the debug entries to a function of its own.
 *
 * mDebugFunc is plain process-wide data: it is set before the process uses the library from several threads.
 * Everything else may be called from any thread. There is no other state, and nothing is thrown.
 */
class ZXPOL_API ZxRegDebug {
public:
    /// Where debug messages go instead of the log; null when they go to the log.
    static ZxPolDebugFunction mDebugFunc;

    /// Installs `function` (null for none) and returns the one installed before.
    static ZxPolDebugFunction setDebugFunction(ZxPolDebugFunction function);

    /// Writes a debug entry; a message is cut to 511 characters. Costs one test when nobody wants it.
    static void debugLog(unsigned int level, const char* sourceFile, const char* moduleTag, unsigned int line,
                         const char* format, ...) __attribute__((format(printf, 5, 6)));

    /// Writes an application entry when `level` is at most the log's level; cut to 255 characters.
    static void appLog(unsigned int level, unsigned char category, const char* format, ...)
        __attribute__((format(printf, 3, 4)));
};

// A debug entry of the given level from this place in the source.
#define ZXPOL_DEBUG(level, ...) ZxRegDebug::debugLog((level), __FILE__, "-POLICY-", __LINE__, __VA_ARGS__)
