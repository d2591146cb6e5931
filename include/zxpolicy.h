/*
 * zxpolicy.h - the flat interface of libzxpolicy.
 *
 * The library keeps a mail-filtering policy in a hierarchical key/value store and answers which rule
 * applies to each receiver of a mail, and which tasks that rule asks for. C11 and C++17.
 *
 * WHAT EVERY FUNCTION SHARES
 *
 * Results. The last argument `error` points to a signed 32-bit result code. A null `error` makes the
 * call a no-op that returns 0 or null. A failure already held in *error makes it a no-op too, and the
 * failure stays: calls can be chained and tested once. (The closing and the freeing functions run all
 * the same.) Test codes with ZX_SUCCESS and ZX_FAILURE only. Besides the codes that a function lists,
 * every function that takes a handle gives
 *     ZXPOL_E_INVALID_ARG    the handle is null
 *     ZXPOL_E_WRONG_HANDLE   the handle is of another kind, or designates nothing
 * and any function may give ZXPOL_E_OUT_OF_MEMORY, ZXPOL_E_EXCEPTION for an unexpected internal failure,
 * or a code of the store, which passes through unchanged. Outputs are untouched on failure unless a
 * function says otherwise.
 *
 * Handles. A function that opens or creates returns a new handle only together with a success, else
 * null. The caller owns it and releases it with the close function named in its description. Objects
 * are independent of each other: closing a hive does not close what was opened through it. Store keys
 * (kind 1) belong to the store library; the library never keeps or closes the caller's.
 *
 * Texts are NUL-terminated byte strings. The arrays in attribute records hold their text with its NUL; a
 * setting function that finds an array without NUL writes nothing and gives ZXPOL_E_INVALID_ARG. A field
 * that a getting function fills is always NUL-terminated.
 *
 * Enumerations take a zero-based index, a buffer and `size`, the capacity in bytes on entry. They are
 * walked from index 0 upwards until the code's low 16 bits are 12 (ZXPOL_E_NO_MORE_ITEMS, or the store's
 * own). With ZXPOL_E_BUFFER_TOO_SMALL nothing is copied and the size needed is written to *size.
 *
 * Threads. The library starts no thread. A handle and what it designates belong to one thread at a time;
 * different handles may be used from different threads at once. zxpol_setDebugFunction and
 * zxpol_setMatchOption write process-wide data without a lock: call them before using the library from
 * several threads.
 */
#ifndef ZXPOLICY_H
#define ZXPOLICY_H

#include <stdbool.h>
#include <stdint.h>

#if defined(__GNUC__)
#define ZXPOL_API __attribute__((visibility("default")))
#else
#define ZXPOL_API
#endif

/* A 32-bit enumeration of the interface: any number may cross, unknown ones are refused or defaulted as
 * each function says. */
#ifdef __cplusplus
#define ZXPOL_ENUM(name) enum name : uint32_t
#define ZXPOL_ENUM_END(name)
#else
#define ZXPOL_ENUM(name) enum
#define ZXPOL_ENUM_END(name) typedef uint32_t name;
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- handles -------------------------------------------------------------------------------- */

/* A handle: what it designates, and the object. */
#ifndef ZX_COM_HANDLE_DEFINED
#define ZX_COM_HANDLE_DEFINED
typedef struct _ZxPolComHandle {
    uint32_t kind; /* one of the kinds below */
    void* object;  /* never touched by callers */
} _ZxPolComHandle;
#endif

/* Handle kinds. The high nibble groups by hive, the low one is the depth in the hive. */
#ifndef ZXREG_HANDLE_KEY
#define ZXREG_HANDLE_KEY 1u /* an open key of the store */
#endif
#define ZXPOL_HANDLE_ADDRLIST_HIVE 0x100u
#define ZXPOL_HANDLE_ADDRLIST 0x101u
#define ZXPOL_HANDLE_CLASS_HIVE 0x110u
#define ZXPOL_HANDLE_CLASSIFICATION 0x111u
#define ZXPOL_HANDLE_ACTION 0x112u
#define ZXPOL_HANDLE_RULE_HIVE 0x120u
#define ZXPOL_HANDLE_RULE 0x121u
#define ZXPOL_HANDLE_TASK 0x122u

/* ---- result codes --------------------------------------------------------------------------- */

/* Bit 31 set is a failure, bits 16 to 30 the facility 0x0102, the low 16 bits the reason. */
#define ZXPOL_FAILURE (-0x7efe0000) /* 0x81020000: bit 31 and the facility */
#define ZXPOL_S_OK 0x01020000
#define ZXPOL_E_NOT_SUPPORTED (ZXPOL_FAILURE + 0x0001)    /* not possible for this object or setting */
#define ZXPOL_E_EXCEPTION (ZXPOL_FAILURE + 0x0004)        /* an unexpected internal failure */
#define ZXPOL_E_OUT_OF_MEMORY (ZXPOL_FAILURE + 0x0005)    /* an allocation failed */
#define ZXPOL_E_BUFFER_TOO_SMALL (ZXPOL_FAILURE + 0x0006) /* the size needed was written back */
#define ZXPOL_E_INVALID_ARG (ZXPOL_FAILURE + 0x0008)      /* null, empty, zero or out of range */
#define ZXPOL_E_CONVERSION (ZXPOL_FAILURE + 0x0009)       /* a code-page conversion failed */
#define ZXPOL_E_INVALID_FORMAT (ZXPOL_FAILURE + 0x000a)   /* a malformed address, condition, path or value */
#define ZXPOL_E_WRONG_HANDLE (ZXPOL_FAILURE + 0x000b)     /* a handle of another kind, or of nothing */
#define ZXPOL_E_NO_MORE_ITEMS (ZXPOL_FAILURE + 0x000c)    /* an index past the last item */
#define ZXPOL_E_FILE_OPEN (ZXPOL_FAILURE + 0x0018)        /* an import file could not be opened */
#define ZXPOL_E_FILE_READ (ZXPOL_FAILURE + 0x001a)        /* an import file could not be read */
#define ZXPOL_E_NOT_FOUND (ZXPOL_FAILURE + 0x1804)        /* the named item does not exist */
#define ZXPOL_E_ALREADY_EXISTS (ZXPOL_FAILURE + 0x1805)   /* the item exists already */
#define ZXPOL_E_PARSE (ZXPOL_FAILURE + 0x1806)            /* the input cannot be parsed */
#define ZXPOL_E_VERSION (ZXPOL_FAILURE + 0x1807)          /* the store's policy is of a later major version */
#define ZXPOL_E_CONDITION_CHECK (ZXPOL_FAILURE + 0x1809)  /* conditions failed the check against the parent rule */

