/*
 * zxregistry.h - the hierarchical key/value store that holds the policy.
 *
 * This header is a contract: libzxpolicy calls these functions and leaves them undefined, so that
 * the host's own store library, or a program that defines them itself, takes the store over at load
 * time. The library under platform/registry is one implementation; platform/contract holds the tests
 * that every implementation must pass.
 *
 * The model. A store is a tree of named keys. A key holds subkeys and named, typed values. Both are
 * enumerated in an order that is stable between changes; the library under platform/registry keeps
 * creation order.
 *
 * Names are NUL-terminated byte strings of at most 255 bytes. A name given to an operation on keys may
 * be a path of several names separated by a backslash, of any length; one trailing backslash is
 * ignored. The empty name, or a lone backslash, designates the key itself.
 *
 * Results. Every function takes a pointer to a signed 32-bit code as its last argument and writes it;
 * a failing code is negative (bit 31 set). Three reasons are fixed in the low 16 bits, whatever the
 * store: 6 (the caller's buffer is too small), 12 (an index is past the last item, or there is no
 * item), 0x1804 (the named key or value does not exist). On failure all other outputs are undefined
 * unless a function says otherwise. Unlike the policy interface, a code that the caller left in
 * *error is not looked at: every call runs. A null error pointer makes the call a no-op.
 *
 * Threads. Different handles may be used from different threads at once; one handle belongs to one
 * thread at a time.
 *
 * What the library under platform/registry adds. Names are told apart byte by byte, case included; a
 * name of a key is not empty and holds no backslash, that of a value may be any bytes, also none. A
 * number is refused unless it has 4 bytes; other data is kept as it is given. Outside an update, a
 * write that succeeded is durable. What another process has committed is seen by the next call; what
 * an update of this process has written so far is seen by all its threads. A store must not be
 * carried over a fork. A store whose file has been replaced under its name fails (IO) at the next write
 * and at the next change that it would bring in; it must be opened again.
 */
#ifndef ZXREGISTRY_H
#define ZXREGISTRY_H

#include <stdint.h>

#if defined(__GNUC__)
#define ZXREG_API __attribute__((visibility("default")))
#else
#define ZXREG_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* A handle as it crosses every interface of the product: what it designates, and the object. */
#ifndef ZX_COM_HANDLE_DEFINED
#define ZX_COM_HANDLE_DEFINED
typedef struct _ZxPolComHandle {
    uint32_t kind; /* 1 for an open store key */
    void* object;  /* the store's own; never touched by callers */
} _ZxPolComHandle;
#endif

/* The kind of every key handle. */
#ifndef ZXREG_HANDLE_KEY
#define ZXREG_HANDLE_KEY 1u
#endif

/* Value types. */
#define ZXREG_NUMBER 0u           /* a 32-bit number in the machine's byte order, always 4 bytes */
#define ZXREG_STRING 1u           /* a string with its terminating NUL */
#define ZXREG_PROTECTED_STRING 2u /* a string that the store keeps unreadable at rest */
#define ZXREG_MULTI_STRING 3u     /* NUL-terminated strings, closed by one more NUL */

/* Longest name of one key or value, in bytes, without the NUL. */
#define ZXREG_MAX_NAME 255u

/* Largest value that the store under platform/registry takes, in bytes. */
#define ZXREG_MAX_VALUE 0x4000000u

/* Result codes of the store under platform/registry. The first six share their numbers with the
 * policy library; the rest are reasons of the store's own. */
