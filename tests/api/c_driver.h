/* Steps of a C program through the interface; each returns 0, or the line at which it found something wrong. */
#ifndef C_DRIVER_H
#define C_DRIVER_H

#ifdef __cplusplus
extern "C" {
#endif

/* Opens a store and both hives, creates a rule with a task, matches a mail and releases everything. */
int zxtestMatchFromC(void);

/* Chains calls on one result and tests it once at the end. */
int zxtestChainFromC(void);

/* Condition checks, error lists and the enumerations, with plain C types. */
int zxtestConditionsFromC(void);

/* A directory list: its record from C. */
int zxtestListsFromC(void);

/* A classification with an action and its setting; the rule that refers to it. */
int zxtestClassificationsFromC(void);

/* A text to UTF-16 and back. */
int zxtestCodePagesFromC(void);

/* The sizes of the interface's types, which the compiler has checked already. */
int zxtestLayoutFromC(void);

#ifdef __cplusplus
}
#endif

#endif /* C_DRIVER_H */