/* True when `code` is no failure (bit 31 clear). */
ZXPOL_API int ZX_SUCCESS(int code);

/* True when `code` is a failure (bit 31 set). */
ZXPOL_API int ZX_FAILURE(int code);

/* ---- records and enumerations --------------------------------------------------------------- */

/* Widths of text fields, NUL included. */
#define ZXPOL_NAME_SIZE 256
#define ZXPOL_COMMENT_SIZE 512
#define ZXPOL_ADDRESS_SIZE 512
#define ZXPOL_FILTER_SIZE 1024

/* The attributes that every named object has; the head of the larger records. */
typedef struct _ZxPolCommAttrib {
    char displayName[ZXPOL_NAME_SIZE]; /* "displayName": the name shown to users */
    char comment[ZXPOL_COMMENT_SIZE];  /* "comment": free text */
} _ZxPolCommAttrib;

/* The attributes of a rule. */
typedef struct _ZxPolRuleAttr {
    char displayName[ZXPOL_NAME_SIZE];
    char comment[ZXPOL_COMMENT_SIZE];
    uint32_t order;    /* "order": 1-based position among the siblings; the wanted one on creation */
    int32_t matchType; /* "matchType": how conditions are matched; never negative; 0 is a mail's address pairs */
} _ZxPolRuleAttr;

/* The attributes of a task. */
typedef struct _ZxPolTaskAttr {
    char displayName[ZXPOL_NAME_SIZE];
    char comment[ZXPOL_COMMENT_SIZE];
    uint32_t order;           /* "order": 1-based position among the rule's tasks; the wanted one on creation */
    uint32_t filter;          /* "filter": the filter type, compared with the exclusive filter types */
    int32_t enable;           /* "enable": 0 or 1, whether the task is on */
    int32_t overridable;      /* "overridable": 0 or 1, whether rules below may switch the task off */
    _ZxPolComHandle* setting; /* read only: the open key "setting", which the caller closes with zxreg_closeKey */
} _ZxPolTaskAttr;

/* The attributes of an address list. The fields after `type` are those of directory lists. */
typedef struct _ZxPolAddrListAttr {
    char displayName[ZXPOL_NAME_SIZE];
    char comment[ZXPOL_COMMENT_SIZE];
    uint32_t type;                    /* "type": 0 normal list, 1 directory list */
    char server[ZXPOL_NAME_SIZE];     /* "server": the directory server */
    uint32_t port;                    /* "port": kept as given */
    char searchroot[ZXPOL_NAME_SIZE]; /* "searchroot" */
    uint32_t authentication;          /* "authentication": kept as given */
    uint32_t schematype;              /* "schematype": kept as given */
    char username[ZXPOL_NAME_SIZE];   /* "username" */
    char password[40];                /* "password": stored protected; read back as "secret" */
    char filter[ZXPOL_FILTER_SIZE];   /* "filter": the search filter */
} _ZxPolAddrListAttr;

/* The attributes of an action. */
typedef struct _ZxPolActionAttr {
    char displayName[ZXPOL_NAME_SIZE];
    char comment[ZXPOL_COMMENT_SIZE];
    uint32_t order;           /* "order": 1-based position among the actions; the wanted one on creation */
    uint32_t actionType;      /* "actionType": what the action is; a number of the caller's */
    _ZxPolComHandle* setting; /* read only: the open key "setting", which the caller closes with zxreg_closeKey */
} _ZxPolActionAttr;

/* List kinds, as in _ZxPolAddrListAttr::type. */
#define ZXPOL_ADDRLIST_NORMAL 0u
#define ZXPOL_ADDRLIST_DIRECTORY 1u

/*
 * One condition of a rule: a mail matches when its sender matches the one side and its receiver the
 * other. A side is "(" NAME ")", a reference to the address list NAME, or an address pattern: a full
 * address, *, *@*, name@*, *@domain, name@*.domain, *@*.domain, name@[*] or *@[*]. Crosses the interface as
 * unsigned char*; lists of conditions are arrays of pointers closed by a null pointer.
 */
typedef struct _ZxPolAddrPairCond {
    char sender[ZXPOL_ADDRESS_SIZE];
    char receiver[ZXPOL_ADDRESS_SIZE];
} _ZxPolAddrPairCond;

/* An entry of a list of conflicting conditions, released with zxpol_freeErrorConds. */
typedef struct _ZxPolErrorCond {
    char* ruleName;        /* the full path of the rule concerned; the root's is the empty string */
    unsigned char** conds; /* its conditions concerned: _ZxPolAddrPairCond records, closed by a null pointer */
} _ZxPolErrorCond;

/* How conditions are checked against the rule tree when they change. */
ZXPOL_ENUM(ZxPolCondCheck){
    ZXPOL_COND_CHECK_NONE = 0,      /* change the rule's conditions and nothing else */
    ZXPOL_COND_CHECK_HIERARCHY = 1, /* check against the parent; afterwards remove what descendants lost cover for */
};
ZXPOL_ENUM_END(ZxPolCondCheck)