#define ZXREG_FAILURE (-0x7efe0000) /* 0x81020000: bit 31 and the facility */
#define ZXREG_S_OK 0x01020000
#define ZXREG_E_OUT_OF_MEMORY (ZXREG_FAILURE + 0x0005)
#define ZXREG_E_BUFFER_TOO_SMALL (ZXREG_FAILURE + 0x0006)
#define ZXREG_E_INVALID_ARG (ZXREG_FAILURE + 0x0008)
#define ZXREG_E_WRONG_HANDLE (ZXREG_FAILURE + 0x000b)
#define ZXREG_E_NO_MORE_ITEMS (ZXREG_FAILURE + 0x000c)
#define ZXREG_E_NOT_FOUND (ZXREG_FAILURE + 0x1804)
#define ZXREG_E_IO (ZXREG_FAILURE + 0x1901)         /* reading or writing failed, disk full included */
#define ZXREG_E_CORRUPT (ZXREG_FAILURE + 0x1902)    /* the store's data is damaged */
#define ZXREG_E_FOREIGN (ZXREG_FAILURE + 0x1903)    /* the file is no store of this kind or version */
#define ZXREG_E_NOT_EMPTY (ZXREG_FAILURE + 0x1904)  /* the key still has subkeys */
#define ZXREG_E_PERMISSION (ZXREG_FAILURE + 0x1905) /* not permitted, or the medium is read-only */
#define ZXREG_E_BUSY (ZXREG_FAILURE + 0x1906)       /* another writer held the store for too long */
#define ZXREG_E_DELETED (ZXREG_FAILURE + 0x1907)    /* the key of this handle has been deleted */
#define ZXREG_E_LOCATION (ZXREG_FAILURE + 0x1908)   /* the location names no known engine */
#define ZXREG_E_NO_UPDATE (ZXREG_FAILURE + 0x1909)  /* no update is open in this thread */
#define ZXREG_E_SECRET (ZXREG_FAILURE + 0x190a)     /* the key file is missing or foreign */
#define ZXREG_E_UNSAFE (ZXREG_FAILURE + 0x190b)     /* others may have changed the files, or read the key */

/* ---- the nine operations that the policy library requires ---------------------------------- */

/*
 * Opens the existing subkey `name` (a path) of `key`. Returns a new handle that the caller releases
 * with zxreg_closeKey, or null. NOT_FOUND when any level is missing.
 */
ZXREG_API _ZxPolComHandle* zxreg_openKey(_ZxPolComHandle* key, const char* name, int* error);

/*
 * Opens `name` below `key`, creating it when it does not exist. Of a path of several levels only the
 * last is made: NOT_FOUND when a level above it is missing. The empty name opens `key` itself.
 */
ZXREG_API _ZxPolComHandle* zxreg_createKey(_ZxPolComHandle* key, const char* name, int* error);

/* Releases the handle. Keys opened below it are not affected. */
ZXREG_API void zxreg_closeKey(_ZxPolComHandle* key, int* error);

/*
 * Deletes the subkey `name` of `key` with its values. A key that still has subkeys is left as it is
 * (NOT_EMPTY). The empty name is refused (INVALID_ARG). Handles still open on the key stay valid for
 * zxreg_closeKey, zxreg_endUpdate and zxreg_cancelUpdate; every other operation on them fails
 * (DELETED), also when a key of the same name is created again.
 */
ZXREG_API void zxreg_deleteKey(_ZxPolComHandle* key, const char* name, int* error);

/*
 * Reads the value `name`. `type` receives the value's type; `data` receives its bytes; `*size` is the
 * capacity of `data` on entry and the value's size on return, also with BUFFER_TOO_SMALL. `type` and
 * `data` may be null (a null `data` asks for the size only and is a success). SECRET when a protected
 * string's key is lost, while its type and size can still be asked for.
 */
ZXREG_API void zxreg_queryValue(_ZxPolComHandle* key, const char* name, uint32_t* type, void* data, uint32_t* size,
                                int* error);

/*
 * Creates or replaces the value `name` with `size` bytes of `data` and the given type. A value that is
 * replaced keeps its place in the order. INVALID_ARG for an unknown type, a number that has not 4
 * bytes, or more than ZXREG_MAX_VALUE bytes; `data` may be null when `size` is 0. SECRET when a
 * protected string cannot be sealed because the key file is lost.
 */
ZXREG_API void zxreg_setValue(_ZxPolComHandle* key, const char* name, uint32_t type, const void* data, uint32_t size,
                              int* error);

/* Deletes the value `name`. */
ZXREG_API void zxreg_deleteValue(_ZxPolComHandle* key, const char* name, int* error);

/*
 * Writes the name of the `index`-th subkey (zero-based) into `name`. `*size` is the buffer's capacity
 * in bytes on entry. On success it becomes the length of the name without the NUL; with
 * BUFFER_TOO_SMALL it becomes the length of the name without the NUL too, so that a caller who
 * allocates one byte more succeeds.
 */
ZXREG_API void zxreg_enumSubkey(_ZxPolComHandle* key, uint32_t index, char* name, uint32_t* size, int* error);

/*
 * The same for values; also returns the value's type, data and data size where the pointers are not
 * null. `*dataSize` is the capacity of `data` on entry and the value's size on return. Either buffer
 * being too small gives BUFFER_TOO_SMALL with both sizes written and nothing copied.
 */
ZXREG_API void zxreg_enumValue(_ZxPolComHandle* key, uint32_t index, char* name, uint32_t* nameSize, uint32_t* type,
                               void* data, uint32_t* dataSize, int* error);

