/* Drives the interface from C: the headers must compile as C11 and the functions have C linkage. */
#include "c_driver.h"

#include <stddef.h>
#include <string.h>

#include "zxpolicy.h"
#include "zxregistry.h"

#define CHECK(condition)                   \
    do {                                   \
        if (!(condition)) return __LINE__; \
    } while (0)

static int messages;
static void countMessage(const char* message) {
    if (message != NULL) ++messages;
}

/* What every step here works on. */
typedef struct {
    _ZxPolComHandle* store;
    _ZxPolComHandle* rules;
    _ZxPolComHandle* lists;
    _ZxPolComHandle* root;
} Policy;

static int openPolicy(Policy* policy) {
    int error = ZXPOL_S_OK;
    memset(policy, 0, sizeof *policy);
    policy->store = zxreg_openStore("memory:", &error);
    policy->rules = zxpol_openRuleHive(policy->store, 0, &error);
    policy->lists = zxpol_openAddrListHive(policy->store, &error);
    policy->root = zxpol_openRootRule(policy->rules, &error);
    return error;
}

static int closePolicy(const Policy* policy) {
    int error = ZXPOL_S_OK;
    zxpol_closeRule(policy->root, &error);
    zxpol_closeRuleHive(policy->rules, &error);
    zxpol_closeAddrListHive(policy->lists, &error);
    zxreg_closeKey(policy->store, &error);
    return error;
}

static const unsigned char* asCondition(const _ZxPolAddrPairCond* pair) {
    return (const unsigned char*)pair;
}

int zxtestMatchFromC(void) {
    static const _ZxPolAddrPairCond anyToSales = {"*", "*@sales.example"};
    const unsigned char* conditions[] = {asCondition(&anyToSales), NULL};
    const char* receivers[] = {"ann@sales.example", "bob@other.example", NULL};
    _ZxPolRuleAttr ruleAttr;
    _ZxPolTaskAttr taskAttr;
    _ZxPolMatchPair* pairs = NULL;
    _ZxPolComHandle *rule, *task;
    Policy policy;
    uint32_t count = 0;
    int error = openPolicy(&policy);
    CHECK(ZX_SUCCESS(error));

    memset(&ruleAttr, 0, sizeof ruleAttr);
    rule = zxpol_createRule(policy.root, "Sales", &ruleAttr, conditions, &error);
    CHECK(rule != NULL && rule->kind == ZXPOL_HANDLE_RULE);
    memset(&taskAttr, 0, sizeof taskAttr);
    taskAttr.enable = 1;
    task = zxpol_createTask(rule, "scan", &taskAttr, &error);
    CHECK(task != NULL && taskAttr.order == 1);

    zxpol_setDebugFunction(countMessage, &error);
    zxpol_matchRuleByMailInfo(policy.rules, policy.lists, "eve@partner.example", receivers, &pairs, &count, &error);
    zxpol_setDebugFunction(NULL, &error);
    CHECK(ZX_SUCCESS(error) && messages > 0 && count == 2);
    CHECK(strcmp(pairs[0].rulePath, "\\Sales") == 0 && pairs[0].taskCount == 1);
    CHECK(pairs[0].receivers[0] == receivers[0] && pairs[0].receivers[1] == NULL);
    CHECK(pairs[0].tasks[0]->kind == ZXPOL_HANDLE_TASK);
    CHECK(strcmp(pairs[1].rulePath, "\\") == 0 && pairs[1].tasks == NULL);
    zxpol_freeMatchPair(pairs, count, &error);

    zxpol_closeTask(task, &error);
    zxpol_closeRule(rule, &error);
    CHECK(ZX_SUCCESS(error) && ZX_SUCCESS(closePolicy(&policy)));
    return 0;
}

int zxtestChainFromC(void) {
    _ZxPolComHandle *missing, *task;
    Policy policy;
    int error = openPolicy(&policy);
    CHECK(ZX_SUCCESS(error));
    missing = zxpol_openRule(policy.root, "none", &error);
    task = zxpol_openTask(missing, "none", &error); /* would be an invalid argument by itself */
    zxpol_addOutcome(task, "infected", "Infected", &error);
    CHECK(missing == NULL && task == NULL && ZX_FAILURE(error) && error == ZXPOL_E_NOT_FOUND);
    CHECK(ZX_SUCCESS(closePolicy(&policy)));
    return 0;
}

