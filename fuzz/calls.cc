#include "calls.h"

#include <cstring>

#include "call_shapes.h"
#include "fail.h"
#include "told_match.h"
#include "zxregistry.h"

namespace fuzz {

namespace {

using namespace shapes;

// ---- rules ----------------------------------------------------------------------------------------

void openRuleHive(A& with) {
    _ZxPolComHandle* key = with.handle(kKey);
    const int type = static_cast<int>(with.index() % 2);
    with.keep(zxpol_openRuleHive(key, type, with.error()));
}

void createRule(A& with) {
    _ZxPolComHandle* parent = with.handle(kRule);
    const char* name = with.name();
    auto* attr = with.attributes<_ZxPolRuleAttr>();
    if (attr != nullptr) attr->order = with.index();
    const unsigned char** conditions = with.conditions();
    with.keep(zxpol_createRule(parent, name, attr, conditions, with.error()));
}

void setFilter(A& with) {
    _ZxPolComHandle* hive = with.handle(kRuleHive);
    const uint32_t filter = with.index();
    const auto type = static_cast<ZxPolFilterPriorityType>(with.index() % 2);
    zxpol_setExclusiveFilterType(hive, filter, type, with.error());
}

void removeFilter(A& with) {
    _ZxPolComHandle* hive = with.handle(kRuleHive);
    const uint32_t filter = with.index();
    zxpol_removeExclusiveFilterType(hive, filter, with.error());
}

void enumFilter(A& with) {
    _ZxPolComHandle* hive = with.handle(kRuleHive);
    const uint32_t index = with.index();
    auto* type = with.block<ZxPolFilterPriorityType>();
    uint32_t* filter = with.block<uint32_t>();
    zxpol_enumExclusiveFilterType(hive, index, filter, type, with.error());
}

// ---- conditions -----------------------------------------------------------------------------------

void enumCondition(A& with) {
    _ZxPolComHandle* rule = with.handle(kRule);
    const uint32_t index = with.index();
    auto* pair = with.block<_ZxPolAddrPairCond>();
    uint32_t* size = with.block<uint32_t>();
    *size = with.flag() == 0 ? sizeof *pair : 0;
    zxpol_enumCondition(rule, index, reinterpret_cast<unsigned char*>(pair), size, with.error());
}

template <auto function>
void changeCondition(A& with) {
    _ZxPolComHandle* rule = with.handle(kRule);
    const unsigned char* pair = with.condition();
    function(rule, pair, with.error());
}

void freeConflicts(_ZxPolErrorCond** conflicts) {
    int error = ZXPOL_S_OK;
    if (conflicts != nullptr) zxpol_freeErrorConds(conflicts, &error);
}

template <auto function>
void changeConditions(A& with) {
    _ZxPolComHandle* rule = with.handle(kRule);
    const unsigned char** conditions = with.conditions();
    const auto mode = static_cast<ZxPolCondCheck>(with.flag() % 2);
    _ZxPolErrorCond** conflicts = nullptr;
    _ZxPolErrorCond*** wanted = with.flag() == 0 ? &conflicts : nullptr;
    function(rule, conditions, mode, wanted, with.error());
    freeConflicts(conflicts);
}

void updateConditions(A& with) {
    _ZxPolComHandle* rule = with.handle(kRule);
    const uint32_t* indices = with.indices();
    const unsigned char** conditions = with.conditions();
    const auto mode = static_cast<ZxPolCondCheck>(with.flag() % 2);
    _ZxPolErrorCond** conflicts = nullptr;
    zxpol_updateConditionEx(rule, indices, conditions, mode, &conflicts, with.error());
    freeConflicts(conflicts);
}

// ---- tasks ----------------------------------------------------------------------------------------

void markTask(A& with) {
    _ZxPolComHandle* rule = with.handle(kRule);
    const char* name = with.name();
    const int activate = static_cast<int>(with.flag());
    zxpol_inactivateTask(rule, name, activate, with.error());
}

void getOutcome(A& with) {
    _ZxPolComHandle* task = with.handle(kTask);
    const char* name = with.name();
    char* buffer = with.buffer();
    uint32_t* size = with.size();
    zxpol_getOutcome(task, name, buffer, size, with.error());
}

void addOutcome(A& with) {
    _ZxPolComHandle* task = with.handle(kTask);
    const char* name = with.name();
    const char* value = with.name();
    zxpol_addOutcome(task, name, value, with.error());
}

void enumOutcome(A& with) {
    _ZxPolComHandle* task = with.handle(kTask);
    const uint32_t index = with.index();
    char* name = with.buffer();
    uint32_t* nameSize = with.size();
    char* value = with.buffer();
    uint32_t* valueSize = with.size();
    zxpol_enumOutcome(task, index, name, nameSize, value, valueSize, with.error());
}

// ---- matching -------------------------------------------------------------------------------------

struct MailToMatch {
    explicit MailToMatch(A& with)
        : rules(with.handle(kRuleHive)),
          lists(with.handle(kListHive)),
          mode(with.flag()),
          sender(with.address()),
          receivers(with.addresses()) {}
    _ZxPolComHandle* rules;
    _ZxPolComHandle* lists;
    uint32_t mode;
    const char* sender;
    const char** receivers;
    _ZxPolMatchPair* pairs = nullptr;
    uint32_t count = 0;
};

void match(A& with) {
    MailToMatch mail(with);
    int* error = with.error();
    zxpol_matchRuleByMailInfoEx(mail.rules, mail.lists, mail.mode, mail.sender, mail.receivers, &mail.pairs,
                                &mail.count, error);
    if (error != nullptr && *error < 0) require(mail.pairs == nullptr && mail.count == 0, "a failed match has pairs");
    zxpol_freeMatchPair(mail.pairs, mail.count, nullptr);
}

void explain(A& with) {
    MailToMatch mail(with);
    ToldMatch told;
    int error = ZXPOL_S_OK;
    zxpol_explainMatch(mail.rules, mail.lists, mail.mode, mail.sender, mail.receivers, &ToldMatch::hear, &told,
                       &mail.pairs, &mail.count, &error);
    if (error >= 0) told.requireRecords(mail.rules, mail.pairs, mail.count);
    require(error >= 0 || (mail.pairs == nullptr && mail.count == 0), "a failed match has pairs");
    zxpol_freeMatchPair(mail.pairs, mail.count, nullptr);
}

void setMatchOption(A& with) {
    auto* option = with.block<_ZxPolMatchOption>();
    option->matchMode = with.flag();
    option->priorityType = with.index();
    option->weightType = with.index();
    zxpol_setMatchOption(option, with.error());
}

// ---- lists, references, the store -----------------------------------------------------------------

void import(A& with) {
    _ZxPolComHandle* list = with.handle(kList);
    const uint32_t format = with.flag();
    const uint32_t replace = with.flag();
    const char* file = with.file();
    zxpol_importAddress(list, format, replace, file, with.error());
}

void refresh(A& with) {
    _ZxPolComHandle* hive = with.handle(kListHive);
    const char* name = with.name();
    static_cast<void>(name);
    zxpol_refreshLdapCache(hive, with.error());
}

void findReference(A& with) {
    _ZxPolComHandle* key = with.handle(kKey);
    const auto entity = static_cast<ZxPolRefEntity>(with.index() % 2);
    const char* name = with.name();
    char* path = with.buffer();
    uint32_t* size = with.size();
    zxpol_checkReferInRule(key, entity, name, path, size, with.error());
}

void readVersion(A& with) {
    _ZxPolComHandle* key = with.handle(kKey);
    uint32_t* version = with.block<uint32_t>();
    zxpol_getVersion(key, with.error());
    checkVersion(key, with.error(), version);
}

// What a program does behind the library's back: it opens keys of the policy, and deletes and spoils what is in them.
void openKey(A& with) {
    static const char* const kPaths[] = {"Rule",
                                         "Rule\\Mail",
                                         "Rule\\Mail\\rules\\A",
                                         "AddressList\\L",
                                         "Classification\\Infected",
                                         "Rule\\Mail\\tasks\\t"};
    _ZxPolComHandle* key = with.handle(kKey);
    const char* path = kPaths[with.index() % 6];
    int error = ZXREG_S_OK;
    if (key != nullptr) with.keep(zxreg_openKey(key, path, &error));
}

void spoilValue(A& with) {
    static const char* const kValues[] = {"order", "condition1", "address1", "type", "displayName", "version"};
    _ZxPolComHandle* key = with.handle(kKey);
    const char* value = kValues[with.index() % 6];
    const uint32_t type = with.index() % 4;
    const char* text = with.name();
    int ignored = ZXREG_S_OK;
    if (key == nullptr || text == nullptr) return;
    if (*text == '\0')
        zxreg_deleteValue(key, value, &ignored);
    else
        zxreg_setValue(key, value, type, text, static_cast<uint32_t>(std::strlen(text) + 1), &ignored);
}

}  // namespace

const std::vector<Call>& allCalls() {
    static const std::vector<Call> calls = {
        openRuleHive,
        openFrom<zxpol_openRootRule, kRuleHive>,
        openByName<zxpol_openRuleByFullName, kRuleHive>,
        setFilter,
        removeFilter,
        enumFilter,
        createRule,
        openByName<zxpol_openRule, kRule>,
        byName<zxpol_deleteRule, kRule>,
        enumerate<zxpol_enumRule, kRule>,
        readAttributes<zxpol_getRuleAttrib, kRule, _ZxPolRuleAttr>,
        writeAttributes<zxpol_setRuleAttrib, kRule, _ZxPolRuleAttr>,
        move<zxpol_setRuleOrder, kRule>,
        enumCondition,
        changeCondition<zxpol_addCondition>,
        changeCondition<zxpol_removeCondition>,
        changeConditions<zxpol_addConditionEx>,
        changeConditions<zxpol_removeConditionEx>,
        updateConditions,
        createEntity<zxpol_createTask, kRule, _ZxPolTaskAttr>,
        openByName<zxpol_openTask, kRule>,
        byName<zxpol_deleteTask, kRule>,
        enumerate<zxpol_enumTask, kRule>,
        move<zxpol_setTaskOrder, kRule>,
        readAttributes<zxpol_getTaskAttrib, kTask, _ZxPolTaskAttr>,
        writeAttributes<zxpol_setTaskAttrib, kTask, _ZxPolTaskAttr>,
        markTask,
        byName<zxpol_isTaskActive, kRule>,
        getOutcome,
        addOutcome,
        byName<zxpol_deleteOutcome, kTask>,
        enumOutcome,
        match,
        setMatchOption,
        openFrom<zxpol_openAddrListHive, kKey>,
        createEntity<zxpol_createAddrList, kListHive, _ZxPolAddrListAttr>,
        openByName<zxpol_openAddrList, kListHive>,
        enumerate<zxpol_enumAddrList, kListHive, Size::withoutNul>,
        byName<zxpol_deleteAddrList, kListHive>,
        refresh,
        readAttributes<zxpol_getAddrListAttrib, kList, _ZxPolAddrListAttr>,
        writeAttributes<zxpol_setAddrListAttrib, kList, _ZxPolAddrListAttr>,
        changeAddresses<zxpol_insertAddress, kList>,
        changeAddresses<zxpol_removeAddress, kList>,
        import,
        enumerate<zxpol_enumAddress, kList>,
        openFrom<zxpol_openClassificationHive, kKey>,
        createEntity<zxpol_createClassification, kClassHive, _ZxPolCommAttrib>,
        openByName<zxpol_openClassification, kClassHive>,
        byName<zxpol_deleteClassification, kClassHive>,
        enumerate<zxpol_enumClassification, kClassHive, Size::withoutNul>,
        readAttributes<zxpol_getClassificationAttrib, kClass, _ZxPolCommAttrib>,
        writeAttributes<zxpol_setClassificationAttrib, kClass, _ZxPolCommAttrib>,
        createEntity<zxpol_createAction, kClass, _ZxPolActionAttr>,
        openByName<zxpol_openAction, kClass>,
        byName<zxpol_deleteAction, kClass>,
        enumerate<zxpol_enumAction, kClass>,
        move<zxpol_setActionOrder, kClass>,
        readAttributes<zxpol_getActionAttrib, kAction, _ZxPolActionAttr>,
        writeAttributes<zxpol_setActionAttrib, kAction, _ZxPolActionAttr>,
        findReference,
        readVersion,
        openKey,
        spoilValue,
        explain,
    };
    return calls;
}

}  // namespace fuzz
