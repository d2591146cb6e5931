/**
 * @mainpage The flat interface of libzxpolicy
 *
 * The library keeps a mail-filtering policy in a hierarchical key/value store and answers which rule
 * applies to each receiver of a mail, and which tasks that rule asks for. C11 and C++17.
 *
 * This page is what every function shares; it is not repeated below.
 *
 * @section results Results
 * The last argument `error` points to a signed 32-bit result code.
 * - A null `error` makes the call a no-op that returns 0 or null.
 * - A failure already held in `*error` makes it a no-op too, and the failure stays: calls can be chained and
 *   tested once. The closing and the freeing functions run all the same.
 * - Test codes with #ZX_SUCCESS and #ZX_FAILURE only. Success is #ZXPOL_S_OK.
 * - Outputs are untouched on failure unless a function says otherwise. A function that returns a value returns
 *   0 or null then.
 *
 * The codes that a function lists are what it leaves in `*error`. Besides them,
 * every function that takes a handle gives #ZXPOL_E_INVALID_ARG when the handle is null, and #ZXPOL_E_WRONG_HANDLE
 * when it is of another kind or designates nothing (a closing function releases the latter). Any function may give
 * #ZXPOL_E_OUT_OF_MEMORY, #ZXPOL_E_EXCEPTION for an unexpected internal failure, or a code of the store, which passes
 * through unchanged.
 *
 * Three reasons are the same whoever reports them, in the low 16 bits of the code. Lists name them as
 * `store-too-small` (6: a buffer is too small), `store-no-more` (12: past the last item) and
 * `store-not-found` (0x1804: no such key or value) where the code is the store's own.
 *
 * @section store The store
 * A policy lies in a store, which the host's store library (zxregistry.h) keeps; a store key is a handle of that
 * library on one of its keys. Of the store library that is installed with this one, `zxreg_openStore(location, &error)`
 * opens a store and returns its root key, `zxreg_closeKey(key, &error)` closes it; a location is `sqlite:PATH` or
 * `memory:`. The functions that open a hive take such a key, and a program begins with one of them: zxpol_openRuleHive,
 * zxpol_openAddrListHive, zxpol_openClassificationHive. They make a hive that is missing, so that an empty store
 * becomes a policy that lets every mail through: who must not have that looks for the key `Rule\Mail` first.
 *
 * `pkg-config --cflags --libs zxpolicy` gives the options to build with. Among the installed documents are three
 * programs to begin with: decide.c, edit_policy.cc and own_store.c.
 *
 * @section handles Handles
 * A function that opens or creates returns a new handle only together with a success, else null. The caller owns
 * it and releases it with the close function named in its description. Closing needs a handle of the right kind:
 * of another kind, nothing is released (#ZXPOL_E_WRONG_HANDLE). Objects are independent of each other: closing a
 * hive does not close what was opened through it, and two handles on one item are closed one by one. Store keys
 * (kind 1) belong to the store library; the library never keeps or closes the caller's.
 *
 * @section texts Texts
 * They are NUL-terminated byte strings. The arrays in attribute records hold their text with its NUL; a setting
 * function that finds an array without NUL writes nothing and gives #ZXPOL_E_INVALID_ARG. A field that a getting
 * function fills is always NUL-terminated. Names of rules, tasks, lists, classifications, actions and outcomes have
 * at most 255 bytes; a longer one is refused by the store, with its own code. All but an outcome's go to the store
 * as they are, where a backslash divides the levels of a path: a lone backslash counts as an empty name. Where the
 * library compares names, addresses or patterns itself, the case of ASCII letters is ignored; whether names that
 * differ in case only are one key is the store's affair.
 *
 * @section enumerations Enumerations
 * They take a zero-based index, a buffer and `size`, the capacity in bytes on entry. They are walked from index 0
 * upwards until the code's low 16 bits are 12 (#ZXPOL_E_NO_MORE_ITEMS, or the store's own); any other failure ends a
 * walk, too. With #ZXPOL_E_BUFFER_TOO_SMALL nothing is copied and the size needed is written to `*size`; names that
 * come straight from the store are counted as the store does, mostly without their NUL. Ordered items are read from
 * the store at index 0; later indices are answered from what index 0 read, and a change through the same handle
 * makes a new walk necessary.
 *
 * @section changes Changes
 * Every operation that makes more than one write is one update of the store where the store offers updates: it
 * is durable when the call returns. (The version of a fresh store and the key of a hive are made one by one.) What an
 * operation wrote before it failed stays, unless the update itself could not be made durable; then nothing of it is
 * kept, and the store's code says why.
 *
 * @section threads Threads
 * The library starts no thread. A handle and what it designates belong to one thread at a time;
 * different handles may be used from different threads at once. zxpol_setDebugFunction and
 * zxpol_setMatchOption write process-wide data without a lock: call them before using the library from
 * several threads.
 *
 * @section classes Classes
 * C++ programs may use the classes behind the functions as well; their headers are installed below zxpolicy/. Their
 * operations take an `error` of the same kind, in which they should find a success. What they return as a pointer is
 * the caller's, who deletes it. Unlike the functions they let std::bad_alloc pass.
 *
 * @section families Families
 * - @ref frame "Frame": results, handles, versions, diagnostics
 * - @ref rule_hive "Rule hive": the tree of rules, and the exclusive filter types
 * - @ref rule "Rules", with their @ref condition "Conditions" and @ref task "Tasks"
 * - @ref match "Matching": which rule applies to each receiver of a mail
 * - @ref explain "Explanations" (zxpolicy_explain.h): each step of a match, and why its answer is what it is
 * - @ref address_list "Address lists", which conditions refer to
 * - @ref classification "Classifications", which outcomes of tasks refer to, and their actions
 * - @ref reference "References": which rule refers to a list or a classification
 * - @ref code_page "Code pages": UTF-16 and UTF-8
 */

/** @file
 * The flat interface of libzxpolicy. */
#ifndef ZXPOLICY_H
#define ZXPOLICY_H

#include <stdbool.h>
#include <stdint.h>

/** Marks what the library exports. */
#if defined(__GNUC__)
#define ZXPOL_API __attribute__((visibility("default")))
#else
#define ZXPOL_API
#endif

/** @cond */
/* A 32-bit enumeration of the interface: any number may cross, unknown ones are refused or defaulted as
 * each function says. */
#ifdef __cplusplus
#define ZXPOL_ENUM(name) enum name : uint32_t
#define ZXPOL_ENUM_END(name)
#else
#define ZXPOL_ENUM(name) enum
#define ZXPOL_ENUM_END(name) typedef uint32_t name;
#endif
/** @endcond */

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup frame Frame
 * @brief Results, handles, versions and diagnostics.
 */
/**
 * @defgroup code_page Code pages
 * @brief Conversion between UTF-16 and UTF-8.
 *
 * The library itself stores and compares byte strings and converts nothing. These two functions have no `error`
 * argument: they return the result code. Any thread may call them at any time. Input and output may be the same
 * memory and need not be aligned.
 */
/**
 * @defgroup rule_hive Rule hive
 * @brief The entry to the tree of rules, and the exclusive filter types.
 *
 * The rule hive is the key "Rule" below the caller's store key. It holds the root rule, "Mail", and below it all
 * others. A rule's full path is `\` for the root and `\A\B` for the child B of the root's child A.
 *
 * Of the tasks of one exclusive filter type at most one applies to a mail; which one is a #ZxPolFilterPriorityType.
 * Each type is a number value of the hive, "ExcluId" and eight lower-case hexadecimal digits.
 */
/**
 * @defgroup rule Rules
 * @brief The rules of the tree: creating, opening, deleting, ordering, attributes.
 *
 * A rule has attributes, conditions, ordered child rules, ordered tasks, and marks that switch tasks off for it.
 * Every condition of a child must be covered by a condition of its parent; the functions on conditions keep this so
 * where they are told to.
 */
/**
 * @defgroup condition Conditions
 * @brief The address pairs that say which mails a rule applies to.
 *
 * A mail matches a rule when, for one of its conditions, its sender matches the one side and its receiver the
 * other. A rule without conditions never matches. A condition crosses the interface as `unsigned char*`, the address
 * of a _ZxPolAddrPairCond; lists of conditions are arrays of such pointers closed by a null pointer. Records and
 * arrays given to a function are only read, and not needed any more afterwards.
 *
 * Blanks, tabs and line feeds around a side are taken off before it is stored. A condition is the string value
 * "condition1", "condition2", ... of its rule: the sender, a comma, the receiver. A sender that holds a comma is
 * therefore cut there when it is read.
 *
 * Every function of this family that takes a rule gives #ZXPOL_E_NOT_SUPPORTED when its match type is not 0, the
 * store's code when the match type cannot be read, and #ZXPOL_E_INVALID_FORMAT when it is no number.
 *
 * The conditions of a rule are read together. One that is not of the string type or has more than 2048 bytes leaves
 * the rule without any; behind one of 1024 characters or more, the others are not reached; where the store's
 * enumeration fails, those found until then are all there are.
 *
 * With a `mode` other than #ZXPOL_COND_CHECK_NONE a change keeps the tree consistent. New conditions are checked
 * against the parent rule: a condition is covered when one of the parent's matches it on both sides, where a side
 * that refers to an address list, in either rule, is taken on trust. The root rule has no parent and is not checked.
 * A list of conflicting conditions is handed out by a call that was made; one that is refused (an earlier failure, a
 * wrong handle) leaves the pointer as it was: preset it to null. After conditions went or changed, the rules below
 * lose those that have no cover any more, level by level; when that fails further down, the rule at which it failed
 * gets its conditions back.
 */
/**
 * @defgroup task Tasks
 * @brief What a rule asks to be done with the mails that it matches; outcomes, and marks that switch tasks off.
 *
 * A task belongs to one rule and applies to the mails that match this rule or a rule below it. Its full name is its
 * rule's path, a backslash (not doubled after the root's) and its own name: `\t`, `\A\t`. Outcomes are named texts
 * of a task; their meaning is the caller's, and a text may name a classification. A task whose full name has more
 * than
 * 255 characters can be created and is never applied.
 *
 * A rule may hold an inactive mark for a task, which switches it off: a task that is not overridable by a mark in
 * its own rule, an overridable one by a mark in the rule that matched. Marks are string values of the rule's key
 * "inactive".
 */
