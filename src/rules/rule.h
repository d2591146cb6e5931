// ZxPolRule: one node of the rule tree.
#pragma once

#include <list>
#include <memory>
#include <string>

#include "rules/mail_condition.h"
#include "rules/rule_anchor.h"
#include "rules/task.h"
#include "store/key_entity.h"
#include "store/store_key.h"
#include "zxpolicy.h"

class ZxPolRuleHive;

/**
 * One rule: its attributes, its ordered child rules and tasks, its conditions, and the marks that switch
 * tasks off for it. The object owns the rule's key. Two objects on one rule share nothing but the store. One
 * thread at a time.
 *
 * Invariants: the key is open as long as the object lives; the path stays what it was when the rule was opened; the
 * texts of the marks are those that were last loaded. All else is in the store alone, but for the order of children and
 * tasks (ZxPolKeyEntity) and the conditions (ZxPolMailCondition) as index 0 read them.
 *
 * All operations report through `error`, last; with a null `error` nothing is done. Codes of the store pass
 * through unchanged. Rules and tasks returned belong to the caller; null on failure. An operation that writes
 * more than once is one update of the store.
 */
class ZXPOL_API ZxPolRule {
public:
    /// Takes `ruleKey` over. `ruleName` is the full path: empty for the root, `\A\B` for the child B of the root's
    /// child A. `hive` is needed now only and may be null: then no marks are loaded and the rule cannot be
    /// checked against its parent.
    ZxPolRule(_ZxPolComHandle* ruleKey, ZxPolRuleHive* hive, const std::string& ruleName);
    /// The same for rules of the library's own making, which share what they need of their hive.
    ZxPolRule(zxpol::StoreKey ruleKey, std::shared_ptr<zxpol::RuleAnchor> anchor, std::string ruleName);
    ~ZxPolRule();
    ZxPolRule(const ZxPolRule&) = delete;
    ZxPolRule& operator=(const ZxPolRule&) = delete;

    /// The full path; empty for the root.
    const std::string& name() const { return _name; }

    // ---- child rules ------------------------------------------------------------------------------

    /// Opens the child `childName`. ZXPOL_E_INVALID_ARG: null or empty name.
    ZxPolRule* openChildRule(const char* childName, int* error);

    /// Creates the child `childName`, or opens an existing one, and writes its attributes. `attr->order` is the
    /// wanted position; the position given to a new child is written back to it, although the record is one to read,
    /// also when a later step fails: the record must be in memory that can be written. ZXPOL_E_INVALID_ARG: null
    /// argument, empty name, negative matchType or order, a text without NUL; nothing is created. A child made before a
    /// later failure stays in the store.
    ZxPolRule* createChildRule(const char* childName, const _ZxPolRuleAttr* attr, int* error);

    /// The same, and adds conditions to the child that its parent must cover; codes also as addCondition.
    ZxPolRule* createChildRule(const char* childName, const _ZxPolRuleAttr* attr, const unsigned char** conditions,
                               int* error);

    /// Deletes the child `childName` with all below it. ZXPOL_E_INVALID_ARG: null or empty name.
    void deleteChildRule(const char* childName, int* error);

    /// The own name of the `index`-th child by position; index 0 reads the store. *size becomes the length with
    /// NUL. ZXPOL_E_INVALID_ARG: null buffer or size. Past the end a code of reason 12.
    void enumChildRule(uint32_t index, char* buffer, uint32_t* size, int* error);

    /// Moves a child. ZXPOL_E_INVALID_ARG: null or empty name, position below 1.
    void setChildRuleOrder(const char* childName, uint32_t position, int* error);

    // ---- attributes -------------------------------------------------------------------------------

    /// Reads the comment and, when that succeeded, all others, whichever fail; the result is that of the last. A
    /// number that cannot be read keeps what the record held, a text becomes empty. ZXPOL_E_INVALID_ARG: null record.
    void getAttribute(_ZxPolRuleAttr* attr, int* error);

    /// Writes all attributes but the position, up to the first failure. ZXPOL_E_INVALID_ARG: null record,
    /// negative matchType, a text without NUL.
    void setAttribute(const _ZxPolRuleAttr* attr, int* error);

    // ---- conditions; ZXPOL_E_NOT_SUPPORTED for a rule whose matchType is not 0 ------------------------

    /// The `index`-th condition, a _ZxPolAddrPairCond of at least *size = 1024 bytes. Index 0 reads the store; end
    /// with a code of reason 12. A stored text without a comma leaves the record as it was.
    void enumCondition(uint32_t index, unsigned char* record, uint32_t* size, int* error);

