/*
 * zxbase.h - the host's small services that the policy library calls: the log, a read-write lock and
 * string helpers.
 *
 * Like zxregistry.h this header is a contract: libzxpolicy leaves these names undefined, and the
 * host's own library may be bound to them at load time. platform/base is one implementation;
 * platform/contract holds the tests that every implementation must pass.
 */
#ifndef ZXBASE_H
#define ZXBASE_H

#include <stdarg.h>
#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define ZXBASE_API __attribute__((visibility("default")))
#else
#define ZXBASE_API
#endif

#ifdef __cplusplus

/* Identifies a module of the product in the log; the policy library is module 2. */
enum ZxModuleID : uint32_t { ZX_MODULE_POLICY = 2 };

/*
 * The process's log. All operations may be called from any thread.
 *
 * The library under platform/base is steered by environment variables, read when the log is first
 * used:
 *   ZXBASE_LOG        where entries go: "stderr" (the default), "syslog", or "none"
 *   ZXBASE_LOG_LEVEL  application entries up to this level are written (0 to 9, default 1)
 *   ZXBASE_DEBUG      modules whose debug entries are wanted: numbers separated by commas, or "all";
 *                     none when unset
 * Control characters in messages, separators of lines, marks of writing direction and bytes that are no
 * UTF-8 are written as \xHH, so that an entry is always one line and shows what it says.
 */
class ZXBASE_API ZxIntLog {
public:
    /* Whether debug entries of `module` are wanted. Cheap: it stands on the matching path. */
    bool isEnabled(ZxModuleID module);

    /* The application log level: an entry is wanted when its level is at most this number. */
    unsigned int getLogLevel();

    /* Writes a debug entry. `text` is the message; `secondText` may be null; `flag` is not interpreted. */
    void writeDebugEntry(ZxModuleID module, unsigned int level, const char* sourceFile, const char* moduleTag,
                         unsigned int line, const char* text, const char* secondText, unsigned char flag);

    /* Writes an application entry of the given level and category. `secondText` may be null. */
    void writeWarnErrorEntry(unsigned int level, unsigned char category, const char* text, const char* secondText);
};

namespace KR {

/* A read-write lock: any number of readers, or one writer. Not recursive. */
class ZXBASE_API CRWLock {
public:
    /* `name` is for the host's diagnostics and may be null. */
    explicit CRWLock(const char* name);
    ~CRWLock();
    CRWLock(const CRWLock&) = delete;
    CRWLock& operator=(const CRWLock&) = delete;

    void StartReading();
    void EndReading();
    void StartWriting();
    void EndWriting();

private:
    void* _impl;
};

} /* namespace KR */

extern "C" {

/* The process's log; never null; not owned by the caller. */
ZXBASE_API ZxIntLog* grGetLog();

#endif /* __cplusplus */

/* Writes `value` in base `radix` (2 to 36, digits in lower case, a minus sign only in base 10) with its
 * NUL into `buffer`, which must be large enough (12 bytes in base 10, 34 in base 2). Returns `buffer`. */
ZXBASE_API char* kr_itoa(int value, char* buffer, int radix);

/* Compares without regard to ASCII case, by lower-cased bytes taken as unsigned: negative, 0 or
 * positive. Bytes from 0x80 on are compared as they are; the locale has no influence. */
ZXBASE_API int kr_stricmp(const char* a, const char* b);

/* The same over at most the first `n` characters. */
ZXBASE_API int kr_strnicmp(const char* a, const char* b, size_t n);

/* Lower-cases the ASCII letters of `text` in place and returns it. */
ZXBASE_API char* kr_strlwr(char* text);

/* Formats at most `size` - 1 characters into `buffer`, always with a NUL when `size` is not 0. Returns the
 * length that the whole text has, as vsnprintf does. */
ZXBASE_API int kr_vsnprintf(char* buffer, size_t size, const char* format, va_list arguments);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* ZXBASE_H */