/**
 * @defgroup match Matching
 * @brief Which rule applies to each receiver of a mail, and which tasks it asks for.
 *
 * A rule applies when one of its conditions matches receiver and sender. Of an address that holds a colon, only the
 * text after the first one is compared.
 *
 * First match walks the tree depth first, children in their order and before their parent, and takes the first rule
 * that applies. Best match starts at the root: when that applies, the child of the highest priority that applies
 * takes its place, and so on down; of equal priorities the earlier child is taken. A priority is the pair of the
 * weights of the two patterns that matched, each from 0 (matches everything) to 5000 (one full address). A rule with
 * 5000 on both sides ends the search.
 *
 * A rule that cannot be checked is passed over, as one that does not match; the root's failure ends the call. A
 * condition that names a list which does not exist, or a directory list, makes its rule such a one when that side is
 * looked at: conditions are in their order, first match stops at the first that matches, and the sender's side is
 * looked at only when the receiver's matches. A rule whose conditions cannot be read has none, the root too. A rule
 * without a position is not visited.
 *
 * A match as a whole fails with the store's result when a rule that was found has no readable comment or match type,
 * when a task on its path that is looked at has no key "setting", and, in first match, when a rule that is visited
 * has no key "rules". It is of one state of the store, before or after a change that others make meanwhile: where it
 * cannot be, as another thread or process has been changing the policy for longer than the store waits, or where the
 * store cannot tell, the match fails with the store's result.
 *
 * The tasks of a match are those of all rules from the root down to the matched one that are on and active, the
 * root's first; an exclusive filter type lets one of its tasks through. A task whose flags cannot be read is on and
 * cannot be switched off from below.
 *
 * Threads: one pair of hive handles serves one thread at a time; matching through different handles may run at once.
 */
/**
 * @defgroup address_list Address lists
 * @brief Named lists of addresses and patterns that conditions refer to.
 *
 * The hive is the key "AddressList" below the caller's store key; each list is a key below it. A normal list holds
 * its addresses in the store and, for all handles in the process together, in memory. A directory list holds the
 * settings of a directory server that is never contacted.
 *
 * Any number of threads may use a normal list at once, each through its own handle; changes are made one after the
 * other. A handle sees what this process changes; what another process has changed is seen by the handles that are
 * opened afterwards, where the store has stamps. Every change is durable when its call returns, as one, where the
 * store has updates.
 *
 * zxpol_insertAddress, zxpol_removeAddress, zxpol_importAddress and zxpol_enumAddress give #ZXPOL_E_NOT_SUPPORTED for
 * a directory list, whatever their arguments.
 */
/**
 * @defgroup classification Classifications
 * @brief Named categories of mail, each with ordered actions.
 *
 * The hive is the key "Classification" below the caller's store key. The library keeps classifications and actions
 * and lists them; what an action type means and what its settings hold is the caller's business. Rules refer to a
 * classification through the texts of their tasks' outcomes (zxpol_checkReferInRule).
 */
/**
 * @defgroup reference References
 * @brief Which rule refers to an address list or a classification.
 */

/* ---- handles -------------------------------------------------------------------------------- */

/**
 * @addtogroup frame
 * @{
 */

#ifndef ZX_COM_HANDLE_DEFINED
/** Tells this header and the store's that one of them has declared the handle already. */
#define ZX_COM_HANDLE_DEFINED
/**
 * A handle: what it designates, and the object.
 */
typedef struct _ZxPolComHandle {
    uint32_t kind; /**< one of the ZXPOL_HANDLE_ kinds, or #ZXREG_HANDLE_KEY */
    void* object;  /**< the library's own, or the store's; never touched by callers */
} _ZxPolComHandle;
#endif

/**
 * @name Handle kinds
 * The high nibble groups by hive, the low one is the depth in the hive.
 * @{
 */
#ifndef ZXREG_HANDLE_KEY
#define ZXREG_HANDLE_KEY 1u /**< an open key of the store */
#endif
#define ZXPOL_HANDLE_ADDRLIST_HIVE 0x100u  /**< the address-list hive: zxpol_openAddrListHive */
#define ZXPOL_HANDLE_ADDRLIST 0x101u       /**< an address list: zxpol_createAddrList, zxpol_openAddrList */
#define ZXPOL_HANDLE_CLASS_HIVE 0x110u     /**< the classification hive: zxpol_openClassificationHive */
#define ZXPOL_HANDLE_CLASSIFICATION 0x111u /**< one: zxpol_createClassification, zxpol_openClassification */
#define ZXPOL_HANDLE_ACTION 0x112u         /**< an action: zxpol_createAction, zxpol_openAction */
#define ZXPOL_HANDLE_RULE_HIVE 0x120u      /**< the rule hive: zxpol_openRuleHive */
#define ZXPOL_HANDLE_RULE 0x121u           /**< a rule, the root included: zxpol_createRule, zxpol_openRule, ... */
#define ZXPOL_HANDLE_TASK 0x122u           /**< a task: zxpol_createTask, zxpol_openTask, and matches */
/** @} */

/* ---- result codes --------------------------------------------------------------------------- */

/**
 * @name Result codes
 * Bit 31 set is a failure, bits 16 to 30 the facility 0x0102, the low 16 bits the reason.
 * @{
 */
#define ZXPOL_FAILURE (-0x7efe0000)                       /**< 0x81020000: bit 31 and the facility; no code by itself */
#define ZXPOL_S_OK 0x01020000                             /**< success */
#define ZXPOL_E_NOT_SUPPORTED (ZXPOL_FAILURE + 0x0001)    /**< not possible for this object or setting */
#define ZXPOL_E_EXCEPTION (ZXPOL_FAILURE + 0x0004)        /**< an unexpected internal failure, or no position to move */
#define ZXPOL_E_OUT_OF_MEMORY (ZXPOL_FAILURE + 0x0005)    /**< an allocation failed */
#define ZXPOL_E_BUFFER_TOO_SMALL (ZXPOL_FAILURE + 0x0006) /**< the size needed was written back */
#define ZXPOL_E_INVALID_ARG (ZXPOL_FAILURE + 0x0008)      /**< null, empty, zero or out of range */
#define ZXPOL_E_CONVERSION (ZXPOL_FAILURE + 0x0009)       /**< a code-page conversion failed */
#define ZXPOL_E_INVALID_FORMAT (ZXPOL_FAILURE + 0x000a)   /**< a malformed address, condition, path or value */
#define ZXPOL_E_WRONG_HANDLE (ZXPOL_FAILURE + 0x000b)     /**< a handle of another kind, or of nothing */
#define ZXPOL_E_NO_MORE_ITEMS (ZXPOL_FAILURE + 0x000c)    /**< an index past the last item */
#define ZXPOL_E_FILE_OPEN (ZXPOL_FAILURE + 0x0018)        /**< an import file could not be opened */
#define ZXPOL_E_FILE_READ (ZXPOL_FAILURE + 0x001a)        /**< an import file could not be read */
#define ZXPOL_E_NOT_FOUND (ZXPOL_FAILURE + 0x1804)        /**< the named item does not exist */
#define ZXPOL_E_ALREADY_EXISTS (ZXPOL_FAILURE + 0x1805)   /**< the item exists already */
#define ZXPOL_E_PARSE (ZXPOL_FAILURE + 0x1806)            /**< the input cannot be parsed */
#define ZXPOL_E_VERSION (ZXPOL_FAILURE + 0x1807)          /**< the store's policy is of a later major version */
#define ZXPOL_E_CONDITION_CHECK (ZXPOL_FAILURE + 0x1809)  /**< conditions failed the check against the parent rule */
/** @} */

/**
 * Tells whether `code` is no failure. Any thread may call at any time.
 *
 * @param[in] code  a result code of this library or of the store
 * @return 1 when bit 31 is clear, else 0
 */
ZXPOL_API int ZX_SUCCESS(int code);

/**
 * Tells whether `code` is a failure. Any thread may call at any time.
 *
 * @param[in] code  a result code of this library or of the store
 * @return 1 when bit 31 is set, else 0
 */
ZXPOL_API int ZX_FAILURE(int code);

/* ---- records and enumerations --------------------------------------------------------------- */

/**
 * @name Widths of text fields
 * In bytes, the NUL included.
 * @{
 */
#define ZXPOL_NAME_SIZE 256    /**< names, and the texts of a directory's settings */
#define ZXPOL_COMMENT_SIZE 512 /**< comments */
#define ZXPOL_ADDRESS_SIZE 512 /**< addresses, and the sides of a condition */
#define ZXPOL_FILTER_SIZE 1024 /**< the search filter of a directory list */
/** @} */

/** @} */

/**
 * The attributes of a classification, and the head of the larger records: what every named object has.
 * @ingroup classification
 */
typedef struct _ZxPolCommAttrib {
    char displayName[ZXPOL_NAME_SIZE]; /**< "displayName", string: the name shown to users; read and written */
    char comment[ZXPOL_COMMENT_SIZE];  /**< "comment", string: free text; read and written */
} _ZxPolCommAttrib;

/**
 * The attributes of a rule.
 * @ingroup rule
 */
typedef struct _ZxPolRuleAttr {
    char displayName[ZXPOL_NAME_SIZE]; /**< "displayName", string: the name shown to users; read and written */
    char comment[ZXPOL_COMMENT_SIZE];  /**< "comment", string: free text; read and written */
    uint32_t order;    /**< "order", number: position among the siblings from 1; read. On creation the wanted one, 0 or
                            past the end for the last place, and the one given; zxpol_setRuleOrder writes it */
    int32_t matchType; /**< "matchType", number, never negative: how conditions are matched. 0 is a mail's address
                            pairs, which all functions on conditions want; read and written */
} _ZxPolRuleAttr;

/**
 * The attributes of a task.
 * @ingroup task
 */
typedef struct _ZxPolTaskAttr {
    char displayName[ZXPOL_NAME_SIZE]; /**< "displayName", string: the name shown to users; read and written */
    char comment[ZXPOL_COMMENT_SIZE];  /**< "comment", string: free text; read and written */
    uint32_t order;           /**< "order", number: position among the rule's tasks from 1; read. On creation the wanted
                                   one, 0 or past the end for the last place, and the one given; zxpol_setTaskOrder
                                   writes it */
    uint32_t filter;          /**< "filter", number: the filter type, any number of the caller's, compared with the
                                   exclusive filter types; read and written */
    int32_t enable;           /**< "enable", number, 0 or 1: whether the task is on; read and written */
    int32_t overridable;      /**< "overridable", number, 0 or 1: whether a rule below may switch the task off for the
                                   mails that it matches; read and written */
    _ZxPolComHandle* setting; /**< the key "setting", whose content is the caller's: an open store key; read only. The
                                   caller closes it with zxreg_closeKey */
} _ZxPolTaskAttr;

/**
 * The attributes of an address list. The fields after `type` are those of directory lists; of a normal list they are
 * neither read nor written.
 * @ingroup address_list
 */