    /// @{
    /// Change the conditions. With `mode` not 0, new conditions must be covered by the parent's
    /// (ZXPOL_E_CONDITION_CHECK else, and nothing is written), and conditions of descendants that lose their cover
    /// are removed. *errorConds (may be null) receives null or a list of the conditions concerned, released
    /// with freeErrorConds. ZXPOL_E_INVALID_ARG: null list.
    void addCondition(const unsigned char** conditions, ZxPolCondCheck mode, _ZxPolErrorCond*** errorConds, int* error);
    void deleteCondition(const unsigned char** conditions, ZxPolCondCheck mode, _ZxPolErrorCond*** errorConds,
                         int* error);
    /// @}

    /// Null `indices` replaces all conditions.
    void updateCondition(const uint32_t* indices, const unsigned char** conditions, ZxPolCondCheck mode,
                         _ZxPolErrorCond*** errorConds, int* error);

    /// Releases such a list; `error` is not touched, and the entry records are not released.
    static void freeErrorConds(_ZxPolErrorCond** errorConds, int* error);

    // ---- tasks --------------------------------------------------------------------------------------

    /// Creates the task `taskName`, or opens an existing one, and writes its attributes; positions as for
    /// createChildRule. ZXPOL_E_INVALID_ARG: null argument, empty name, negative order, or a record that
    /// ZxPolTask::setAttribute refuses; nothing is created.
    ZxPolTask* createTask(const char* taskName, const _ZxPolTaskAttr* attr, int* error);

    /// Opens the task `taskName`. ZXPOL_E_INVALID_ARG: null or empty name.
    ZxPolTask* openTask(const char* taskName, int* error);

    /// Deletes the task and every mark for it in this rule and those below. ZXPOL_E_INVALID_ARG: null or empty name.
    void deleteTask(const char* taskName, int* error);

    /// The own name of the `index`-th task by position; as enumChildRule.
    void enumTask(uint32_t index, char* buffer, uint32_t* size, int* error);

    /// Moves a task; as setChildRuleOrder.
    void setTaskOrder(const char* taskName, uint32_t position, int* error);

    /// With `activate` 1 removes the mark that switches the task off here, else makes one; nothing is written when
    /// that is so already. `taskFullName` is the path of the task's rule, a backslash and the task's name.
    /// ZXPOL_E_INVALID_ARG: null, empty or longer than 255.
    void inactivateTask(const char* taskFullName, int* error, int activate);

    /// Whether this rule has no mark for the task; letter case and one trailing backslash do not matter. Where
    /// there is one, its value's name is copied to `valueName` (256 bytes, may be null). True when the marks
    /// cannot be read, with the failure in *error. False and ZXPOL_E_INVALID_ARG: null, empty or longer than 255.
    bool isTaskActive(const char* taskFullName, int* error, char* valueName);

    /// The same; where there is a mark, its text is copied to `mark` (256 bytes, may be null), too.
    bool isTaskActive(const char* taskFullName, int* error, char* valueName, char* mark);

    /// The texts of the marks as they were when the object was made or they were last loaded.
    const std::list<std::string>& inactiveTasks() const { return _inactiveTasks; }

    /// Appends the texts of all marks in the store to the list; failures are silent.
    void loadInactiveTasks();

    /// Empties the list.
    void cleanInactiveTasks();

private:
    friend class ZxPolRuleHive;

    std::unique_ptr<ZxPolRule> _openChild(const char* childName, int* error);
    std::unique_ptr<ZxPolRule> _openChildAt(uint32_t index, int* error);
    std::unique_ptr<ZxPolRule> _makeChild(zxpol::StoreKey childKey, const char* childName);
    std::unique_ptr<ZxPolRule> _createChild(const char* childName, const _ZxPolRuleAttr* attr, int* error);
    void _makeSubkeys();

    void _requireMailConditions(int* error);
    void _replaceOrUpdate(const uint32_t* indices, const unsigned char** conditions, int* error);
    bool _checkParentHierarchy(const unsigned char** conditions, zxpol::ErrorConds* list, int* error);
    void _deleteChildCondition(ZxPolRule& rule, zxpol::ErrorConds* list, int* error);
    void _cleanUpChild(ZxPolRule& rule, ZxPolRule& child, zxpol::ErrorConds* list, int* error);
    zxpol::CondList _removeUncovered(ZxPolRule& parent, int* error);

    void _addMark(const char* taskFullName, int* error);
    bool _removeMark(const char* taskFullName, int* error);
    void _deleteRefedTasks(ZxPolRule& rule, const char* taskFullName, int* error);

    zxpol::StoreKey _key;
    ZxPolKeyEntity _children;
    ZxPolKeyEntity _tasks;
    std::shared_ptr<zxpol::RuleAnchor> _anchor;
    std::string _name;
    std::list<std::string> _inactiveTasks;
    ZxPolMailCondition _conditions;
};