/* Which of the tasks of an exclusive filter type survives. */
ZXPOL_ENUM(ZxPolFilterPriorityType){
    ZXPOL_FILTER_ASC_EXCLUSIVE = 0,  /* the first: nearest the root, earliest in its rule */
    ZXPOL_FILTER_DESC_EXCLUSIVE = 1, /* the last: nearest the matched rule, latest in its rule */
};
ZXPOL_ENUM_END(ZxPolFilterPriorityType)

/* How the weights of two matches are compared. Unknown numbers act as 0. */
ZXPOL_ENUM(ZxPolMatchPriorityType){
    ZXPOL_PRIORITY_TOTAL = 0,          /* the sum of both sides */
    ZXPOL_PRIORITY_SENDER_FIRST = 1,   /* the sender's class, then the sum */
    ZXPOL_PRIORITY_RECEIVER_FIRST = 2, /* the receiver's class, then the sum */
};
ZXPOL_ENUM_END(ZxPolMatchPriorityType)

/* What weighs more in a pattern. Unknown numbers act as 0. */
ZXPOL_ENUM(ZxPolMatchWeightType){
    ZXPOL_WEIGHT_DOMAIN_FIRST = 0, /* *@domain above name@*.domain */
    ZXPOL_WEIGHT_NAME_FIRST = 1,   /* name@*.domain above *@domain */
};
ZXPOL_ENUM_END(ZxPolMatchWeightType)

/* What zxpol_checkReferInRule looks for. Any other number is referred to by no rule. */
ZXPOL_ENUM(ZxPolRefEntity){
    ZXPOL_REF_ADDRLIST = 0,       /* an address list, which conditions refer to */
    ZXPOL_REF_CLASSIFICATION = 1, /* a classification, which texts of outcomes refer to */
};
ZXPOL_ENUM_END(ZxPolRefEntity)

/* Options of the matching functions. */
typedef struct _ZxPolMatchOption {
    uint32_t matchMode;    /* 0 first match, else best match */
    uint32_t priorityType; /* a ZxPolMatchPriorityType */
    uint32_t weightType;   /* a ZxPolMatchWeightType */
    uint32_t reserved1;    /* kept, not read */
    uint32_t reserved2;    /* kept, not read */
} _ZxPolMatchOption;

/* One matched rule of a mail, released with zxpol_freeMatchPair. */
typedef struct _ZxPolMatchPair {
    char** receivers;        /* the caller's own receiver strings that matched this rule, closed by a null pointer */
    _ZxPolComHandle** tasks; /* handles of the tasks to apply, in order; null when there are none */
    uint32_t taskCount;      /* the number of entries in tasks */
    char* rulePath;          /* the rule's path: \ for the root, \A\B for B below A */
} _ZxPolMatchPair;

/* Receives the text of one debug message. */
typedef void (*ZxPolDebugFunction)(const char* message);

/* ---- library and store version, diagnostics --------------------------------------------------- */

/* Writes the library's version, 1, 2, 0 and 1229, to those of the four pointers that are not null. */
ZXPOL_API void libzxpolicy(unsigned* major, unsigned* minor, unsigned* patch, unsigned* build);

/*
 * The version of the policy below the store key `key` (the major version is its top byte), also when it
 * is one that the library does not support. A store that has none yet is stamped with 0x01000000.
 */
ZXPOL_API uint32_t zxpol_getVersion(_ZxPolComHandle* key, int* error);

/*
 * Reads the number "version" of `key` into *version (which may be null); false when its major version is
 * above 1. A missing or unreadable version is replaced by 0x01000000. *error is neither read nor written.
 */
ZXPOL_API bool checkVersion(_ZxPolComHandle* key, int* error, uint32_t* version);

/* Allocates a handle of `kind` for `object`; null when there is no memory. */
ZXPOL_API _ZxPolComHandle* makeHandle(void* object, uint32_t kind);

/*
 * Sends the text of every debug message to `function` instead of the log; null switches back to the log.
 * Returns the function installed before, or null. ZXPOL_S_OK.
 */
ZXPOL_API ZxPolDebugFunction zxpol_setDebugFunction(ZxPolDebugFunction function, int* error);

/* ---- rule hive ---------------------------------------------------------------------------------- */

/*
 * Opens the rule hive below the store key `key`, making it and its root rule (one condition, * to *) when
 * missing. `hiveType` must be 0. Close with zxpol_closeRuleHive.
 *     ZXPOL_E_VERSION         the store holds a policy of a later major version
 *     ZXPOL_E_NOT_SUPPORTED   `hiveType` is not 0 (the store's version is stamped all the same)
 */
ZXPOL_API _ZxPolComHandle* zxpol_openRuleHive(_ZxPolComHandle* key, int hiveType, int* error);

/* Closes the hive, also when *error holds a failure; ZXPOL_S_OK then. Rules opened through it stay usable. */
ZXPOL_API void zxpol_closeRuleHive(_ZxPolComHandle* hive, int* error);

/* Opens the root rule. Close with zxpol_closeRule. */
ZXPOL_API _ZxPolComHandle* zxpol_openRootRule(_ZxPolComHandle* hive, int* error);

/*
 * Opens the rule with the full path `path`: \ is the root, \A\B the child B of the root's child A; one
 * trailing backslash is ignored. Close with zxpol_closeRule.
 *     ZXPOL_E_INVALID_ARG      null or empty path
 *     ZXPOL_E_INVALID_FORMAT   the path does not begin with a backslash
 */
ZXPOL_API _ZxPolComHandle* zxpol_openRuleByFullName(_ZxPolComHandle* hive, const char* path, int* error);

/*
 * Makes the filter type `filterId` exclusive, or changes how.
 *     ZXPOL_E_INVALID_ARG   `type` is neither 0 nor 1; nothing is written
 */
ZXPOL_API void zxpol_setExclusiveFilterType(_ZxPolComHandle* hive, uint32_t filterId, ZxPolFilterPriorityType type,
                                            int* error);

/* Makes the filter type `filterId` an ordinary one. The store's not-found code when it was not exclusive. */
ZXPOL_API void zxpol_removeExclusiveFilterType(_ZxPolComHandle* hive, uint32_t filterId, int* error);