/* ---- optional services: the policy library finds them as weak symbols and works without ------ */

/*
 * Opens an update of the store that `key` belongs to: the writes in between become durable together
 * when it ends. Updates nest in one thread; the outermost end makes them durable. A write of another
 * thread or process waits until the update has ended (BUSY when that takes too long: by default 5
 * seconds, or the milliseconds in the environment variable ZXREG_BUSY_LIMIT when the store is opened).
 * Reading never waits for it. An update is left by the thread that opened it; the last key of the
 * store closed takes it back. On a store that may only be read it opens, and the writes in it fail.
 */
ZXREG_API void zxreg_beginUpdate(_ZxPolComHandle* key, int* error);

/*
 * Ends the innermost update of this thread; `key` may be any key of the store. On failure of the
 * outermost end the update has ended and nothing since its beginning has been kept. A write that
 * failed because the engine failed (a full disk) makes the end fail, too; such a failure may show only
 * at a later write or at the end. NO_UPDATE when this thread has none open.
 */
ZXREG_API void zxreg_endUpdate(_ZxPolComHandle* key, int* error);

/* Ends the innermost update of this thread and takes everything since its beginning back. NO_UPDATE as
 * above. */
ZXREG_API void zxreg_cancelUpdate(_ZxPolComHandle* key, int* error);

/*
 * A number that is different whenever anything at or below `key` has changed, from any process, and
 * different for keys of different stores. It is comparable within one process only. 0 on failure.
 * While another thread's update is open in which something at or below `key` has been changed, each
 * call gives another number: nothing that is read then is known to stay.
 */
ZXREG_API uint64_t zxreg_stamp(_ZxPolComHandle* key, int* error);

/*
 * A number that designates the key itself for as long as it exists while its store is open in this
 * process: the same through every handle of the key and whatever changes at or below it, from any
 * process; different for every other key of this or any other store. It is not used again: a key that
 * is created anew under the same name, or found in a store that was closed and opened again, has
 * another one. A key whose deletion is taken back keeps its number. It is comparable within one process
 * only. 0 on failure (DELETED for a deleted key).
 */
ZXREG_API uint64_t zxreg_identity(_ZxPolComHandle* key, int* error);

/* ---- opening a store of the library under platform/registry ---------------------------------- */

/*
 * Opens a store and returns its root key (kind 1), to be released with zxreg_closeKey; the last key
 * closed closes the store. The same location opened twice in one process shares one tree.
 *
 *   memory:         a store of its own at every opening, gone with its last key
 *   memory:NAME     a store shared by all openings of NAME in this process while any key is open
 *   sqlite:PATH     a SQLite database, created when missing, with a key file PATH.key beside it
 *                   once a protected string is written; new files are the owner's alone (mode 0600),
 *                   whatever the umask
 *
 * The database, its log files and the key file must be regular files that belong to root or to the
 * effective user and that nobody else may write to; the key file must have no other access than its
 * owner's, no second name, and be no symbolic link. The folder must belong to root or to the effective user,
 * too, and not be writable by everybody, sticky bit or not; one that its group may write to is left to whoever
 * made it so. Anything else is UNSAFE, and zxreg_lastErrorText names the file and what mends it; but a PATH that is a
 * folder or a device is refused as what it is (PERMISSION, FOREIGN).
 *
 * Programs of several users share a store through the environment variable ZXREG_GROUP, the name or
 * number of a group: files of that group may have any owner, its members may read and write them, and
 * new files are made so (mode 0660). The folder should be of that group with mode 2770, so that log
 * files come to be of the group too. It must not lie below a folder that hands the group on (its setgid
 * bit) and that everybody may write to: what strangers make there is of the group, and believed. The
 * variable does not count in a program that runs with other rights than those of who started it.
 *
 * LOCATION for any other text; FOREIGN for a file that is no store of this version (an empty one too:
 * it may be what is left of a store), CORRUPT, PERMISSION, BUSY or IO when the file cannot be used. A
 * file that may only be read opens, and writes to it fail (PERMISSION). Without its key file a store
 * opens, and its protected strings do not (SECRET).
 */
ZXREG_API _ZxPolComHandle* zxreg_openStore(const char* location, int* error);

/*
 * A sentence on why the last call that failed in this thread failed (a file name, the engine's own
 * message), for tools to print; never null; valid until the next call in this thread.
 */
ZXREG_API const char* zxreg_lastErrorText(void);

#ifdef __cplusplus
}
#endif

#endif /* ZXREGISTRY_H */
