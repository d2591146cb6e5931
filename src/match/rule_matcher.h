// ZxPolRuleMatcher: which rules apply to a mail, and which tasks they ask for.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "match/match_observer.h"
#include "match/match_pair.h"
#include "match/task_collection.h"
#include "pattern/priority.h"
#include "zxpolicy.h"

class ZxPolAddrListHive;
class ZxPolRule;
class ZxPolRuleHive;

/**
 * Answers one question about one mail: made for a call, used by one thread, and gone with it. A matcher borrows the
 * two hives; it reads the exclusive filter types when it is made and all else from the store as it goes.
 *
 * Each receiver walks the tree of rules by itself. First match takes the first rule that applies, a rule's children
 * before the rule. Best match goes from the root down into the best matching child of each level. Whether a rule
 * applies is for matchInThisRule alone to say: the walks know nothing of conditions.
 *
 * An observer is told each step as it is taken; it has no part in any decision, and without one nothing is made for it.
 *
 * Invariants: the options and the set of exclusive filter types are those that the matcher was made with; between calls
 * of match no task holds a filter.
 *
 * The path of a rule is `\` for the root and `\A\B` for B below A. All operations report through `error`, last, and set
 * it to success when they begin; with a null `error` nothing is done.
 */
class ZXPOL_API ZxPolRuleMatcher {
public:
    /// A collected task, with its full name.
    using _TaskListEntry = zxpol::_TaskListEntry;
    /// What is known of an exclusive filter type while tasks are collected.
    using _ExcluFilterField = zxpol::_ExcluFilterField;

    /// The process-wide options of best matching. Plain data, to be set before several threads match.
    static _ZxPolMatchOption mGlobalOption;

    /// Copies `option` into mGlobalOption: with match mode 1 whatever it says, and with unknown types replaced by 0.
    static void setGlobalOption(const _ZxPolMatchOption& option);

    /// Both hives are borrowed. `option` is copied; null stands for mGlobalOption.
    ZxPolRuleMatcher(ZxPolAddrListHive* addrListHive, ZxPolRuleHive* ruleHive, const _ZxPolMatchOption* option);
    ~ZxPolRuleMatcher();
    ZxPolRuleMatcher(const ZxPolRuleMatcher&) = delete;
    ZxPolRuleMatcher& operator=(const ZxPolRuleMatcher&) = delete;

    /// Tells the steps of what is matched from now on to `observer`, which is borrowed; null for nobody.
    void setObserver(ZxPolMatchObserver* observer) { _observer = observer; }

    /// Whether the arguments of `match` are all there.
    static bool isComplete(const char* sender, const char** receivers, _ZxPolMatchPair** pairs, const uint32_t* count) {
        return sender != nullptr && receivers != nullptr && pairs != nullptr && count != nullptr;
    }

    /// Matches a mail to the rules. *pairs receives an array of *count records in the order of first match, null when
    /// no rule matched; release with freeMatchPair. The records point to the caller's receivers. False on failure, with
    /// null and 0. ZXPOL_E_INVALID_ARG: null argument; the outputs are untouched then.
    bool match(const char* sender, const char** receivers, _ZxPolMatchPair** pairs, uint32_t* count, int* error);

    /// Releases what `match` returned; `error` is not touched.
    static void freeMatchPair(_ZxPolMatchPair* pairs, uint32_t count, int* error);

    // ---- walks: whether a rule was found, and its path in `matchedPath` -----------------------------------

    /// The first rule that applies at or below `rule`. A rule that cannot be opened or checked is passed over, but for
    /// the root's check; children that cannot be enumerated end the walk with that failure.
    bool matchInRuleTreeFirst(ZxPolRule* rule, const char* rulePath, const char* sender, const char* receiver,
                              std::string& matchedPath, int* error);

    /// `rule` itself when it applies, or rather the best match below it. Failures below are passed over.
    bool matchInRuleTreeBest(ZxPolRule* rule, const char* rulePath, const char* sender, const char* receiver,
                             std::string& matchedPath, int* error);

    /// The best matching child of `rule`, or rather the best match below that. Children that cannot be checked do not
    /// match. A failure to enumerate the children of `rule` is reported, one further down is passed over.
    bool matchInChildRuleBest(ZxPolRule* rule, const char* rulePath, const char* sender, const char* receiver,
                              std::string& matchedPath, int* error);

    // ---- one rule -------------------------------------------------------------------------------------------

    /// Whether one of the rule's conditions matches receiver and sender. Where `priority` is not null it receives the
    /// highest priority of all that do. A failure to compare ends it; one to read a condition is the end of them.
    bool matchInThisRule(ZxPolRule* rule, const char* sender, const char* receiver, ZxPolPriority* priority,
                         int* error);