/*
 * The `index`-th exclusive filter type in the store's order.
 *     ZXPOL_E_INVALID_ARG   `filterId` or `type` is null
 *     the store's end-of-enumeration code past the last one
 */
ZXPOL_API void zxpol_enumExclusiveFilterType(_ZxPolComHandle* hive, uint32_t index, uint32_t* filterId,
                                             ZxPolFilterPriorityType* type, int* error);

/* ---- rules -------------------------------------------------------------------------------------- */

/*
 * Creates the child rule `name` with the attributes and conditions given, or opens an existing one and
 * changes its attributes and adds the conditions. `attr->order` is the wanted position (0 or one past the
 * end appends); the position given to a new rule is written back to it. The conditions are checked against the parent
 * rule. Close with zxpol_closeRule.
 *     ZXPOL_E_INVALID_ARG       null name, record or conditions; empty name; negative matchType or order;
 *                               a text field without NUL
 *     ZXPOL_E_NOT_SUPPORTED     matchType is not 0
 *     ZXPOL_E_CONDITION_CHECK   a condition is not covered by the parent's
 *     ZXPOL_E_INVALID_FORMAT    a condition is malformed; the others were written
 * When the conditions fail, the child without them stays in the store.
 */
ZXPOL_API _ZxPolComHandle* zxpol_createRule(_ZxPolComHandle* parent, const char* name, _ZxPolRuleAttr* attr,
                                            const unsigned char** conditions, int* error);

/* Opens the child rule `name`. Close with zxpol_closeRule. ZXPOL_E_INVALID_ARG: null or empty name. */
ZXPOL_API _ZxPolComHandle* zxpol_openRule(_ZxPolComHandle* parent, const char* name, int* error);

/* Closes a rule, also when *error holds a failure; ZXPOL_S_OK then. */
ZXPOL_API void zxpol_closeRule(_ZxPolComHandle* rule, int* error);

/* Deletes the child rule `name` with all below it; its later siblings move up. ZXPOL_E_INVALID_ARG: null or
 * empty name. */
ZXPOL_API void zxpol_deleteRule(_ZxPolComHandle* parent, const char* name, int* error);

/*
 * The own name of the `index`-th child rule by position. Index 0 reads the store, the others what index 0
 * read. *size becomes the name's length with its NUL.
 *     ZXPOL_E_INVALID_ARG     null buffer or size
 *     ZXPOL_E_NO_MORE_ITEMS   past the last child
 */
ZXPOL_API void zxpol_enumRule(_ZxPolComHandle* parent, uint32_t index, char* buffer, uint32_t* size, int* error);

/*
 * Reads the rule's attributes. The result is that of the comment, when that cannot be read, else that of the match
 * type: a display name that cannot be read is empty, a position keeps what the record held. ZXPOL_E_INVALID_ARG: null
 * record.
 */
ZXPOL_API void zxpol_getRuleAttrib(_ZxPolComHandle* rule, _ZxPolRuleAttr* attr, int* error);

/* Writes the rule's attributes but its position. ZXPOL_E_INVALID_ARG: null record, negative matchType, a text
 * field without NUL. */
ZXPOL_API void zxpol_setRuleAttrib(_ZxPolComHandle* rule, const _ZxPolRuleAttr* attr, int* error);

/*
 * Moves the child `name` to `position` (1-based; past the end is the end).
 *     ZXPOL_E_INVALID_ARG   null or empty name, position below 1
 *     ZXPOL_E_EXCEPTION     the child has no position
 */
ZXPOL_API void zxpol_setRuleOrder(_ZxPolComHandle* parent, const char* name, uint32_t position, int* error);

/* ---- conditions: all give ZXPOL_E_NOT_SUPPORTED for a rule whose matchType is not 0 ----------------- */

/*
 * Reads the rule's `index`-th condition into the _ZxPolAddrPairCond at `pair`. *size is its size, at least
 * 1024. Index 0 reads the store. A stored text without a comma leaves the
 * record as it was; one with a side above 511 characters gives two empty sides.
 *     ZXPOL_E_INVALID_ARG        null record or size
 *     ZXPOL_E_BUFFER_TOO_SMALL   *size was below 1024 and is 1024 now
 *     ZXPOL_E_NO_MORE_ITEMS      past the last condition
 *     ZXPOL_E_INVALID_FORMAT     a stored condition is not of the string type
 */
ZXPOL_API void zxpol_enumCondition(_ZxPolComHandle* rule, uint32_t index, unsigned char* pair, uint32_t* size,
                                   int* error);

/*
 * Adds one condition, without looking at other rules. One that is there already (case ignored) is no error.
 *     ZXPOL_E_INVALID_ARG      null pair
 *     ZXPOL_E_INVALID_FORMAT   the pair is malformed
 */
ZXPOL_API void zxpol_addCondition(_ZxPolComHandle* rule, const unsigned char* pair, int* error);

/*
 * Removes one condition, without looking at other rules.
 *     ZXPOL_E_INVALID_ARG   null pair
 *     ZXPOL_E_NOT_FOUND     the rule has no such condition
 */
ZXPOL_API void zxpol_removeCondition(_ZxPolComHandle* rule, const unsigned char* pair, int* error);

/*
 * Adds a list of conditions. With `mode` not 0 all are first checked against the parent rule. *errorConds
 * (may be null) receives null, or the uncovered conditions; release with zxpol_freeErrorConds.
 *     ZXPOL_E_INVALID_ARG       null list
 *     ZXPOL_E_CONDITION_CHECK   some are not covered by the parent's conditions; nothing was written
 *     ZXPOL_E_INVALID_FORMAT    some are malformed; the others were written
 */
ZXPOL_API void zxpol_addConditionEx(_ZxPolComHandle* rule, const unsigned char** conditions, ZxPolCondCheck mode,
                                    _ZxPolErrorCond*** errorConds, int* error);