int zxtestConditionsFromC(void) {
    static const _ZxPolAddrPairCond own = {"a@b.example", "*"}, child = {"x@y.example", "*"};
    const unsigned char* conditions[] = {asCondition(&own), NULL};
    const unsigned char* uncovered[] = {asCondition(&child), NULL};
    _ZxPolErrorCond** errorConds = NULL;
    _ZxPolRuleAttr attr;
    _ZxPolAddrPairCond pair;
    _ZxPolComHandle* rule;
    Policy policy;
    char name[ZXPOL_NAME_SIZE];
    uint32_t size = sizeof name;
    int error = openPolicy(&policy);
    CHECK(ZX_SUCCESS(error));

    memset(&attr, 0, sizeof attr);
    rule = zxpol_createRule(policy.root, "A", &attr, conditions, &error);
    zxpol_updateConditionEx(policy.root, NULL, conditions, ZXPOL_COND_CHECK_NONE, NULL, &error);
    CHECK(rule != NULL && ZX_SUCCESS(error));
    zxpol_addConditionEx(rule, uncovered, ZXPOL_COND_CHECK_HIERARCHY, &errorConds, &error);
    CHECK(error == ZXPOL_E_CONDITION_CHECK && errorConds != NULL && errorConds[1] == NULL);
    CHECK(strcmp(errorConds[0]->ruleName, "\\A") == 0);
    CHECK(memcmp(errorConds[0]->conds[0], &child, sizeof child) == 0 && errorConds[0]->conds[1] == NULL);
    zxpol_freeErrorConds(errorConds, &error);

    error = ZXPOL_S_OK;
    zxpol_enumRule(policy.root, 0, name, &size, &error);
    CHECK(ZX_SUCCESS(error) && strcmp(name, "A") == 0 && size == 2);
    size = sizeof pair;
    zxpol_enumCondition(rule, 0, (unsigned char*)&pair, &size, &error);
    CHECK(ZX_SUCCESS(error) && strcmp(pair.sender, "a@b.example") == 0 && strcmp(pair.receiver, "*") == 0);
    zxpol_closeRule(rule, &error);
    CHECK(ZX_SUCCESS(closePolicy(&policy)));
    return 0;
}

int zxtestListsFromC(void) {
    _ZxPolAddrListAttr attr;
    _ZxPolComHandle* list;
    Policy policy;
    int error = openPolicy(&policy);
    CHECK(ZX_SUCCESS(error));
    memset(&attr, 0, sizeof attr);
    attr.type = ZXPOL_ADDRLIST_DIRECTORY;
    attr.port = 389;
    strcpy(attr.server, "ldap.example");
    strcpy(attr.filter, "(mail=*)");
    list = zxpol_createAddrList(policy.lists, "Staff", &attr, &error);
    CHECK(list != NULL && list->kind == ZXPOL_HANDLE_ADDRLIST);
    memset(&attr, 0, sizeof attr);
    zxpol_getAddrListAttrib(list, &attr, &error);
    CHECK(ZX_SUCCESS(error) && attr.port == 389 && strcmp(attr.server, "ldap.example") == 0);
    CHECK(strcmp(attr.filter, "(mail=*)") == 0 && strcmp(attr.password, "secret") == 0);
    zxpol_closeAddrList(list, &error);
    CHECK(ZX_SUCCESS(closePolicy(&policy)));
    return 0;
}

int zxtestClassificationsFromC(void) {
    _ZxPolCommAttrib attr;
    _ZxPolActionAttr actionAttr;
    _ZxPolTaskAttr taskAttr;
    _ZxPolComHandle *hive, *virus, *action, *task;
    ZxPolRefEntity entity = ZXPOL_REF_CLASSIFICATION;
    Policy policy;
    char path[16] = "";
    uint32_t size = sizeof path;
    int error = openPolicy(&policy);
    CHECK(ZX_SUCCESS(error));
    hive = zxpol_openClassificationHive(policy.store, &error);
    memset(&attr, 0, sizeof attr);
    virus = zxpol_createClassification(hive, "Virus", &attr, &error);
    CHECK(virus != NULL && virus->kind == ZXPOL_HANDLE_CLASSIFICATION);
    memset(&actionAttr, 0, sizeof actionAttr);
    actionAttr.actionType = 3;
    action = zxpol_createAction(virus, "move", &actionAttr, &error);
    CHECK(action != NULL && action->kind == ZXPOL_HANDLE_ACTION && actionAttr.order == 1);
    memset(&actionAttr, 0, sizeof actionAttr);
    zxpol_getActionAttrib(action, &actionAttr, &error);
    CHECK(ZX_SUCCESS(error) && actionAttr.actionType == 3 && actionAttr.setting != NULL);
    zxreg_setValue(actionAttr.setting, "folder", ZXREG_STRING, "/var", 5, &error);
    zxreg_closeKey(actionAttr.setting, &error);
    CHECK(zxpol_setActionOrder(virus, "move", 1, &error) == 1);

    CHECK(zxpol_checkReferInRule(policy.store, entity, "virus", path, &size, &error) == 0 && size == sizeof path);
    memset(&taskAttr, 0, sizeof taskAttr);
    task = zxpol_createTask(policy.root, "scan", &taskAttr, &error);
    zxpol_addOutcome(task, "infected", "Virus", &error);
    CHECK(zxpol_checkReferInRule(policy.store, entity, "virus", path, &size, &error) == 1);
    CHECK(ZX_SUCCESS(error) && strcmp(path, "\\") == 0 && size == 2);

    zxpol_closeTask(task, &error);
    zxpol_closeAction(action, &error);
    zxpol_closeClassification(virus, &error);
    zxpol_closeClassificationHive(hive, &error);
    CHECK(ZX_SUCCESS(error) && ZX_SUCCESS(closePolicy(&policy)));
    return 0;
}

int zxtestCodePagesFromC(void) {
    uint16_t units[5];
    char bytes[8];
    unsigned size = sizeof units;
    CHECK(mapToUnicode((char*)units, &size, "hello", 5) == ZXPOL_S_OK && size == 10 && units[4] == 'o');
    size = sizeof bytes;
    CHECK(mapFromUnicode(bytes, &size, (const char*)units, 10) == ZXPOL_S_OK && size == 5);
    CHECK(memcmp(bytes, "hello", 5) == 0);
    CHECK(mapToUnicode((char*)units, &size, "\xff", 1) == ZXPOL_E_CONVERSION && size == 5);
    return 0;
}
