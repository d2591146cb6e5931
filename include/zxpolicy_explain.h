/**
 * @file zxpolicy_explain.h
 * Why a mail was treated as it was: a match that tells each of its steps as it takes it.
 *
 * The steps come from the matcher that decides in production, so that an explanation cannot differ from the decision.
 * C11 and C++17. A match that nobody watches costs nothing more for it.
 */
#ifndef ZXPOLICY_EXPLAIN_H
#define ZXPOLICY_EXPLAIN_H

#include <stdint.h>

#include "zxpolicy.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup explain Explanations
 * @brief The steps of a match: each rule, condition and task that it looks at, and what becomes of it.
 *
 * A program gives zxpol_explainMatch a function, the observer, which is called at each step with a record of it.
 * The steps of a mail come in this order: for each receiver #ZXPOL_STEP_RECEIVER, its rules, and
 * #ZXPOL_STEP_RECEIVER_DECIDED; then, for each rule that was found, in the order of the records of the match,
 * #ZXPOL_STEP_COLLECTION and its tasks. A rule is #ZXPOL_STEP_RULE, the sides of its conditions that were compared,
 * #ZXPOL_STEP_RULE_CHECKED and, for a child in best match that applies, #ZXPOL_STEP_CHOICE. First match looks at
 * children before their parent; best match looks at a rule, then at its children, then at the children of the best of
 * these.
 *
 * A failure that a match passes over is told, as the result of a step or as #ZXPOL_STEP_PASSED_OVER. Two are not: a
 * rule or task whose position cannot be read is not looked at, and an attribute of a task that cannot be read is told
 * as what stands for it: on, not overridable, and of a filter type that is not exclusive. A match that fails tells
 * the steps up to its failure. #ZXPOL_STEP_RESTART makes all that was told before void: the policy changed meanwhile,
 * and the match begins anew or, where that does not end or the store cannot be read any more, fails without a further
 * step.
 */
/**
 * @addtogroup explain
 * @{
 */

/** What a step of a match is. The comment of each says which fields of the step hold something. */
ZXPOL_ENUM(ZxPolMatchStepKind){
    /** The policy changed during the match, or the store failed at its end: what was told so far is void. The match
     *  begins anew, or fails, with ZXREG_E_BUSY where the policy went on changing. No field. */
    ZXPOL_STEP_RESTART = 0,
    /** The walk for one receiver begins: receiver, receiverIndex. */
    ZXPOL_STEP_RECEIVER = 1,
    /** A rule is looked at: rulePath. Its conditions follow, then #ZXPOL_STEP_RULE_CHECKED. */
    ZXPOL_STEP_RULE = 2,
    /** One side of a condition was compared: rulePath, conditionIndex, side, pattern, address, isMatched, weight and
     *  entry (when a list with entries matched), result. The sender's side is compared only when the receiver's
     *  matched. */
    ZXPOL_STEP_SIDE = 3,
    /** A rule's conditions were looked at: rulePath, isMatched; when matched, conditionIndex of the condition that
     *  decides, senderWeight and receiverWeight; result: a failure, for which the rule is passed over or, at the root
     *  rule, the match ends. */
    ZXPOL_STEP_RULE_CHECKED = 4,
    /** Best match: a matching child was compared with the best of its siblings so far: rulePath, fate, senderWeight,
     *  receiverWeight, otherPath (the best so far, or null). */
    ZXPOL_STEP_CHOICE = 5,
    /** The walk for one receiver is over: receiver, receiverIndex, isMatched, rulePath (when matched), result: a
     *  failure, with which the match ends. */
    ZXPOL_STEP_RECEIVER_DECIDED = 6,
    /** The tasks for a matched rule are collected: rulePath. Tasks follow, in the order in which they are looked
     *  at. */
    ZXPOL_STEP_COLLECTION = 7,
    /** A task was looked at: rulePath (the matched rule), taskPath, filter, enable, overridable, fate; otherPath,
     *  mark and markRule as the fate says. */
    ZXPOL_STEP_TASK = 8,
    /** Something could not be read: rulePath, result. Between #ZXPOL_STEP_RULE and #ZXPOL_STEP_RULE_CHECKED: further
     *  conditions of the rule, which count as none. Outside of these: the rule, which is passed over; or its
     *  children, where best match looked at the rule before, or where first match ends with this result. While tasks
     *  are collected, before the task in question: the marks of the rule that decides about it, which then do not
     *  switch it off; told anew for each such task. Without a rulePath: exclusive filter types, which count as
     *  none. */
    ZXPOL_STEP_PASSED_OVER = 9,
};
ZXPOL_ENUM_END(ZxPolMatchStepKind)

/** Which side of a condition. */
ZXPOL_ENUM(ZxPolMatchSide){
    ZXPOL_SIDE_RECEIVER = 0, /**< the receiver's, which is compared first */
    ZXPOL_SIDE_SENDER = 1,   /**< the sender's */
};
ZXPOL_ENUM_END(ZxPolMatchSide)