typedef struct _ZxPolAddrListAttr {
    char displayName[ZXPOL_NAME_SIZE]; /**< "displayName", string: the name shown to users; read and written */
    char comment[ZXPOL_COMMENT_SIZE];  /**< "comment", string: free text; read and written */
    uint32_t type;                     /**< "type", number: #ZXPOL_ADDRLIST_NORMAL or #ZXPOL_ADDRLIST_DIRECTORY; read
                                            and written */
    char server[ZXPOL_NAME_SIZE];      /**< "server", string: the directory server; read and written */
    uint32_t port;                     /**< "port", number: the server's port, kept as given; read and written */
    char searchroot[ZXPOL_NAME_SIZE];  /**< "searchroot", string: where the search begins; read and written */
    uint32_t authentication;           /**< "authentication", number, kept as given; read and written */
    uint32_t schematype;               /**< "schematype", number, kept as given; read and written */
    char username[ZXPOL_NAME_SIZE];    /**< "username", string: who connects; read and written */
    char password[40];                 /**< "password", protected string: written as given; read back as "secret" */
    char filter[ZXPOL_FILTER_SIZE];    /**< "filter", string: the search filter; read and written */
} _ZxPolAddrListAttr;

/**
 * The attributes of an action.
 * @ingroup classification
 */
typedef struct _ZxPolActionAttr {
    char displayName[ZXPOL_NAME_SIZE]; /**< "displayName", string: the name shown to users; read and written */
    char comment[ZXPOL_COMMENT_SIZE];  /**< "comment", string: free text; read and written */
    uint32_t order;           /**< "order", number: position among the actions from 1; read. On creation the wanted one,
                                   0 or past the end for the last place, and the one given; zxpol_setActionOrder
                                   writes it */
    uint32_t actionType;      /**< "actionType", number: what the action is, a number of the caller's; read and
                                   written */
    _ZxPolComHandle* setting; /**< the key "setting", whose content is the caller's: an open store key; read only. The
                                   caller closes it with zxreg_closeKey */
} _ZxPolActionAttr;

/**
 * @addtogroup address_list
 * @{
 */

/**
 * @name List kinds
 * As in _ZxPolAddrListAttr::type.
 * @{
 */
#define ZXPOL_ADDRLIST_NORMAL 0u    /**< the addresses are in the store */
#define ZXPOL_ADDRLIST_DIRECTORY 1u /**< the addresses are in a directory, whose settings are in the store */
/** @} */

/** @} */

/**
 * One condition of a rule: a mail matches when its sender matches the one side and its receiver the
 * other. A side is "(" NAME ")", a reference to the address list NAME, or an address pattern: a full
 * address, `*`, `*@*`, `name@*`, `*@domain`, `name@*.domain`, `*@*.domain`, `name@[*]` or `*@[*]`. Crosses the
 * interface as `unsigned char*`; lists of conditions are arrays of pointers closed by a null pointer. 1024 bytes.
 * @ingroup condition
 */
typedef struct _ZxPolAddrPairCond {
    char sender[ZXPOL_ADDRESS_SIZE];   /**< "conditionN", string, up to its first comma; read and written */
    char receiver[ZXPOL_ADDRESS_SIZE]; /**< "conditionN", string, after its first comma; read and written */
} _ZxPolAddrPairCond;

/**
 * An entry of a list of conflicting conditions. The list is released with zxpol_freeErrorConds.
 * @ingroup condition
 */
typedef struct _ZxPolErrorCond {
    char* ruleName;        /**< the full path of the rule concerned; the root's is the empty string */
    unsigned char** conds; /**< its conditions concerned: _ZxPolAddrPairCond records, closed by a null pointer */
} _ZxPolErrorCond;

/**
 * How conditions are checked against the rule tree when they change. Any number but 0 acts as 1.
 * @ingroup condition
 */
ZXPOL_ENUM(ZxPolCondCheck){
    ZXPOL_COND_CHECK_NONE = 0,      /**< change the rule's conditions and nothing else */
    ZXPOL_COND_CHECK_HIERARCHY = 1, /**< check against the parent; afterwards remove what descendants lost cover for */
};
ZXPOL_ENUM_END(ZxPolCondCheck)

/**
 * Which of the tasks of an exclusive filter type survives: the number in the filter type's value of the rule hive.
 * @ingroup rule_hive
 */
ZXPOL_ENUM(ZxPolFilterPriorityType){
    ZXPOL_FILTER_ASC_EXCLUSIVE = 0,  /**< the first: nearest the root, earliest in its rule */
    ZXPOL_FILTER_DESC_EXCLUSIVE = 1, /**< the last: nearest the matched rule, latest in its rule */
};
ZXPOL_ENUM_END(ZxPolFilterPriorityType)

/**
 * How the weights of two matches are compared. Unknown numbers act as 0.
 * @ingroup match
 */
ZXPOL_ENUM(ZxPolMatchPriorityType){
    ZXPOL_PRIORITY_TOTAL = 0,          /**< the sum of both sides */
    ZXPOL_PRIORITY_SENDER_FIRST = 1,   /**< the sender's class (its thousands), then the sum */
    ZXPOL_PRIORITY_RECEIVER_FIRST = 2, /**< the receiver's class (its thousands), then the sum */
};
ZXPOL_ENUM_END(ZxPolMatchPriorityType)

/**
 * What weighs more in a pattern. Unknown numbers act as 0.
 * @ingroup match
 */
ZXPOL_ENUM(ZxPolMatchWeightType){
    ZXPOL_WEIGHT_DOMAIN_FIRST = 0, /**< `*@domain` (4000) above `name@*.domain` (3000 and its literal labels) */
    ZXPOL_WEIGHT_NAME_FIRST = 1,   /**< `name@*.domain` (4000 and its literal labels) above `*@domain` (3000) */
};
ZXPOL_ENUM_END(ZxPolMatchWeightType)

/**
 * What zxpol_checkReferInRule looks for. Any other number is referred to by no rule.
 * @ingroup reference
 */
ZXPOL_ENUM(ZxPolRefEntity){
    ZXPOL_REF_ADDRLIST = 0,       /**< an address list, which conditions refer to */
    ZXPOL_REF_CLASSIFICATION = 1, /**< a classification, which texts of outcomes refer to */
};
ZXPOL_ENUM_END(ZxPolRefEntity)

/**
 * Options of best matching, for the whole process.
 * @ingroup match
 */
typedef struct _ZxPolMatchOption {
    uint32_t matchMode;    /**< 0 first match, else best match; the flat functions say it by the call instead */
    uint32_t priorityType; /**< a ZxPolMatchPriorityType */
    uint32_t weightType;   /**< a ZxPolMatchWeightType */
    uint32_t reserved1;    /**< kept, not read */
    uint32_t reserved2;    /**< kept, not read */
} _ZxPolMatchOption;

/**
 * One matched rule of a mail. The array of them is released with zxpol_freeMatchPair.
 * @ingroup match
 */
typedef struct _ZxPolMatchPair {
    char** receivers;        /**< the caller's own receiver strings that matched this rule, in the order given, closed
                                  by a null pointer */
    _ZxPolComHandle** tasks; /**< handles of the tasks to apply, in order; null when there are none */
    uint32_t taskCount;      /**< the number of entries in tasks */
    char* rulePath;          /**< the rule's path: `\` for the root, `\A\B` for B below A */
} _ZxPolMatchPair;

/**
 * Receives the text of one debug message, of at most 511 characters. It may be called from every thread that uses
 * the library. The text is gone when it returns.
 * @ingroup frame
 */
typedef void (*ZxPolDebugFunction)(const char* message);

/* ---- library and store version, diagnostics --------------------------------------------------- */

/**
 * @addtogroup frame
 * @{
 */

/**
 * Tells the library's version: 1, 2, 0 and 1229. Any thread may call at any time.
 *
 * @param[out] major  the major version; may be null, as the others
 * @param[out] minor  the minor version
 * @param[out] patch  the patch level
 * @param[out] build  the number of the build
 */
ZXPOL_API void libzxpolicy(unsigned* major, unsigned* minor, unsigned* patch, unsigned* build);

/**
 * Reads the version of the policy below a store key, the number value "version", also when it is one that
 * the library does not support. A store that has none yet, or none that can be read, is stamped with 0x01000000.
 *
 * @param[in] key        an open store key
 * @param[in,out] error  the result: #ZXPOL_S_OK, once the handle has been accepted
 * @return the version; its top byte is the major version. 0 on failure
 */
ZXPOL_API uint32_t zxpol_getVersion(_ZxPolComHandle* key, int* error);

/**
 * Tells whether the policy below a store key is one that the library supports: its major version is 1 or lower. A
 * missing or unreadable value "version" is replaced by 0x01000000, whether or not that can be written. The gate
 * that the functions opening a hive use; it makes no checks on its handle, which goes to the store as it is.
 *
 * @param[in] key       an open store key
 * @param[in] error     neither read nor written; may be null
 * @param[out] version  the version read or stamped; may be null
 * @return false when the major version, the top byte, is above 1
 */
ZXPOL_API bool checkVersion(_ZxPolComHandle* key, int* error, uint32_t* version);

/**
 * Allocates a handle. Nothing is checked. Handles of the library's kinds are released by the close function of their
 * kind, which destroys the object with them; a handle of any other kind cannot be released through this interface.
 *
 * @param[in] object  what the handle is to designate; for the library's kinds an object of the class that belongs to
 *                    the kind, made with new, which the handle takes over
 * @param[in] kind    one of the handle kinds
 * @return a new handle; null when there is no memory, and `object` stays the caller's
 */
ZXPOL_API _ZxPolComHandle* makeHandle(void* object, uint32_t kind);

/**
 * Sends the text of every debug message to a function instead of the log. What the function is told is not part of
 * this contract. Process-wide and without a lock: to be called before several threads use the library.
 *
 * @param[in] function   receives the messages from now on; null switches back to the log
 * @param[in,out] error  the result: #ZXPOL_S_OK
 * @return the function installed before, or null
 */
ZXPOL_API ZxPolDebugFunction zxpol_setDebugFunction(ZxPolDebugFunction function, int* error);

/** @} */

/* ---- rule hive ---------------------------------------------------------------------------------- */

/**
 * @addtogroup rule_hive
 * @{
 */

/**
 * Opens the rule hive below a store key, making what is missing of it and of its root rule. A new root rule has no
 * name, no comment, match type 0 and one condition, `*` to `*`, which matches every mail. A root rule whose
 * attributes cannot be read is taken for a new one; one that has no conditions any more gets `*` to `*` again. A
 * complete hive is only read. Close with zxpol_closeRuleHive.
 *
 * @param[in] key        an open store key; not kept
 * @param[in] hiveType   0, the only type there is
 * @param[in,out] error  the result
 * @return a new handle of kind #ZXPOL_HANDLE_RULE_HIVE, or null
 * @retval ZXPOL_E_VERSION        the store holds a policy of a later major version; nothing is made
 * @retval ZXPOL_E_NOT_SUPPORTED  `hiveType` is not 0; the store's version is stamped all the same
 */