/*
 * Removes a list of conditions. With `mode` not 0 the conditions of descendants that lost their cover are
 * removed too and, where `errorConds` is not null, listed in *errorConds.
 *     ZXPOL_E_INVALID_ARG   null list
 *     ZXPOL_E_NOT_FOUND     the rule lacks one of them; those before it are removed
 */
ZXPOL_API void zxpol_removeConditionEx(_ZxPolComHandle* rule, const unsigned char** conditions, ZxPolCondCheck mode,
                                       _ZxPolErrorCond*** errorConds, int* error);

/*
 * Replaces the conditions at the given enumeration indices (an array parallel to the list), or, with null
 * `indices`, all of them. With `mode` not 0 the new ones are checked against the parent, and descendants
 * cleaned up, as above.
 *     ZXPOL_E_INVALID_ARG       null list, or an index of 2^31 - 1 or above
 *     ZXPOL_E_CONDITION_CHECK   some are not covered by the parent's conditions; nothing was written
 *     ZXPOL_E_ALREADY_EXISTS    another condition equals a new one
 *     ZXPOL_E_INVALID_FORMAT    some are malformed; the others were written
 */
ZXPOL_API void zxpol_updateConditionEx(_ZxPolComHandle* rule, const uint32_t* indices, const unsigned char** conditions,
                                       ZxPolCondCheck mode, _ZxPolErrorCond*** errorConds, int* error);

/*
 * Releases a list that one of the three functions above returned, also when *error holds a failure or
 * `error` is null. *error is written only for a null list: ZXPOL_E_INVALID_ARG.
 */
ZXPOL_API void zxpol_freeErrorConds(_ZxPolErrorCond** errorConds, int* error);

/* ---- tasks and outcomes --------------------------------------------------------------------------- */

/*
 * Creates the task `name` of a rule, or opens an existing one and changes its attributes. `attr->order` is the
 * wanted position (0 or one past the end appends); the position given to a new task is written back to it. Close with
 * zxpol_closeTask.
 *     ZXPOL_E_INVALID_ARG   null name or record, empty name, enable or overridable neither 0 nor 1, negative
 *                           order, a text field without NUL; nothing is created
 */
ZXPOL_API _ZxPolComHandle* zxpol_createTask(_ZxPolComHandle* rule, const char* name, _ZxPolTaskAttr* attr, int* error);

/* Opens the task `name` of a rule. Close with zxpol_closeTask. ZXPOL_E_INVALID_ARG: null or empty name. */
ZXPOL_API _ZxPolComHandle* zxpol_openTask(_ZxPolComHandle* rule, const char* name, int* error);

/* Closes a task, also when *error holds a failure; ZXPOL_S_OK then. */
ZXPOL_API void zxpol_closeTask(_ZxPolComHandle* task, int* error);

/*
 * Deletes the task `name` and the inactive marks that this rule and the rules below it have for it.
 *     ZXPOL_E_INVALID_ARG   null or empty name; or, with the task deleted, a full name above 255 characters, for which
 *                           there can be no marks
 */
ZXPOL_API void zxpol_deleteTask(_ZxPolComHandle* rule, const char* name, int* error);

/* The name of the rule's `index`-th task by position; as zxpol_enumRule. */
ZXPOL_API void zxpol_enumTask(_ZxPolComHandle* rule, uint32_t index, char* buffer, uint32_t* size, int* error);

/* Moves the task `name` to `position`; as zxpol_setRuleOrder. */
ZXPOL_API void zxpol_setTaskOrder(_ZxPolComHandle* rule, const char* name, uint32_t position, int* error);

/*
 * Reads the task's attributes and opens its key "setting" into attr->setting, a new handle at each call that
 * the caller closes with zxreg_closeKey. ZXPOL_E_INVALID_ARG: null record. The result is that of the last
 * step, the opening of "setting" (attr->setting is null when that fails).
 */
ZXPOL_API void zxpol_getTaskAttrib(_ZxPolComHandle* task, _ZxPolTaskAttr* attr, int* error);

/* Writes the task's attributes but its position and setting. ZXPOL_E_INVALID_ARG: null record, enable or
 * overridable neither 0 nor 1, a text field without NUL. */
ZXPOL_API void zxpol_setTaskAttrib(_ZxPolComHandle* task, const _ZxPolTaskAttr* attr, int* error);

/*
 * With `activate` 1 removes the rule's mark that switches the task off, else makes one. A task's full name
 * is its rule's path, a backslash (not doubled after the root's) and the task's name, at most 255
 * characters; it need not exist. Marking twice or removing no mark is a success that writes nothing.
 *     ZXPOL_E_INVALID_ARG   null, empty or longer name
 */
ZXPOL_API void zxpol_inactivateTask(_ZxPolComHandle* rule, const char* taskFullName, int activate, int* error);

/*
 * 1 when the rule has no inactive mark for the task (case and one trailing backslash ignored), else 0. A
 * failure of the store to give the marks is reported and answered with 1. ZXPOL_E_INVALID_ARG and 0: null, empty or
 * longer name.
 */
ZXPOL_API int zxpol_isTaskActive(_ZxPolComHandle* rule, const char* taskFullName, int* error);

/*
 * Reads the text of the outcome `name` into `value` (null: ask for the size only); *size is the capacity on entry and
 * the text's size with its NUL on return. ZXPOL_E_INVALID_ARG: null or empty name, null size. The store's codes for a
 * missing outcome (0x1804 in the low 16 bits) and a small buffer (6).
 */
ZXPOL_API void zxpol_getOutcome(_ZxPolComHandle* task, const char* name, char* value, uint32_t* size, int* error);

/* Sets the outcome `name` to `value`. ZXPOL_E_INVALID_ARG: null or empty name or value. */
ZXPOL_API void zxpol_addOutcome(_ZxPolComHandle* task, const char* name, const char* value, int* error);

/* Deletes the outcome `name`. ZXPOL_E_INVALID_ARG: null or empty name. */
ZXPOL_API void zxpol_deleteOutcome(_ZxPolComHandle* task, const char* name, int* error);