/** What became of a child in best match, or of a task. */
ZXPOL_ENUM(ZxPolMatchFate){
    /** A step of another kind. */
    ZXPOL_FATE_NONE = 0,
    /** Child: its priority is higher than that of the best sibling so far, or it is the first that matches. */
    ZXPOL_FATE_BETTER = 1,
    /** Child: a sibling before it has the same priority or a higher one. */
    ZXPOL_FATE_NOT_BETTER = 2,
    /** Child: its priority is the highest there is; the search ends. */
    ZXPOL_FATE_UNBEATABLE = 3,
    /** Task: it is to be done. A later step may still replace it. */
    ZXPOL_FATE_TAKEN = 4,
    /** Task: it is to be done, in the place of the task otherPath, which has the same descending exclusive filter. */
    ZXPOL_FATE_REPLACES = 5,
    /** Task: its attribute "enable" is 0. */
    ZXPOL_FATE_DISABLED = 6,
    /** Task: a mark switches it off; mark is the mark's text, markRule the rule that has it: the task's own rule, or
     *  for an overridable task the matched one. Both are null for a task whose full name has more than 255 bytes,
     *  which counts as switched off. */
    ZXPOL_FATE_INACTIVE = 7,
    /** Task: the task otherPath holds its ascending exclusive filter. Null where the filter's type, as it is stored,
     *  is neither ascending nor descending, and lets no task through. */
    ZXPOL_FATE_HELD = 8,
};
ZXPOL_ENUM_END(ZxPolMatchFate)

/**
 * A step of a match. What a step's kind does not name is null or 0. Texts live until the observer returns. Paths of
 * rules are as in _ZxPolMatchPair::rulePath, paths of tasks are their full names.
 */
typedef struct _ZxPolMatchStep {
    ZxPolMatchStepKind kind; /**< what the step is; it says which of the other fields hold something */
    ZxPolMatchFate fate;     /**< what became of a child or a task */
    ZxPolMatchSide side;     /**< which side of a condition was compared */
    int32_t isMatched;       /**< 1 where the side, the rule or the receiver matched, else 0 */
    int32_t result;          /**< a result code; 0 where nothing failed */
    uint32_t receiverIndex;  /**< the receiver's place in the array of receivers, from 0 */
    uint32_t conditionIndex; /**< the condition's place among those of its rule, from 0 */
    uint32_t weight;         /**< the weight of a side that matched */
    uint32_t senderWeight;   /**< the weight of the sender's side, where a rule matched */
    uint32_t receiverWeight; /**< the weight of the receiver's side, where a rule matched */
    uint32_t filter;         /**< the task's filter type; unless it could be read, one that is not exclusive */
    int32_t enable;          /**< the task's attribute "enable" */
    int32_t overridable;     /**< the task's attribute "overridable" */
    const char* receiver;    /**< the caller's own string */
    const char* rulePath;    /**< the rule's path */
    const char* otherPath;   /**< the rule or the task that a child or a task was held against */
    const char* pattern;     /**< the side of the condition, as it is stored: a pattern, or a list in parentheses */
    const char* address;     /**< what was compared: the address, or its text after the first colon */
    const char* entry;       /**< the entry of the list that matched, as it is stored; of several the one that weighs
                                  most; null for a pattern, and while the list changes under the match */
    const char* taskPath;    /**< the task's full name */
    const char* mark;        /**< the text of an inactive mark, as it is stored */
    const char* markRule;    /**< the path of the rule that has the mark */
} _ZxPolMatchStep;

/**
 * Is told each step, in order, in the thread that called. It must not throw, nor change the policy, nor use the two
 * hives that the match is made with. `context` is what zxpol_explainMatch was given for it.
 */
typedef void (*ZxPolMatchObserverFunction)(void* context, const _ZxPolMatchStep* step);

/**
 * Matches as zxpol_matchRuleByMailInfoEx does, with the same records and the same result, and tells each step to
 * `observer` as the match takes it. The weights of best match are those that decide. First match compares no weights:
 * what is told there is what the patterns weigh by domain, and has no part in the decision.
 *
 * The observer may still be called inside an update of the store, for a match that waited long for others to finish
 * theirs: what it does should not take long. Release with zxpol_freeMatchPair.
 *
 * @param[in] ruleHive      an open rule hive
 * @param[in] addrListHive  an open address-list hive
 * @param[in] mode          0 finds the first match, any other number the best
 * @param[in] sender        the sender's address; the empty string for the null sender; not null
 * @param[in] receivers     an array of addresses closed by a null pointer; not null, may be empty
 * @param[in] observer      is called at each step; not null
 * @param[in] context       passed to the observer; may be null
 * @param[out] pairs        receives the records
 * @param[out] count        receives their number
 * @param[in,out] error     the result
 * @retval ZXPOL_E_INVALID_ARG  null sender, receivers, observer, pairs or count
 */
ZXPOL_API void zxpol_explainMatch(_ZxPolComHandle* ruleHive, _ZxPolComHandle* addrListHive, uint32_t mode,
                                  const char* sender, const char** receivers, ZxPolMatchObserverFunction observer,
                                  void* context, _ZxPolMatchPair** pairs, uint32_t* count, int* error);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