ZXPOL_API _ZxPolComHandle* zxpol_openRuleHive(_ZxPolComHandle* key, int hiveType, int* error);

/**
 * Closes a rule hive, also when `*error` holds a failure; #ZXPOL_S_OK then. Rules opened through it stay usable.
 *
 * @param[in] hive    the hive's handle, gone afterwards
 * @param[out] error  the result
 */
ZXPOL_API void zxpol_closeRuleHive(_ZxPolComHandle* hive, int* error);

/**
 * Opens the root rule. Close with zxpol_closeRule.
 *
 * @param[in] hive       an open rule hive
 * @param[in,out] error  the result
 * @return a new handle of kind #ZXPOL_HANDLE_RULE, or null
 */
ZXPOL_API _ZxPolComHandle* zxpol_openRootRule(_ZxPolComHandle* hive, int* error);

/**
 * Opens the rule at a full path. Close with zxpol_closeRule.
 *
 * @param[in] hive       an open rule hive
 * @param[in] path       the full path: `\` is the root, `\A\B` the child B of the root's child A; one
 *                       trailing backslash is ignored
 * @param[in,out] error  the result
 * @return a new handle of kind #ZXPOL_HANDLE_RULE, or null
 * @retval ZXPOL_E_INVALID_ARG     null or empty path
 * @retval ZXPOL_E_INVALID_FORMAT  the path does not begin with a backslash
 * @retval store-not-found         there is no such rule
 */
ZXPOL_API _ZxPolComHandle* zxpol_openRuleByFullName(_ZxPolComHandle* hive, const char* path, int* error);

/**
 * Makes a filter type exclusive, or changes which of its tasks survives.
 *
 * @param[in] hive       an open rule hive
 * @param[in] filterId   the filter type, as in _ZxPolTaskAttr::filter; any number
 * @param[in] type       which task survives
 * @param[in,out] error  the result
 * @retval ZXPOL_E_INVALID_ARG  `type` is neither 0 nor 1; nothing is written
 */
ZXPOL_API void zxpol_setExclusiveFilterType(_ZxPolComHandle* hive, uint32_t filterId, ZxPolFilterPriorityType type,
                                            int* error);

/**
 * Makes a filter type an ordinary one.
 *
 * @param[in] hive       an open rule hive
 * @param[in] filterId   the filter type
 * @param[in,out] error  the result
 * @retval store-not-found  the type was not exclusive
 */
ZXPOL_API void zxpol_removeExclusiveFilterType(_ZxPolComHandle* hive, uint32_t filterId, int* error);

/**
 * Gives the `index`-th exclusive filter type in the store's order. Other values of the hive do not count.
 *
 * @param[in] hive       an open rule hive
 * @param[in] index      position from 0
 * @param[out] filterId  the filter type
 * @param[out] type      which of its tasks survives, as it is stored; numbers other than 0 and 1, which another
 *                       writer may have left, let no task through
 * @param[in,out] error  the result
 * @retval ZXPOL_E_INVALID_ARG  `filterId` or `type` is null
 * @retval store-no-more        past the last one
 * @retval store-too-small      a value of the hive before that one has more than 256 bytes; what is behind it cannot be
 *                              reached
 */
ZXPOL_API void zxpol_enumExclusiveFilterType(_ZxPolComHandle* hive, uint32_t index, uint32_t* filterId,
                                             ZxPolFilterPriorityType* type, int* error);

/** @} */

/* ---- rules -------------------------------------------------------------------------------------- */

/**
 * @addtogroup rule
 * @{
 */

/**
 * Creates a child rule with the attributes and conditions given, or opens an existing one, changes its attributes and
 * adds the conditions. The conditions are checked against the parent rule. Close with zxpol_closeRule.
 *
 * On failure the child may stay in the store: without its conditions when these fail, and an existing one with its
 * new attributes.
 *
 * @param[in] parent     an open rule, the one to be the parent
 * @param[in] name       the child's own name; not null, not empty
 * @param[in,out] attr   the attributes; not null. `order` is the wanted position of a new child, 0 or past the end for
 *                       the last place; later siblings move down. The position given is written back to it, also when
 *                       a later step fails. An existing child keeps its position, and the record its number
 * @param[in] conditions  _ZxPolAddrPairCond records, closed by a null pointer; not null, may be empty
 * @param[in,out] error  the result
 * @return a new handle of kind #ZXPOL_HANDLE_RULE, or null
 * @retval ZXPOL_E_INVALID_ARG      null name, record or conditions; empty name; negative `matchType`, an order of 2^31
 *                                  or above; a text field without NUL. Nothing is created
 * @retval ZXPOL_E_NOT_SUPPORTED    `matchType` is not 0, so that the conditions cannot be added
 * @retval ZXPOL_E_CONDITION_CHECK  a condition is not covered by the parent's; none is written
 * @retval ZXPOL_E_INVALID_FORMAT   a condition is malformed; the others were written
 * @retval ZXPOL_E_NOT_FOUND        a sibling has lost its position meanwhile
 */
ZXPOL_API _ZxPolComHandle* zxpol_createRule(_ZxPolComHandle* parent, const char* name, _ZxPolRuleAttr* attr,
                                            const unsigned char** conditions, int* error);

/**
 * Opens a child rule. Close with zxpol_closeRule.
 *
 * @param[in] parent     an open rule
 * @param[in] name       the child's own name
 * @param[in,out] error  the result
 * @return a new handle of kind #ZXPOL_HANDLE_RULE, or null
 * @retval ZXPOL_E_INVALID_ARG  null or empty name
 * @retval store-not-found      the rule has no such child
 */
ZXPOL_API _ZxPolComHandle* zxpol_openRule(_ZxPolComHandle* parent, const char* name, int* error);

/**
 * Closes a rule, also when `*error` holds a failure; #ZXPOL_S_OK then.
 *
 * @param[in] rule    the rule's handle, gone afterwards
 * @param[out] error  the result
 */
ZXPOL_API void zxpol_closeRule(_ZxPolComHandle* rule, int* error);

/**
 * Deletes a child rule with all below it; its later siblings move up. A part that cannot be deleted does not keep the
 * others. Marks that rules elsewhere have for its tasks stay.
 *
 * @param[in] parent     an open rule
 * @param[in] name       the child's own name
 * @param[in,out] error  the result
 * @retval ZXPOL_E_INVALID_ARG  null or empty name
 * @retval store-not-found      the rule has no such child
 */
ZXPOL_API void zxpol_deleteRule(_ZxPolComHandle* parent, const char* name, int* error);

/**
 * Gives the own name of the `index`-th child rule by position. Index 0 reads the store, the others what index 0
 * read. Children without a position are left out.
 *
 * @param[in] parent     an open rule
 * @param[in] index      position from 0
 * @param[out] buffer    receives the name; 256 bytes hold any
 * @param[in,out] size   the buffer's capacity in bytes; becomes the name's length with its NUL, also when that is too
 *                       much
 * @param[in,out] error  the result
 * @retval ZXPOL_E_INVALID_ARG       null buffer or size
 * @retval ZXPOL_E_BUFFER_TOO_SMALL  nothing is copied
 * @retval ZXPOL_E_NO_MORE_ITEMS     past the last child
 * @retval store-no-more             at index 0: there are no children
 * @retval store-not-found           at index 0: the rule has no key "rules"
 */
ZXPOL_API void zxpol_enumRule(_ZxPolComHandle* parent, uint32_t index, char* buffer, uint32_t* size, int* error);

/**
 * Reads a rule's attributes. The result is that of the comment, when that cannot be read, and then the other fields
 * are untouched; else it is that of the match type: a display name that cannot be read is empty, a position keeps
 * what the record held.
 *
 * @param[in] rule       an open rule
 * @param[in,out] attr   receives the attributes
 * @param[in,out] error  the result
 * @retval ZXPOL_E_INVALID_ARG     null record
 * @retval ZXPOL_E_INVALID_FORMAT  the match type is stored as something else than a number
 * @retval store-not-found         there is no comment, or no match type
 */
ZXPOL_API void zxpol_getRuleAttrib(_ZxPolComHandle* rule, _ZxPolRuleAttr* attr, int* error);

/**
 * Writes a rule's attributes but its position, up to the first failure.
 *
 * @param[in] rule       an open rule
 * @param[in] attr       the attributes; `order` is not looked at
 * @param[in,out] error  the result
 * @retval ZXPOL_E_INVALID_ARG  null record, negative `matchType`, a text field without NUL; nothing is written
 */
ZXPOL_API void zxpol_setRuleAttrib(_ZxPolComHandle* rule, const _ZxPolRuleAttr* attr, int* error);

/**
 * Moves a child rule to a position; the siblings in between move by one.
 *
 * @param[in] parent     an open rule
 * @param[in] name       the child's own name
 * @param[in] position   from 1; past the end is the end
 * @param[in,out] error  the result
 * @retval ZXPOL_E_INVALID_ARG  null or empty name, a position of 0 or of 2^31 and above
 * @retval ZXPOL_E_EXCEPTION    the child has no position
 * @retval store-not-found      the rule has no such child
 * @retval store-no-more        none of its children has a position
 */
ZXPOL_API void zxpol_setRuleOrder(_ZxPolComHandle* parent, const char* name, uint32_t position, int* error);

/** @} */

/* ---- conditions: all give ZXPOL_E_NOT_SUPPORTED for a rule whose matchType is not 0 ----------------- */

/**
 * @addtogroup condition
 * @{
 */

/**
 * Reads a rule's `index`-th condition. Index 0 reads the store. A stored text without a comma leaves the
 * record as it was; one with a side above 511 characters gives two empty sides.
 *
 * @param[in] rule       an open rule
 * @param[in] index      position from 0
 * @param[in,out] pair   the address of a _ZxPolAddrPairCond
 * @param[in,out] size   its size in bytes, at least 1024
 * @param[in,out] error  the result
 * @retval ZXPOL_E_INVALID_ARG       null record or size
 * @retval ZXPOL_E_BUFFER_TOO_SMALL  `*size` was below 1024, or the stored text has 1024 characters or more; `*size` is
 *                                   1024 now
 * @retval ZXPOL_E_NO_MORE_ITEMS     past the last condition
 * @retval ZXPOL_E_INVALID_FORMAT    a stored condition is not of the string type, or the match type no number
 * @retval store-too-small           a stored condition has more than 2048 bytes
 */
ZXPOL_API void zxpol_enumCondition(_ZxPolComHandle* rule, uint32_t index, unsigned char* pair, uint32_t* size,
                                   int* error);