/*
 * The `index`-th outcome in the store's order: its name and text. Both sizes are capacities on entry. On
 * return *nameSize is the length without NUL and *valueSize the size of the text with its NUL, as the store
 * has them. `value` may be null. ZXPOL_E_INVALID_ARG: null name or size. The store's code past the end (12 in the low
 * 16 bits).
 */
ZXPOL_API void zxpol_enumOutcome(_ZxPolComHandle* task, uint32_t index, char* name, uint32_t* nameSize, char* value,
                                 uint32_t* valueSize, int* error);

/* ---- matching --------------------------------------------------------------------------------------- */

/*
 * Finds, for each receiver of a mail, the first rule that applies, a rule's children before the rule itself,
 * with default weights. `sender` is an address, the empty string for the null sender; `receivers` is an
 * array of addresses closed by a null pointer. *pairs receives an array of *count records, one per matched
 * rule in the order of first match; receivers that match no rule are in none. Without any match *pairs is
 * null. Release with zxpol_freeMatchPair, while the caller's receivers still exist.
 *     ZXPOL_E_INVALID_ARG   null sender, receivers, pairs or count
 * When matching fails, *pairs is null and *count 0; a call that is refused leaves both untouched. A rule that cannot be
 * checked is skipped, but for the root.
 */
ZXPOL_API void zxpol_matchRuleByMailInfo(_ZxPolComHandle* ruleHive, _ZxPolComHandle* addrListHive, const char* sender,
                                         const char** receivers, _ZxPolMatchPair** pairs, uint32_t* count, int* error);

/*
 * As above with `mode` 0. With any other mode finds the best match: at each level, from the root down, the
 * matching child of the highest priority, compared as zxpol_setMatchOption said.
 */
ZXPOL_API void zxpol_matchRuleByMailInfoEx(_ZxPolComHandle* ruleHive, _ZxPolComHandle* addrListHive, uint32_t mode,
                                           const char* sender, const char** receivers, _ZxPolMatchPair** pairs,
                                           uint32_t* count, int* error);

/*
 * Sets the process-wide options of best matching. The match mode is kept as 1 whatever is passed; unknown
 * priority and weight types become 0. ZXPOL_E_INVALID_ARG: null option.
 */
ZXPOL_API void zxpol_setMatchOption(const _ZxPolMatchOption* option, int* error);

/*
 * Releases the records of a match with their task handles, also when *error holds a failure or `error` is
 * null. A null `pairs` is nothing to release. *error is not written.
 */
ZXPOL_API void zxpol_freeMatchPair(_ZxPolMatchPair* pairs, uint32_t count, int* error);

/* ---- address lists ------------------------------------------------------------------------------------ */

/*
 * A normal list holds its addresses in the store and, for all handles in the process together, in memory. Any number of
 * threads may use a list at once, each through its own handle; changes are made one after the other. A handle sees what
 * this process changes; what another process has changed is seen by the handles that are opened afterwards. Every
 * change is durable when its call returns, as one, where the store has updates.
 */

/*
 * Opens the address-list hive below the store key `key`, making it when missing. Close with
 * zxpol_closeAddrListHive. ZXPOL_E_VERSION: the store holds a policy of a later major version.
 */
ZXPOL_API _ZxPolComHandle* zxpol_openAddrListHive(_ZxPolComHandle* key, int* error);

/* Closes the hive, also when *error holds a failure; ZXPOL_S_OK then. */
ZXPOL_API void zxpol_closeAddrListHive(_ZxPolComHandle* hive, int* error);

/*
 * Creates the list `name` with the attributes given, or opens an existing one and changes its attributes. Close with
 * zxpol_closeAddrList.
 *     ZXPOL_E_INVALID_ARG   null or empty name, null record, a type other than 0 and 1, a text field without NUL (of a
 *                           normal list the fields after `type` are not looked at)
 * When writing the attributes fails, the list's key stays in the store.
 */
ZXPOL_API _ZxPolComHandle* zxpol_createAddrList(_ZxPolComHandle* hive, const char* name, const _ZxPolAddrListAttr* attr,
                                                int* error);

/*
 * Opens the list `name`. Close with zxpol_closeAddrList. The first opening of a normal list in the process, and the
 * first after another process has changed it, read all of its addresses. ZXPOL_E_INVALID_ARG      null or empty name
 *     ZXPOL_E_INVALID_FORMAT   its type is neither 0 nor 1, or a value that should hold addresses is no multi-string
 *     the store's result when its type or a part of its addresses cannot be read; its buffer-too-small result for
 *     addresses in a value of more than 2048 bytes
 */
ZXPOL_API _ZxPolComHandle* zxpol_openAddrList(_ZxPolComHandle* hive, const char* name, int* error);

/*
 * The name of the `index`-th list in the store's order; *size as the store writes it.
 *     ZXPOL_E_INVALID_ARG   null buffer or size
 */
ZXPOL_API void zxpol_enumAddrList(_ZxPolComHandle* hive, uint32_t index, char* buffer, uint32_t* size, int* error);

/*
 * Deletes the list `name`. Handles that are open on it keep the addresses that they had in memory and fail to change
 * them. ZXPOL_E_INVALID_ARG: null or empty name.
 */
ZXPOL_API void zxpol_deleteAddrList(_ZxPolComHandle* hive, const char* name, int* error);

/*
 * Tells whether the hive holds a list: ZXPOL_S_OK, or the store's end-of-enumeration code when it holds none,
 * or its buffer-too-small code when the first list's name is 256 bytes or longer. Nothing is refreshed.
 */
ZXPOL_API void zxpol_refreshLdapCache(_ZxPolComHandle* hive, int* error);

/* Closes a list, also when *error holds a failure; ZXPOL_S_OK then. */
ZXPOL_API void zxpol_closeAddrList(_ZxPolComHandle* list, int* error);