    /// Whether `address`, from after its first ":" on, matches one side of a condition: a pattern, or a list of which
    /// "(" and the last character are taken off. Where `weight` is not null it receives the weight of the match. The
    /// answer counts for nothing when *error holds a failure. ZXPOL_E_INVALID_ARG: null pattern.
    bool compareAddress(const char* address, const char* pattern, uint32_t* weight, int* error);

    // ---- tasks ------------------------------------------------------------------------------------------------

    /// Appends the tasks of the rule at `rulePath` that apply to mails that matched `matchedRule`. A rule without
    /// tasks is no failure; a task that cannot be opened or read ends the collection with that failure.
    void getTasksInRule(ZxPolRule* matchedRule, const char* rulePath, zxpol::TaskList& tasks, int* error);

    /// Appends the tasks of all rules from the root down to `matchedRule`, whose path is `path`, in the order in which
    /// they are to be applied. The exclusive filters remember positions in `tasks`: call _resetExcluTable before each
    /// collection into another list. Ends with the first failure, as getTasksInRule does.
    void _collectTasks(ZxPolRule& matchedRule, const std::string& path, zxpol::TaskList& tasks, int* error);

    /// Makes all exclusive filters free again.
    void _resetExcluTable();

private:
    struct Mail;
    struct Candidate;
    struct Comparison;

    ZxPolMatchPriorityType _priorityType() const { return static_cast<ZxPolMatchPriorityType>(_option.priorityType); }
    ZxPolMatchWeightType _weightType() const { return static_cast<ZxPolMatchWeightType>(_option.weightType); }

    bool _walk(ZxPolRule& root, const char* sender, const char* receiver, std::string& matchedPath, int* error);
    void _groupReceivers(const char* sender, const char** receivers, zxpol::MatchedRules& matched, int* error);
    void _fillPair(size_t index, const zxpol::_PrivMatchPair& matched, zxpol::MatchPairs& pairs, int* error);
    bool _collectTask(ZxPolRule& matchedRule, ZxPolRule& ownRule, const char* rulePath, uint32_t index,
                      zxpol::TaskList& tasks, int* error);
    bool _isActive(ZxPolRule& rule, const std::string& taskPath, char* mark) const;

    bool _walkFirst(ZxPolRule& rule, std::string& path, const Mail& mail, int* error);
    bool _checkFirst(ZxPolRule& rule, const std::string& path, const Mail& mail, int* error);

    void _findBestChild(ZxPolRule& rule, std::string& path, const char* sender, const char* receiver, Candidate& best,
                        int* error);
    void _takeIfBetter(std::unique_ptr<ZxPolRule> child, const std::string& path, const ZxPolPriority& priority,
                       Candidate& best) const;
    bool _isUnbeatable(const ZxPolPriority& priority) const;

    bool _matchPair(const Comparison& comparison, ZxPolPriority* priority, int* error);
    bool _matchSide(const Comparison& comparison, ZxPolMatchSide side, uint32_t* weight, int* error);
    bool _matchObservedSide(const Comparison& comparison, ZxPolMatchSide side, uint32_t* weight, int* error);
    bool _compare(const char* address, const char* pattern, uint32_t* weight, std::string* entry, int* error);
    bool _compareWithList(const char* address, const char* reference, uint32_t* weight, std::string* entry, int* error);
    bool _compareWithPattern(const char* address, const char* pattern, uint32_t* weight);

    // Tells the observer, if there is one, of a step whose fields `fill` sets.
    template <class Fill>
    void _tell(ZxPolMatchStepKind kind, Fill fill) const {
        if (_observer != nullptr) _tellStep(kind, fill);
    }
    // Not inlined: steps must not be in the frames of the walks.
    template <class Fill>
    __attribute__((noinline, cold)) void _tellStep(ZxPolMatchStepKind kind, Fill fill) const {
        _ZxPolMatchStep step{};
        step.kind = kind;
        fill(step);
        _observer->onStep(step);
    }
    void _tellPassedOver(const char* rulePath, int result) const;

    zxpol::ExcluTable _excluTable;
    ZxPolAddrListHive* _addrListHive;
    ZxPolRuleHive* _ruleHive;
    ZxPolMatchObserver* _observer = nullptr;
    _ZxPolMatchOption _option;
    bool _isDisturbed = false;      // somebody else was changing a list all the time
    int _excluResult = ZXPOL_S_OK;  // with which the reading of the exclusive filter types ended
};