/**
 * Adds one condition, without looking at other rules. One that is there already (case ignored) is no error. When the
 * present conditions cannot be read, twice in a row, nothing is added, and the call succeeds.
 *
 * @param[in] rule       an open rule
 * @param[in] pair       the address of a _ZxPolAddrPairCond
 * @param[in,out] error  the result
 * @retval ZXPOL_E_INVALID_ARG     null pair
 * @retval ZXPOL_E_INVALID_FORMAT  the pair is malformed: a side that is neither a reference nor a pattern, or without
 *                                 NUL; nothing is added
 */
ZXPOL_API void zxpol_addCondition(_ZxPolComHandle* rule, const unsigned char* pair, int* error);

/**
 * Removes one condition, without looking at other rules. The sides are compared as they are given, case ignored.
 *
 * @param[in] rule       an open rule
 * @param[in] pair       the address of a _ZxPolAddrPairCond
 * @param[in,out] error  the result
 * @retval ZXPOL_E_INVALID_ARG  null pair
 * @retval ZXPOL_E_NOT_FOUND    the rule has no such condition, or its conditions cannot be read
 */
ZXPOL_API void zxpol_removeCondition(_ZxPolComHandle* rule, const unsigned char* pair, int* error);

/**
 * Adds a list of conditions, as zxpol_addCondition adds each. With `mode` not 0 all are first checked against the
 * parent rule.
 *
 * @param[in] rule         an open rule
 * @param[in] conditions   _ZxPolAddrPairCond records, closed by a null pointer
 * @param[in] mode         whether to check
 * @param[out] errorConds  may be null. Receives null, or with #ZXPOL_E_CONDITION_CHECK a list of one entry: this rule
 *                         and its uncovered conditions; release with zxpol_freeErrorConds
 * @param[in,out] error    the result
 * @retval ZXPOL_E_INVALID_ARG      null list
 * @retval ZXPOL_E_CONDITION_CHECK  some are not covered by the parent's conditions; nothing was written
 * @retval ZXPOL_E_INVALID_FORMAT   some are malformed; the others were written
 */
ZXPOL_API void zxpol_addConditionEx(_ZxPolComHandle* rule, const unsigned char** conditions, ZxPolCondCheck mode,
                                    _ZxPolErrorCond*** errorConds, int* error);

/**
 * Removes a list of conditions, as zxpol_removeCondition removes each. With `mode` not 0 the conditions of
 * descendants that lost their cover are removed too.
 *
 * @param[in] rule         an open rule
 * @param[in] conditions   _ZxPolAddrPairCond records, closed by a null pointer
 * @param[in] mode         whether to clean up below
 * @param[out] errorConds  may be null. Receives null, or with `mode` not 0 and a success the list of the descendants
 *                         with what they lost, which may be empty; release with zxpol_freeErrorConds
 * @param[in,out] error    the result
 * @retval ZXPOL_E_INVALID_ARG    null list
 * @retval ZXPOL_E_NOT_FOUND      the rule lacks one of them; those before it are removed, and nothing is cleaned up
 * @retval ZXPOL_E_NOT_SUPPORTED  also: the match type of a descendant is not 0; those before it are cleaned up
 */
ZXPOL_API void zxpol_removeConditionEx(_ZxPolComHandle* rule, const unsigned char** conditions, ZxPolCondCheck mode,
                                       _ZxPolErrorCond*** errorConds, int* error);

/**
 * Replaces the conditions at the given enumeration indices, or all of them. With `mode` not 0 the new ones are
 * checked against the parent, and descendants cleaned up, as above. Replacing all does not look for duplicates; it
 * deletes the present conditions before it writes the valid ones of the list, so that a rule may be left without
 * any.
 *
 * @param[in] rule         an open rule
 * @param[in] indices      an array parallel to the list: which condition each one replaces. Index i is the value
 *                         "condition" i + 1, which is the i-th of the enumeration as long as the numbers have no gap;
 *                         an index that is not below their count makes a new condition, behind a gap if it is greater,
 *                         which a later addition may overwrite. Null replaces all conditions
 * @param[in] conditions   _ZxPolAddrPairCond records, closed by a null pointer
 * @param[in] mode         whether to check and clean up
 * @param[out] errorConds  may be null. Receives null, or with `mode` not 0 a list: with #ZXPOL_E_CONDITION_CHECK this
 *                         rule and its uncovered conditions, else the descendants with what they lost, which may be
 *                         empty, also together with a failure; release with zxpol_freeErrorConds
 * @param[in,out] error    the result
 * @retval ZXPOL_E_INVALID_ARG      null list, or an index of 2^31 - 1 or above
 * @retval ZXPOL_E_CONDITION_CHECK  some are not covered by the parent's conditions; nothing was written
 * @retval ZXPOL_E_ALREADY_EXISTS   another condition equals a new one; those before it are written
 * @retval ZXPOL_E_INVALID_FORMAT   some are malformed; the others were written
 * @retval ZXPOL_E_NOT_SUPPORTED    also: the match type of a descendant is not 0; those before it are cleaned up
 */
ZXPOL_API void zxpol_updateConditionEx(_ZxPolComHandle* rule, const uint32_t* indices, const unsigned char** conditions,
                                       ZxPolCondCheck mode, _ZxPolErrorCond*** errorConds, int* error);

/**
 * Releases a list that one of the three functions above returned, also when `*error` holds a failure or
 * `error` is null. The entry records themselves, two pointers each, are not released; this is meant so.
 *
 * @param[in] errorConds  the list, gone afterwards
 * @param[out] error      written only for a null list; may be null
 * @retval ZXPOL_E_INVALID_ARG  null list
 */
ZXPOL_API void zxpol_freeErrorConds(_ZxPolErrorCond** errorConds, int* error);

/** @} */

/* ---- tasks and outcomes --------------------------------------------------------------------------- */

/**
 * @addtogroup task
 * @{
 */

/**
 * Creates a task of a rule, or opens an existing one and changes its attributes. Close with zxpol_closeTask. When
 * writing the attributes fails, the task's key stays in the store.
 *
 * @param[in] rule       an open rule
 * @param[in] name       the task's own name; not null, not empty
 * @param[in,out] attr   the attributes; not null. `order` is the wanted position of a new task, 0 or past the end for
 *                       the last place; later tasks move down. The position given is written back to it, also when a
 *                       later step fails. An existing task keeps its position, and the record its number. `setting` is
 * not looked at
 * @param[in,out] error  the result
 * @return a new handle of kind #ZXPOL_HANDLE_TASK, or null
 * @retval ZXPOL_E_INVALID_ARG  null name or record, empty name, `enable` or `overridable` neither 0 nor 1, an
 *                              order of 2^31 or above, a text field without NUL; nothing is created
 * @retval ZXPOL_E_NOT_FOUND    another task has lost its position meanwhile
 */
ZXPOL_API _ZxPolComHandle* zxpol_createTask(_ZxPolComHandle* rule, const char* name, _ZxPolTaskAttr* attr, int* error);

/**
 * Opens a task of a rule. Close with zxpol_closeTask.
 *
 * @param[in] rule       an open rule
 * @param[in] name       the task's own name
 * @param[in,out] error  the result
 * @return a new handle of kind #ZXPOL_HANDLE_TASK, or null
 * @retval ZXPOL_E_INVALID_ARG  null or empty name
 * @retval store-not-found      the rule has no such task
 */
ZXPOL_API _ZxPolComHandle* zxpol_openTask(_ZxPolComHandle* rule, const char* name, int* error);

/**
 * Closes a task, also when `*error` holds a failure; #ZXPOL_S_OK then. Not for the tasks of a match, which
 * zxpol_freeMatchPair releases.
 *
 * @param[in] task    the task's handle, gone afterwards
 * @param[out] error  the result
 */
ZXPOL_API void zxpol_closeTask(_ZxPolComHandle* task, int* error);

/**
 * Deletes a task of a rule, and the inactive marks that this rule and the rules below it have for it. Later tasks
 * move up. When the marks of a rule cannot be reached, the result says why; the task is deleted all the same, and
 * marks in the rules behind that one stay.
 *
 * @param[in] rule       an open rule
 * @param[in] name       the task's own name
 * @param[in,out] error  the result
 * @retval ZXPOL_E_INVALID_ARG  null or empty name; or, with the task deleted, a full name above 255 characters, for
 *                              which there can be no marks
 * @retval store-not-found      the rule has no such task; or, with the task deleted, a rule has no place for marks
 */
ZXPOL_API void zxpol_deleteTask(_ZxPolComHandle* rule, const char* name, int* error);

/**
 * Gives the name of the `index`-th task by position; as zxpol_enumRule.
 *
 * @param[in] rule       an open rule
 * @param[in] index      position from 0
 * @param[out] buffer    receives the name; 256 bytes hold any
 * @param[in,out] size   the buffer's capacity in bytes; becomes the name's length with its NUL, also when that is too
 *                       much
 * @param[in,out] error  the result
 * @retval ZXPOL_E_INVALID_ARG       null buffer or size
 * @retval ZXPOL_E_BUFFER_TOO_SMALL  nothing is copied
 * @retval ZXPOL_E_NO_MORE_ITEMS     past the last task
 * @retval store-no-more             at index 0: there are no tasks
 * @retval store-not-found           at index 0: the rule has no key "tasks"
 */
ZXPOL_API void zxpol_enumTask(_ZxPolComHandle* rule, uint32_t index, char* buffer, uint32_t* size, int* error);

/**
 * Moves a task to a position; as zxpol_setRuleOrder.
 *
 * @param[in] rule       an open rule
 * @param[in] name       the task's own name
 * @param[in] position   from 1; past the end is the end
 * @param[in,out] error  the result
 * @retval ZXPOL_E_INVALID_ARG  null or empty name, a position of 0 or of 2^31 and above
 * @retval ZXPOL_E_EXCEPTION    the task has no position
 * @retval store-not-found      the rule has no such task
 * @retval store-no-more        none of its tasks has a position
 */
ZXPOL_API void zxpol_setTaskOrder(_ZxPolComHandle* rule, const char* name, uint32_t position, int* error);

/**
 * Reads a task's attributes and opens its key "setting" into `attr->setting`, a new handle at each call that
 * the caller closes with zxreg_closeKey. The result is that of the last step, the opening of "setting". A text that
 * cannot be read is empty, and a number keeps what the record held.
 *
 * @param[in] task       an open task
 * @param[in,out] attr   receives the attributes; `setting` is null when it cannot be opened
 * @param[in,out] error  the result
 * @retval ZXPOL_E_INVALID_ARG  null record
 * @retval store-not-found      the task has no key "setting"
 */
ZXPOL_API void zxpol_getTaskAttrib(_ZxPolComHandle* task, _ZxPolTaskAttr* attr, int* error);