/*
 * Reads the list's attributes. ZXPOL_E_INVALID_ARG: null record. Fields read before a failure are filled. Of a normal
 * list the fields after `type` stay as they are. Of a directory list the password is read as "secret", a field whose
 * stored value is of another type keeps what it held, and a display name or a comment that cannot be read is passed
 * over.
 */
ZXPOL_API void zxpol_getAddrListAttrib(_ZxPolComHandle* list, _ZxPolAddrListAttr* attr, int* error);

/*
 * Writes the list's attributes, one after the other until one fails; of a directory list a display name or a comment
 * that cannot be written is passed over. ZXPOL_E_INVALID_ARG: null record, a text field without NUL, or for a normal
 * list a type other than 0. Writing type 0 to a directory list makes it a normal list when it is next opened.
 */
ZXPOL_API void zxpol_setAddrListAttrib(_ZxPolComHandle* list, const _ZxPolAddrListAttr* attr, int* error);

/* The four functions on addresses give ZXPOL_E_NOT_SUPPORTED for a directory list, whatever the arguments. */

/*
 * Inserts the addresses of an array closed by a null pointer, in their order. An address is a full mail address or a
 * pattern as in a condition, of at most 511 characters. Addresses that the list holds already, letter case and the
 * quotes around words of the local part ignored, are passed over without a failure. ZXPOL_E_INVALID_ARG      null or
 * empty array ZXPOL_E_INVALID_FORMAT   some addresses were invalid; the others are in the list the store's result when
 * it fails; the addresses before that stay The array and its texts are only read, and not needed any more afterwards.
 */
ZXPOL_API void zxpol_insertAddress(_ZxPolComHandle* list, const char** addresses, int* error);

/*
 * Removes the addresses of an array closed by a null pointer. They are compared as they are stored, letter case
 * ignored. ZXPOL_E_INVALID_ARG   null or empty array ZXPOL_E_NOT_FOUND     some addresses were not in the list; the
 * others are gone the store's result when it fails; the addresses before that are gone
 */
ZXPOL_API void zxpol_removeAddress(_ZxPolComHandle* list, const char** addresses, int* error);

/*
 * Inserts the addresses in the file `path`. `format` 0: each line that is not blank is an address. 1: a directory
 * export; the lines "mail: ADDRESS" and "rfc822mailbox: ADDRESS" hold addresses, in any letter case, lines are neither
 * joined nor decoded, and all others are passed over. `replace` 1: all addresses in the list go when the first of the
 * file has been read; 0: they stay. Blanks, tabs and line ends around an address do not belong to it; a NUL ends its
 * line's text. ZXPOL_E_INVALID_ARG      null or empty path, a path of 260 bytes or more, another `format` or `replace`
 *     ZXPOL_E_FILE_OPEN        the file cannot be opened
 *     ZXPOL_E_FILE_READ        reading failed, or the path is a directory
 *     ZXPOL_E_PARSE            a line has more than 511 characters that are not blanks at its end
 *     ZXPOL_E_INVALID_FORMAT   some addresses were invalid, and the others are in the list; or the file has none, and
 * the list is as it was the store's result when inserting the last addresses, or removing the old ones, failed
 * Addresses are inserted about 2,000 at a time: what was inserted before a failure stays.
 */
ZXPOL_API void zxpol_importAddress(_ZxPolComHandle* list, uint32_t format, uint32_t replace, const char* path,
                                   int* error);

/*
 * The `index`-th address. *size is the buffer's capacity on entry and the address's length with NUL on return, also
 * when that is too much. The order is that of insertion, unless the environment variable "order" is set to anything but
 * "user": "decending" (spelled so) asks for the descending order, any other text for the ascending one. Patterns come
 * before full addresses in both; the descending order leaves out the full address that comes last in the ascending one.
 * The sorted orders are made when they are first asked for after a change. ZXPOL_E_INVALID_ARG        null buffer or
 * size ZXPOL_E_BUFFER_TOO_SMALL   nothing is copied ZXPOL_E_NO_MORE_ITEMS      past the end
 */
ZXPOL_API void zxpol_enumAddress(_ZxPolComHandle* list, uint32_t index, char* buffer, uint32_t* size, int* error);

/* ---- classifications and actions ---------------------------------------------------------------------- */

/*
 * Opens the classification hive below the store key `key`, making it when missing. Close with
 * zxpol_closeClassificationHive. ZXPOL_E_VERSION: the store holds a policy of a later major version.
 */
ZXPOL_API _ZxPolComHandle* zxpol_openClassificationHive(_ZxPolComHandle* key, int* error);

/* Closes the hive, also when *error holds a failure; ZXPOL_S_OK then. */
ZXPOL_API void zxpol_closeClassificationHive(_ZxPolComHandle* hive, int* error);

/*
 * Creates the classification `name` with the attributes given, or opens an existing one and changes its attributes.
 * Close with zxpol_closeClassification.
 *     ZXPOL_E_INVALID_ARG   null or empty name, null record, a text field without NUL
 * When writing the attributes fails, the classification's key stays in the store.
 */
ZXPOL_API _ZxPolComHandle* zxpol_createClassification(_ZxPolComHandle* hive, const char* name,
                                                      const _ZxPolCommAttrib* attr, int* error);

/* Opens the classification `name`. Close with zxpol_closeClassification. ZXPOL_E_INVALID_ARG: null or empty name. */
ZXPOL_API _ZxPolComHandle* zxpol_openClassification(_ZxPolComHandle* hive, const char* name, int* error);

/* Deletes the classification `name` with its actions and their settings. ZXPOL_E_INVALID_ARG: null or empty name. */
ZXPOL_API void zxpol_deleteClassification(_ZxPolComHandle* hive, const char* name, int* error);

/*
 * The name of the `index`-th classification in the store's order; *size as the store writes it.
 *     ZXPOL_E_INVALID_ARG   null buffer or size
 */
ZXPOL_API void zxpol_enumClassification(_ZxPolComHandle* hive, uint32_t index, char* buffer, uint32_t* size,
                                        int* error);