/**
 * Writes a task's attributes but its position and setting, up to the first failure.
 *
 * @param[in] task       an open task
 * @param[in] attr       the attributes; `order` and `setting` are not looked at
 * @param[in,out] error  the result
 * @retval ZXPOL_E_INVALID_ARG  null record, `enable` or `overridable` neither 0 nor 1, a text field without NUL;
 *                              nothing is written
 */
ZXPOL_API void zxpol_setTaskAttrib(_ZxPolComHandle* task, const _ZxPolTaskAttr* attr, int* error);

/**
 * Makes or removes a rule's mark that switches a task off. Marking twice or removing no mark is a success that writes
 * nothing. The task need not exist.
 *
 * @param[in] rule          an open rule
 * @param[in] taskFullName  the task's full name, at most 255 characters; letter case and one trailing backslash do not
 *                          matter
 * @param[in] activate      1 removes the mark, any other number makes one
 * @param[in,out] error     the result
 * @retval ZXPOL_E_INVALID_ARG  null, empty or longer name
 * @retval store-not-found      the rule has no key "inactive"
 */
ZXPOL_API void zxpol_inactivateTask(_ZxPolComHandle* rule, const char* taskFullName, int activate, int* error);

/**
 * Tells whether a rule has no inactive mark for a task. Whether the task exists and is on is not looked at.
 *
 * @param[in] rule          an open rule
 * @param[in] taskFullName  the task's full name, at most 255 characters; letter case and one trailing backslash do not
 *                          matter
 * @param[in,out] error     the result
 * @return 1 when there is no mark, else 0. A failure of the store to open the marks, to enumerate them or to read one
 * is reported and answered with 1; every other failure is answered with 0
 * @retval ZXPOL_E_INVALID_ARG  null, empty or longer name
 * @retval store-not-found      the rule has no key "inactive", and so no marks
 */
ZXPOL_API int zxpol_isTaskActive(_ZxPolComHandle* rule, const char* taskFullName, int* error);

/**
 * Reads the text of an outcome, as the store holds it.
 *
 * @param[in] task       an open task
 * @param[in] name       the outcome's name
 * @param[out] value     receives the text with its NUL; null to ask for the size only
 * @param[in,out] size   the capacity of `value` in bytes; becomes the text's size with its NUL, also when that is too
 *                       much
 * @param[in,out] error  the result
 * @retval ZXPOL_E_INVALID_ARG  null or empty name, null size
 * @retval store-not-found      the task has no such outcome
 * @retval store-too-small      the text does not fit
 */
ZXPOL_API void zxpol_getOutcome(_ZxPolComHandle* task, const char* name, char* value, uint32_t* size, int* error);

/**
 * Sets an outcome, a new one or in place of the old text.
 *
 * @param[in] task       an open task
 * @param[in] name       the outcome's name, at most 255 bytes
 * @param[in] value      its text, of any length the store takes
 * @param[in,out] error  the result
 * @retval ZXPOL_E_INVALID_ARG  null or empty name or value
 */
ZXPOL_API void zxpol_addOutcome(_ZxPolComHandle* task, const char* name, const char* value, int* error);

/**
 * Deletes an outcome.
 *
 * @param[in] task       an open task
 * @param[in] name       the outcome's name
 * @param[in,out] error  the result
 * @retval ZXPOL_E_INVALID_ARG  null or empty name
 * @retval store-not-found      the task has no such outcome
 */
ZXPOL_API void zxpol_deleteOutcome(_ZxPolComHandle* task, const char* name, int* error);

/**
 * Gives the `index`-th outcome in the store's order: its name and its text. On failure both sizes are as the store
 * leaves them.
 *
 * @param[in] task           an open task
 * @param[in] index          position from 0
 * @param[out] name          receives the outcome's name
 * @param[in,out] nameSize   the capacity of `name` in bytes; becomes the name's length without its NUL
 * @param[out] value         receives the text with its NUL; may be null
 * @param[in,out] valueSize  the capacity of `value` in bytes; becomes the text's size with its NUL
 * @param[in,out] error      the result
 * @retval ZXPOL_E_INVALID_ARG  null name, nameSize or valueSize
 * @retval store-too-small      the name or the text does not fit
 * @retval store-no-more        past the last outcome
 */
ZXPOL_API void zxpol_enumOutcome(_ZxPolComHandle* task, uint32_t index, char* name, uint32_t* nameSize, char* value,
                                 uint32_t* valueSize, int* error);

/** @} */

/* ---- matching --------------------------------------------------------------------------------------- */

/**
 * @addtogroup match
 * @{
 */

/**
 * Finds, for each receiver of a mail, the first rule that applies, a rule's children before the rule itself,
 * with default weights, and collects the tasks of the rules found. When matching fails, `*pairs` is null and `*count`
 * 0; a call that is refused leaves both untouched. Release with zxpol_freeMatchPair, while the caller's receivers
 * still exist.
 *
 * @param[in] ruleHive      an open rule hive
 * @param[in] addrListHive  an open address-list hive: where the lists are that conditions refer to
 * @param[in] sender        the sender's address; the empty string for the null sender; not null
 * @param[in] receivers     an array of addresses closed by a null pointer; not null, may be empty
 * @param[out] pairs        receives an array of `*count` records, one per matched rule in the order of first match;
 *                          receivers that match no rule are in none. Null without any match
 * @param[out] count        receives the number of records
 * @param[in,out] error     the result; #ZXPOL_S_OK also without any match
 * @retval ZXPOL_E_INVALID_ARG  null sender, receivers, pairs or count
 */
ZXPOL_API void zxpol_matchRuleByMailInfo(_ZxPolComHandle* ruleHive, _ZxPolComHandle* addrListHive, const char* sender,
                                         const char** receivers, _ZxPolMatchPair** pairs, uint32_t* count, int* error);

/**
 * As zxpol_matchRuleByMailInfo, with a choice of the way. Best match goes from the root down to the matching child of
 * the highest priority at each level, compared as zxpol_setMatchOption said.
 *
 * @param[in] ruleHive      an open rule hive
 * @param[in] addrListHive  an open address-list hive
 * @param[in] mode          0 finds the first match, any other number the best
 * @param[in] sender        the sender's address; the empty string for the null sender; not null
 * @param[in] receivers     an array of addresses closed by a null pointer; not null, may be empty
 * @param[out] pairs        receives the records
 * @param[out] count        receives their number
 * @param[in,out] error     the result
 * @retval ZXPOL_E_INVALID_ARG  null sender, receivers, pairs or count
 */
ZXPOL_API void zxpol_matchRuleByMailInfoEx(_ZxPolComHandle* ruleHive, _ZxPolComHandle* addrListHive, uint32_t mode,
                                           const char* sender, const char** receivers, _ZxPolMatchPair** pairs,
                                           uint32_t* count, int* error);

/**
 * Sets the process-wide options of best matching. The match mode is kept as 1 whatever is passed; unknown priority
 * and weight types become 0. Without a call both are 0. There is no lock: to be called before several threads match.
 *
 * @param[in] option     the options, which are copied
 * @param[in,out] error  the result
 * @retval ZXPOL_E_INVALID_ARG  null option
 */
ZXPOL_API void zxpol_setMatchOption(const _ZxPolMatchOption* option, int* error);

/**
 * Releases the records of a match with their task handles, also when `*error` holds a failure or `error` is
 * null. The receivers' strings are the caller's and stay.
 *
 * @param[in] pairs  the records, gone afterwards; null is nothing to release
 * @param[in] count  their number, as the match gave it
 * @param[in] error  neither read nor written; may be null
 */
ZXPOL_API void zxpol_freeMatchPair(_ZxPolMatchPair* pairs, uint32_t count, int* error);

/** @} */

/* ---- address lists ------------------------------------------------------------------------------------ */

/**
 * @addtogroup address_list
 * @{
 */

/**
 * Opens the address-list hive below a store key, making it when missing. Close with zxpol_closeAddrListHive.
 *
 * @param[in] key        an open store key; not kept
 * @param[in,out] error  the result
 * @return a new handle of kind #ZXPOL_HANDLE_ADDRLIST_HIVE, or null
 * @retval ZXPOL_E_VERSION  the store holds a policy of a later major version; nothing is made
 */
ZXPOL_API _ZxPolComHandle* zxpol_openAddrListHive(_ZxPolComHandle* key, int* error);

/**
 * Closes an address-list hive, also when `*error` holds a failure; #ZXPOL_S_OK then. Lists opened through it stay
 * usable.
 *
 * @param[in] hive    the hive's handle, gone afterwards
 * @param[out] error  the result
 */
ZXPOL_API void zxpol_closeAddrListHive(_ZxPolComHandle* hive, int* error);

/**
 * Creates a list with the attributes given, or opens an existing one and changes its attributes. Close with
 * zxpol_closeAddrList. When reading an existing list or writing the attributes fails, the list's key stays in the
 * store. A new normal list is empty.
 *
 * @param[in] hive       an open address-list hive
 * @param[in] name       the list's name; not null, not empty
 * @param[in] attr       the attributes; `type` says which kind of list it is from now on; of a normal list the fields
 *                       after `type` are not looked at
 * @param[in,out] error  the result
 * @return a new handle of kind #ZXPOL_HANDLE_ADDRLIST, or null
 * @retval ZXPOL_E_INVALID_ARG     null or empty name, null record, a type other than 0 and 1, a text field without NUL;
 *                                 nothing is created
 * @retval ZXPOL_E_INVALID_FORMAT  a value of an existing list that should hold addresses is no multi-string
 */
ZXPOL_API _ZxPolComHandle* zxpol_createAddrList(_ZxPolComHandle* hive, const char* name, const _ZxPolAddrListAttr* attr,
                                                int* error);

/**
 * Opens a list. The first opening of a normal list in the process, and the first after another process has changed
 * it, read all of its addresses. Close with zxpol_closeAddrList.
 *
 * @param[in] hive       an open address-list hive
 * @param[in] name       the list's name
 * @param[in,out] error  the result: also the store's, when the type or a part of the addresses cannot be read
 * @return a new handle of kind #ZXPOL_HANDLE_ADDRLIST, or null
 * @retval ZXPOL_E_INVALID_ARG     null or empty name
 * @retval ZXPOL_E_INVALID_FORMAT  its type is neither 0 nor 1 or no number, or a value that should hold addresses is no
 *                                 multi-string
 * @retval store-not-found         there is no such list, or it has no type
 * @retval store-too-small         a value that holds addresses has more than 2048 bytes
 */
ZXPOL_API _ZxPolComHandle* zxpol_openAddrList(_ZxPolComHandle* hive, const char* name, int* error);

/**
 * Gives the name of the `index`-th list in the store's order.
 *
 * @param[in] hive       an open address-list hive
 * @param[in] index      position from 0
 * @param[out] buffer    receives the name; 256 bytes hold any
 * @param[in,out] size   the buffer's capacity in bytes; becomes what the store writes to it, commonly the name's length
 *                       without its NUL
 * @param[in,out] error  the result
 * @retval ZXPOL_E_INVALID_ARG  null buffer or size
 * @retval store-too-small      the name does not fit
 * @retval store-no-more        past the last list
 */
ZXPOL_API void zxpol_enumAddrList(_ZxPolComHandle* hive, uint32_t index, char* buffer, uint32_t* size, int* error);

/**
 * Deletes a list. Handles that are open on it keep the addresses that they had in memory and fail to change
 * them. Rules that refer to it are not looked at: zxpol_checkReferInRule finds one.
 *
 * @param[in] hive       an open address-list hive
 * @param[in] name       the list's name
 * @param[in,out] error  the result
 * @retval ZXPOL_E_INVALID_ARG  null or empty name
 * @retval store-not-found      there is no such list
 */
ZXPOL_API void zxpol_deleteAddrList(_ZxPolComHandle* hive, const char* name, int* error);

/**
 * Tells whether the hive holds a list: #ZXPOL_S_OK when it does. Nothing is refreshed.
 *
 * @param[in] hive       an open address-list hive
 * @param[in,out] error  the result
 * @retval store-no-more    the hive holds none
 * @retval store-too-small  the first list's name is 256 bytes or longer
 */
ZXPOL_API void zxpol_refreshLdapCache(_ZxPolComHandle* hive, int* error);

/**
 * Closes a list, also when `*error` holds a failure; #ZXPOL_S_OK then. Nothing is written: every change was when its
 * call returned.
 *
 * @param[in] list    the list's handle, gone afterwards
 * @param[out] error  the result
 */
ZXPOL_API void zxpol_closeAddrList(_ZxPolComHandle* list, int* error);

/**
 * Reads a list's attributes, one after the other until one fails; fields read before a failure are filled. Of a
 * normal list the fields after `type` stay as they are. Of a directory list the password is read as "secret", a
 * field whose stored value is of another type keeps what it held, a longer text is cut to its field, and a display
 * name or a comment that cannot be read is passed over.
 *
 * @param[in] list       an open list
 * @param[in,out] attr   receives the attributes
 * @param[in,out] error  the result
 * @retval ZXPOL_E_INVALID_ARG  null record
 * @retval store-not-found      an attribute is missing
 */
ZXPOL_API void zxpol_getAddrListAttrib(_ZxPolComHandle* list, _ZxPolAddrListAttr* attr, int* error);

/**
 * Writes a list's attributes, one after the other until one fails; of a directory list a display name or a comment
 * that cannot be written is passed over. Of a directory list any `type` is written: 0 makes it a normal list when it
 * is next opened, and with a number other than 0 and 1 it cannot be opened any more.
 *
 * @param[in] list       an open list
 * @param[in] attr       the attributes
 * @param[in,out] error  the result
 * @retval ZXPOL_E_INVALID_ARG  null record, a text field without NUL, or for a normal list a type other than 0; nothing
 *                              is written
 */
ZXPOL_API void zxpol_setAddrListAttrib(_ZxPolComHandle* list, const _ZxPolAddrListAttr* attr, int* error);

/**
 * Inserts addresses in their order. An address is a full mail address or a pattern as in a condition, of at most 511
 * characters. Addresses that the list holds already, letter case and the quotes around words of the local part
 * ignored, are passed over without a failure. When the store fails, its code is the result, and the addresses before
 * that stay.
 *
 * @param[in] list       an open normal list
 * @param[in] addresses  an array closed by a null pointer, with at least one address; the array and its texts are only
 *                       read, and not needed any more afterwards
 * @param[in,out] error  the result
 * @retval ZXPOL_E_INVALID_ARG     null or empty array
 * @retval ZXPOL_E_INVALID_FORMAT  some addresses were invalid; the others are in the list
 */
ZXPOL_API void zxpol_insertAddress(_ZxPolComHandle* list, const char** addresses, int* error);

/**
 * Removes addresses. They are compared as they are stored, letter case ignored. When the store fails, its code is the
 * result, and the addresses before that are gone.
 *
 * @param[in] list       an open normal list
 * @param[in] addresses  an array closed by a null pointer, with at least one address; only read
 * @param[in,out] error  the result
 * @retval ZXPOL_E_INVALID_ARG  null or empty array
 * @retval ZXPOL_E_NOT_FOUND    some addresses were not in the list; the others are gone
 */
ZXPOL_API void zxpol_removeAddress(_ZxPolComHandle* list, const char** addresses, int* error);

/**
 * Inserts the addresses of a file. Blanks, tabs and line ends around an address do not belong to it; a NUL ends its
 * line's text; the 512th character of a line is lost. Addresses are inserted about 2,000 at a time: what was inserted
 * before a failure stays. When inserting the last addresses, or removing the old ones, fails, the store's code is the
 * result, unless an address was invalid; a failure with earlier ones is not reported.
 *
 * @param[in] list       an open normal list
 * @param[in] format     0: each line that is not blank is an address. 1: a directory export; the lines "mail: ADDRESS"
 *                       and "rfc822mailbox: ADDRESS" hold addresses, in any letter case, lines are neither joined nor
 *                       decoded, and all others are passed over
 * @param[in] replace    1: all addresses in the list go when the first of the file has been read; 0: they stay
 * @param[in] path       the file's path, at most 259 bytes
 * @param[in,out] error  the result
 * @retval ZXPOL_E_INVALID_ARG     null or empty path, a path of 260 bytes or more, another `format` or `replace`
 * @retval ZXPOL_E_FILE_OPEN       the file cannot be opened
 * @retval ZXPOL_E_FILE_READ       reading failed, or the path is a directory
 * @retval ZXPOL_E_PARSE           a line goes on behind its 512th character, with something else than blanks
 * @retval ZXPOL_E_INVALID_FORMAT  some addresses were invalid, and the others are in the list; or the file has none,
 *                                 and the list is as it was
 */
ZXPOL_API void zxpol_importAddress(_ZxPolComHandle* list, uint32_t format, uint32_t replace, const char* path,
                                   int* error);

/**
 * Gives the `index`-th address. The order is that of insertion, unless the environment variable "order" is set to
 * anything but "user": "decending" (spelled so) asks for the descending order, any other text for the ascending one.
 * Patterns come before full addresses in both; the descending order leaves out the full address that comes last in
 * the ascending one. The sorted orders are made when they are first asked for after a change.
 *
 * @param[in] list       an open normal list
 * @param[in] index      position from 0; any index may be asked for at any time
 * @param[out] buffer    receives the address; 512 bytes hold any
 * @param[in,out] size   the buffer's capacity in bytes; becomes the address's length with its NUL, also when that is
 *                       too much
 * @param[in,out] error  the result
 * @retval ZXPOL_E_INVALID_ARG       null buffer or size
 * @retval ZXPOL_E_BUFFER_TOO_SMALL  nothing is copied
 * @retval ZXPOL_E_NO_MORE_ITEMS     past the end
 */
ZXPOL_API void zxpol_enumAddress(_ZxPolComHandle* list, uint32_t index, char* buffer, uint32_t* size, int* error);

/** @} */

/* ---- classifications and actions ---------------------------------------------------------------------- */

/**
 * @addtogroup classification
 * @{
 */

/**
 * Opens the classification hive below a store key, making it when missing. Close with zxpol_closeClassificationHive.
 *
 * @param[in] key        an open store key; not kept
 * @param[in,out] error  the result
 * @return a new handle of kind #ZXPOL_HANDLE_CLASS_HIVE, or null
 * @retval ZXPOL_E_VERSION  the store holds a policy of a later major version; nothing is made
 */
ZXPOL_API _ZxPolComHandle* zxpol_openClassificationHive(_ZxPolComHandle* key, int* error);

/**
 * Closes a classification hive, also when `*error` holds a failure; #ZXPOL_S_OK then. Classifications opened through
 * it stay usable.
 *
 * @param[in] hive    the hive's handle, gone afterwards
 * @param[out] error  the result
 */
ZXPOL_API void zxpol_closeClassificationHive(_ZxPolComHandle* hive, int* error);

/**
 * Creates a classification with the attributes given, or opens an existing one and changes its attributes. Close with
 * zxpol_closeClassification. When writing the attributes fails, the classification's key stays in the store.
 *
 * @param[in] hive       an open classification hive
 * @param[in] name       the classification's name; not null, not empty
 * @param[in] attr       the attributes
 * @param[in,out] error  the result
 * @return a new handle of kind #ZXPOL_HANDLE_CLASSIFICATION, or null
 * @retval ZXPOL_E_INVALID_ARG  null or empty name, a text field without NUL; or, with the key made, null record
 */
ZXPOL_API _ZxPolComHandle* zxpol_createClassification(_ZxPolComHandle* hive, const char* name,
                                                      const _ZxPolCommAttrib* attr, int* error);

/**
 * Opens a classification. Close with zxpol_closeClassification.
 *
 * @param[in] hive       an open classification hive
 * @param[in] name       the classification's name
 * @param[in,out] error  the result
 * @return a new handle of kind #ZXPOL_HANDLE_CLASSIFICATION, or null
 * @retval ZXPOL_E_INVALID_ARG  null or empty name
 * @retval store-not-found      there is no such classification
 */
ZXPOL_API _ZxPolComHandle* zxpol_openClassification(_ZxPolComHandle* hive, const char* name, int* error);

/**
 * Deletes a classification with its actions and their settings. When a part cannot be deleted the others are gone
 * all the same, and the store's result says so. Outcomes that name it are not looked at: zxpol_checkReferInRule
 * finds one.
 *
 * @param[in] hive       an open classification hive
 * @param[in] name       the classification's name
 * @param[in,out] error  the result
 * @retval ZXPOL_E_INVALID_ARG  null or empty name
 * @retval store-not-found      there is no such classification
 */
ZXPOL_API void zxpol_deleteClassification(_ZxPolComHandle* hive, const char* name, int* error);

/**
 * Gives the name of the `index`-th classification in the store's order.
 *
 * @param[in] hive       an open classification hive
 * @param[in] index      position from 0
 * @param[out] buffer    receives the name; 256 bytes hold any
 * @param[in,out] size   the buffer's capacity in bytes; becomes what the store writes to it, commonly the name's length
 *                       without its NUL
 * @param[in,out] error  the result
 * @retval ZXPOL_E_INVALID_ARG  null buffer or size
 * @retval store-too-small      the name does not fit
 * @retval store-no-more        past the last classification
 */
ZXPOL_API void zxpol_enumClassification(_ZxPolComHandle* hive, uint32_t index, char* buffer, uint32_t* size,
                                        int* error);