/* Closes a classification, also when *error holds a failure; ZXPOL_S_OK then. */
ZXPOL_API void zxpol_closeClassification(_ZxPolComHandle* classification, int* error);

/*
 * Reads the classification's comment and, when that succeeded, its display name. ZXPOL_E_INVALID_ARG: null record.
 */
ZXPOL_API void zxpol_getClassificationAttrib(_ZxPolComHandle* classification, _ZxPolCommAttrib* attr, int* error);

/*
 * Writes the classification's comment and its display name, whichever fails; the result is that of the display name.
 * ZXPOL_E_INVALID_ARG: null record, a text field without NUL.
 */
ZXPOL_API void zxpol_setClassificationAttrib(_ZxPolComHandle* classification, const _ZxPolCommAttrib* attr, int* error);

/*
 * Creates the action `name` of a classification, or opens an existing one and changes its attributes. `attr->order` is
 * the wanted position (0 or past the end appends); the position given to a new action is written back to it. Close
 * with zxpol_closeAction.
 *     ZXPOL_E_INVALID_ARG   null or empty name, null record, an order of 2^31 or above, a text field without NUL
 * When writing the attributes fails, the action's key stays in the store.
 */
ZXPOL_API _ZxPolComHandle* zxpol_createAction(_ZxPolComHandle* classification, const char* name, _ZxPolActionAttr* attr,
                                              int* error);

/* Opens the action `name`. Close with zxpol_closeAction. ZXPOL_E_INVALID_ARG: null or empty name. */
ZXPOL_API _ZxPolComHandle* zxpol_openAction(_ZxPolComHandle* classification, const char* name, int* error);

/* Deletes the action `name` with its settings; the later ones move up. ZXPOL_E_INVALID_ARG: null or empty name. */
ZXPOL_API void zxpol_deleteAction(_ZxPolComHandle* classification, const char* name, int* error);

/* The name of the `index`-th action by position; as zxpol_enumRule. */
ZXPOL_API void zxpol_enumAction(_ZxPolComHandle* classification, uint32_t index, char* buffer, uint32_t* size,
                                int* error);

/*
 * Moves the action `name` to `position` (1-based; past the end is the end) and returns the position given, 0 on
 * failure.
 *     ZXPOL_E_INVALID_ARG   null or empty name, position below 1
 *     ZXPOL_E_EXCEPTION     the action has no position
 */
ZXPOL_API uint32_t zxpol_setActionOrder(_ZxPolComHandle* classification, const char* name, uint32_t position,
                                        int* error);

/* Closes an action, also when *error holds a failure; ZXPOL_S_OK then. */
ZXPOL_API void zxpol_closeAction(_ZxPolComHandle* action, int* error);

/*
 * Reads the action's comment and, when that succeeded, the others, whichever fail, and opens its key "setting" into
 * attr->setting, a new handle at each call that the caller closes with zxreg_closeKey (null when it cannot be opened).
 * The result is that of the last field, the action type. ZXPOL_E_INVALID_ARG: null record.
 */
ZXPOL_API void zxpol_getActionAttrib(_ZxPolComHandle* action, _ZxPolActionAttr* attr, int* error);

/*
 * Writes the action's comment, display name and type, whichever fails; the result is that of the type. Position and
 * setting are not written. ZXPOL_E_INVALID_ARG: null record, a text field without NUL.
 */
ZXPOL_API void zxpol_setActionAttrib(_ZxPolComHandle* action, const _ZxPolActionAttr* attr, int* error);

/* ---- references --------------------------------------------------------------------------------------- */

/*
 * Finds the first rule that refers to an address list or a classification: 1 when there is one, else 0. A rule refers
 * to the list NAME when a side of one of its conditions is "(" NAME ")", and to the classification NAME when the text
 * of an outcome of one of its tasks is NAME; letter case is ignored. Rules are looked at below `key`, a store key,
 * children in their order before their parent. The rule's path goes to `path` (\ for the root, \A\B for B below A).
 * *size is its capacity on entry, which must be greater than the path's length with NUL, and that length on return.
 * Without a referring rule both stay untouched.
 *     ZXPOL_E_INVALID_ARG        null name, path or size
 *     ZXPOL_E_VERSION            the store holds a policy of a later major version; 0
 *     ZXPOL_E_BUFFER_TOO_SMALL   *size is too small; the answer is 1 all the same
 * Rules, tasks and conditions that cannot be read count as not referring; a root rule that cannot be opened is
 * reported.
 */
ZXPOL_API int zxpol_checkReferInRule(_ZxPolComHandle* key, ZxPolRefEntity entity, const char* name, char* path,
                                     uint32_t* size, int* error);

/* ---- code pages --------------------------------------------------------------------------------------- */

/*
 * Converts `inputBytes` bytes of UTF-16 in the machine's byte order (an odd last byte is ignored) to UTF-8, and from
 * UTF-8. Return the result code. *outputSize is the capacity of `output` in bytes on entry and the bytes produced on
 * return. With a null `output` only the size is computed. No NUL is added; one in the input is converted like any
 * character. `input` may be null when `inputBytes` is 0. Any thread may call at any time.
 *     ZXPOL_E_INVALID_ARG        null outputSize, or null input of more than 0 bytes
 *     ZXPOL_E_CONVERSION         the input is malformed; output and *outputSize are untouched
 *     ZXPOL_E_BUFFER_TOO_SMALL   nothing is copied. mapFromUnicode writes the size needed to *outputSize, mapToUnicode
 *                                writes inputBytes; twice inputBytes is always enough
 */
ZXPOL_API int mapFromUnicode(char* output, unsigned* outputSize, const char* input, unsigned inputBytes);
ZXPOL_API int mapToUnicode(char* output, unsigned* outputSize, const char* input, unsigned inputBytes);

#ifdef __cplusplus
} /* extern "C" */
#endif

#undef ZXPOL_ENUM
#undef ZXPOL_ENUM_END

#endif /* ZXPOLICY_H */