/**
 * Closes a classification, also when `*error` holds a failure; #ZXPOL_S_OK then. Actions opened through it stay
 * usable.
 *
 * @param[in] classification  the classification's handle, gone afterwards
 * @param[out] error          the result
 */
ZXPOL_API void zxpol_closeClassification(_ZxPolComHandle* classification, int* error);

/**
 * Reads a classification's comment and, when that succeeded, its display name. A comment that was read stays in the
 * record when the display name cannot be.
 *
 * @param[in] classification  an open classification
 * @param[in,out] attr        receives the attributes
 * @param[in,out] error       the result
 * @retval ZXPOL_E_INVALID_ARG  null record
 * @retval store-not-found      there is no comment, or no display name
 */
ZXPOL_API void zxpol_getClassificationAttrib(_ZxPolComHandle* classification, _ZxPolCommAttrib* attr, int* error);

/**
 * Writes a classification's comment and its display name, whichever fails; the result is that of the display name.
 *
 * @param[in] classification  an open classification
 * @param[in] attr            the attributes
 * @param[in,out] error       the result
 * @retval ZXPOL_E_INVALID_ARG  null record, a text field without NUL; nothing is written
 */
ZXPOL_API void zxpol_setClassificationAttrib(_ZxPolComHandle* classification, const _ZxPolCommAttrib* attr, int* error);

/**
 * Creates an action of a classification, or opens an existing one and changes its attributes. Close with
 * zxpol_closeAction. When writing the attributes fails, the action's key stays in the store, at the position given.
 *
 * @param[in] classification  an open classification
 * @param[in] name            the action's name; not null, not empty
 * @param[in,out] attr        the attributes; not null. `order` is the wanted position of a new action, 0 or past the
 *                            end for the last place; later actions move down. The position given is written back to
 *                            it, although the record is one to read, also when a later step fails: the record must be
 *                            in memory that can be written. An existing action keeps its position, and the record its
 *                            number. `setting` is not looked at
 * @param[in,out] error       the result
 * @return a new handle of kind #ZXPOL_HANDLE_ACTION, or null
 * @retval ZXPOL_E_INVALID_ARG  null or empty name, null record, an order of 2^31 or above, a text field without NUL;
 *                              nothing is created
 * @retval ZXPOL_E_NOT_FOUND    another action has lost its position meanwhile
 */
ZXPOL_API _ZxPolComHandle* zxpol_createAction(_ZxPolComHandle* classification, const char* name,
                                              const _ZxPolActionAttr* attr, int* error);

/**
 * Opens an action. Close with zxpol_closeAction.
 *
 * @param[in] classification  an open classification
 * @param[in] name            the action's name
 * @param[in,out] error       the result
 * @return a new handle of kind #ZXPOL_HANDLE_ACTION, or null
 * @retval ZXPOL_E_INVALID_ARG  null or empty name
 * @retval store-not-found      the classification has no such action
 */
ZXPOL_API _ZxPolComHandle* zxpol_openAction(_ZxPolComHandle* classification, const char* name, int* error);

/**
 * Deletes an action with its settings; the later ones move up. When a part of the settings cannot be deleted the
 * others are gone all the same, and the store's result says so.
 *
 * @param[in] classification  an open classification
 * @param[in] name            the action's name
 * @param[in,out] error       the result
 * @retval ZXPOL_E_INVALID_ARG  null or empty name
 * @retval store-not-found      the classification has no such action
 */
ZXPOL_API void zxpol_deleteAction(_ZxPolComHandle* classification, const char* name, int* error);

/**
 * Gives the name of the `index`-th action by position; as zxpol_enumRule.
 *
 * @param[in] classification  an open classification
 * @param[in] index           position from 0
 * @param[out] buffer         receives the name; 256 bytes hold any
 * @param[in,out] size        the buffer's capacity in bytes; becomes the name's length with its NUL, also when that is
 *                            too much
 * @param[in,out] error       the result
 * @retval ZXPOL_E_INVALID_ARG       null buffer or size
 * @retval ZXPOL_E_BUFFER_TOO_SMALL  nothing is copied
 * @retval ZXPOL_E_NO_MORE_ITEMS     past the last action
 * @retval store-no-more             at index 0: there are no actions
 * @retval store-not-found           at index 0: there is no place for actions
 */
ZXPOL_API void zxpol_enumAction(_ZxPolComHandle* classification, uint32_t index, char* buffer, uint32_t* size,
                                int* error);

/**
 * Moves an action to a position; the actions in between move by one.
 *
 * @param[in] classification  an open classification
 * @param[in] name            the action's name
 * @param[in] position        from 1; past the end is the end
 * @param[in,out] error       the result
 * @return the position given, 0 on failure
 * @retval ZXPOL_E_INVALID_ARG  null or empty name, a position of 0 or of 2^31 and above
 * @retval ZXPOL_E_EXCEPTION    the action has no position
 * @retval store-not-found      the classification has no such action
 * @retval store-no-more        none of its actions has a position
 */
ZXPOL_API uint32_t zxpol_setActionOrder(_ZxPolComHandle* classification, const char* name, uint32_t position,
                                        int* error);

/**
 * Closes an action, also when `*error` holds a failure; #ZXPOL_S_OK then.
 *
 * @param[in] action  the action's handle, gone afterwards
 * @param[out] error  the result
 */
ZXPOL_API void zxpol_closeAction(_ZxPolComHandle* action, int* error);

/**
 * Reads an action's comment and, when that succeeded, the others, whichever fail, and opens its key "setting" into
 * `attr->setting`, a new handle at each call that the caller closes with zxreg_closeKey. The result is that of the
 * last field, the action type. A display name that cannot be read is empty, a position keeps what the record held.
 *
 * @param[in] action     an open action
 * @param[in,out] attr   receives the attributes; `setting` is null when it cannot be opened. On failure no key is
 *                       handed out: `setting` is null, or untouched when it was the comment that failed
 * @param[in,out] error  the result
 * @retval ZXPOL_E_INVALID_ARG  null record
 * @retval store-not-found      there is no comment, or no action type
 */
ZXPOL_API void zxpol_getActionAttrib(_ZxPolComHandle* action, _ZxPolActionAttr* attr, int* error);

/**
 * Writes an action's comment, display name and type, whichever fails; the result is that of the type. Position and
 * setting are not written.
 *
 * @param[in] action     an open action
 * @param[in] attr       the attributes; `order` and `setting` are not looked at
 * @param[in,out] error  the result
 * @retval ZXPOL_E_INVALID_ARG  null record, a text field without NUL; nothing is written
 */
ZXPOL_API void zxpol_setActionAttrib(_ZxPolComHandle* action, const _ZxPolActionAttr* attr, int* error);

/** @} */

/* ---- references --------------------------------------------------------------------------------------- */

/**
 * @addtogroup reference
 * @{
 */

/**
 * Finds the first rule that refers to an address list or a classification. A rule refers to the list NAME when a side
 * of one of its conditions is "(" NAME ")", and to the classification NAME when the text of an outcome of one of its
 * tasks is NAME; letter case is ignored, and the last character of a side is not looked at. The rules are looked at
 * children in their order before their parent. What cannot be read counts as not referring, whatever the reason: a
 * rule, a task, an outcome whose text has 256 bytes or more, one whose name has with those behind it in its task, the
 * conditions of a rule as said for conditions. A root rule that cannot be opened is reported.
 *
 * @param[in] key        an open store key, the one that holds the policy; its key "Rule" is made when missing
 * @param[in] entity     what is looked for
 * @param[in] name       its name, without parentheses
 * @param[out] path      receives the rule's path: `\` for the root, `\A\B` for B below A
 * @param[in,out] size   the capacity of `path` in bytes, which must be greater than the path's length with its NUL;
 *                       becomes that length. Without a referring rule both stay untouched
 * @param[in,out] error  the result
 * @return 1 when there is such a rule, else 0
 * @retval ZXPOL_E_INVALID_ARG       null name, path or size
 * @retval ZXPOL_E_VERSION           the store holds a policy of a later major version; 0
 * @retval ZXPOL_E_BUFFER_TOO_SMALL  `*size` is too small; the answer is 1 all the same, and nothing is copied
 * @retval store-not-found           there is no root rule; 0
 * @retval store-code                the store is being changed by others for too long, as for a match; 0
 */
ZXPOL_API int zxpol_checkReferInRule(_ZxPolComHandle* key, ZxPolRefEntity entity, const char* name, char* path,
                                     uint32_t* size, int* error);

/** @} */

/* ---- code pages --------------------------------------------------------------------------------------- */

/**
 * @addtogroup code_page
 * @{
 */

/**
 * Converts UTF-16 in the machine's byte order to UTF-8. No NUL is added; one in the input is converted like any
 * character.
 *
 * @param[out] output         receives the UTF-8 bytes; null to compute the size only
 * @param[in,out] outputSize  the capacity of `output` in bytes, also when that is null; becomes the number of bytes
 *                            that the text takes
 * @param[in] input           UTF-16 code units; may be null when `inputBytes` is 0
 * @param[in] inputBytes      their length in bytes; an odd last byte is ignored
 * @return the result code
 * @retval ZXPOL_E_INVALID_ARG       null outputSize, or null input of more than 0 bytes
 * @retval ZXPOL_E_CONVERSION        the input is malformed, or too large to be converted, which 2^30 bytes and more may
 *                                   be; output and `*outputSize` are untouched
 * @retval ZXPOL_E_BUFFER_TOO_SMALL  nothing is copied; `*outputSize` is the size needed
 */
ZXPOL_API int mapFromUnicode(char* output, unsigned* outputSize, const char* input, unsigned inputBytes);

/**
 * Converts UTF-8 to UTF-16 in the machine's byte order. No NUL is added; one in the input is converted like any
 * character.
 *
 * @param[out] output         receives the UTF-16 code units; null to compute the size only
 * @param[in,out] outputSize  the capacity of `output` in bytes, also when that is null; becomes the number of bytes
 *                            that the text takes
 * @param[in] input           UTF-8 bytes; may be null when `inputBytes` is 0
 * @param[in] inputBytes      their number
 * @return the result code
 * @retval ZXPOL_E_INVALID_ARG       null outputSize, or null input of more than 0 bytes
 * @retval ZXPOL_E_CONVERSION        the input is malformed, or too large to be converted, which 2^30 bytes and more may
 *                                   be; output and `*outputSize` are untouched
 * @retval ZXPOL_E_BUFFER_TOO_SMALL  nothing is copied; `*outputSize` is `inputBytes`, which may still be too little.
 *                                   Twice `inputBytes` is always enough
 */
ZXPOL_API int mapToUnicode(char* output, unsigned* outputSize, const char* input, unsigned inputBytes);

/** @} */

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* ZXPOLICY_H */
