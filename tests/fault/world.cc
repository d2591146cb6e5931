#include "fault/world.h"

#include <stdexcept>

namespace zxtest {

namespace {

void demand(int error, const char* what) {
    if (ZX_FAILURE(error) != 0) throw std::runtime_error(std::string("the policy cannot be made: ") + what);
}

void makeTask(_ZxPolComHandle* rule, const char* name, uint32_t filter, int overridable) {
    int error = ZXPOL_S_OK;
    _ZxPolTaskAttr attr = taskAttr(name, filter, overridable);
    _ZxPolComHandle* task = zxpol_createTask(rule, name, &attr, &error);
    demand(error, name);
    zxpol_closeTask(task, &error);
}

_ZxPolComHandle* makeRule(_ZxPolComHandle* parent, const char* name, CondList conditions) {
    int error = ZXPOL_S_OK;
    _ZxPolRuleAttr attr = ruleAttr(name);
    _ZxPolComHandle* rule = zxpol_createRule(parent, name, &attr, conditions.get(), &error);
    demand(error, name);
    return rule;
}

void closeRule(_ZxPolComHandle* rule) {
    int error = ZXPOL_S_OK;
    zxpol_closeRule(rule, &error);
}

void makeRuleA(_ZxPolComHandle* root) {
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* a = makeRule(root, "A", {pairOf("*@a.example", "*"), pairOf("bob@b.example", "*@x.example")});
    makeTask(a, "t", 26, 0);
    makeTask(a, "u", 5, 0);
    makeTask(a, "v", 7, 0);
    _ZxPolComHandle* t = zxpol_openTask(a, "t", &error);
    zxpol_addOutcome(t, "infected", "Infected", &error);
    zxpol_addOutcome(t, "clean", "Clean", &error);
    demand(error, "outcomes");
    zxpol_closeTask(t, &error);
    zxpol_inactivateTask(a, "\\scan", 0, &error);
    zxpol_inactivateTask(a, "\\A\\u", 0, &error);
    demand(error, "marks");
    _ZxPolComHandle* b = makeRule(a, "B", {pairOf("bob@a.example", "*")});
    makeTask(b, "deep", 9, 0);
    closeRule(b);
    closeRule(makeRule(a, "C", {pairOf("*@a.example", "*@y.example")}));
    closeRule(a);
}

void makeLists(_ZxPolComHandle* hive) {
    for (const char* name : {"Dir", "Far"}) {
        int error = ZXPOL_S_OK;
        const _ZxPolAddrListAttr attr = directoryAttr(name);
        _ZxPolComHandle* list = zxpol_createAddrList(hive, name, &attr, &error);
        demand(error, name);
        zxpol_closeAddrList(list, &error);
    }
}

void makePolicy(_ZxPolComHandle* store) {
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* lists = zxpol_openAddrListHive(store, &error);
    _ZxPolComHandle* rules = zxpol_openRuleHive(store, 0, &error);
    demand(error, "hives");
    makeLists(lists);
    zxpol_setExclusiveFilterType(rules, 26, ZXPOL_FILTER_ASC_EXCLUSIVE, &error);
    zxpol_setExclusiveFilterType(rules, 7, ZXPOL_FILTER_DESC_EXCLUSIVE, &error);
    _ZxPolComHandle* root = zxpol_openRootRule(rules, &error);
    demand(error, "root");
    makeTask(root, "scan", 26, 1);
    makeTask(root, "stamp", 7, 0);
    makeRuleA(root);
    closeRule(makeRule(root, "D", {pairOf("(Dir)", "*")}));
    closeRule(makeRule(root, "E", {pairOf("*", "carol@z.example")}));
    closeRule(root);
    zxpol_closeRuleHive(rules, &error);
    zxpol_closeAddrListHive(lists, &error);
}

_ZxPolComHandle* openMemoryStore() {
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* store = zxreg_openStore("memory:", &error);
    demand(error, "store");
    return store;
}

// The policy as the store holds it: made once through the interface, copied for every run.
const StoredKey& policyContent() {
    static const StoredKey content = [] {
        _ZxPolComHandle* store = openMemoryStore();
        makePolicy(store);
        StoredKey made = readStore(store);
        int error = ZXPOL_S_OK;
        zxreg_closeKey(store, &error);
        return made;
    }();
    return content;
}

}  // namespace

World::World(bool withPolicy) : store(openMemoryStore()) {
    if (!withPolicy) return;
    writeStore(store, policyContent());
    int error = ZXPOL_S_OK;
    ruleHive = zxpol_openRuleHive(store, 0, &error);
    listHive = zxpol_openAddrListHive(store, &error);
    root = zxpol_openRootRule(ruleHive, &error);
    a = zxpol_openRule(root, "A", &error);
    task = zxpol_openTask(a, "t", &error);
    list = zxpol_openAddrList(listHive, "Dir", &error);
    demand(error, "opening");
}

World::~World() {
    close();
}

void World::close() {
    int error = ZXPOL_S_OK;
    zxpol_closeAddrList(list, &error);
    zxpol_closeTask(task, &error);
    zxpol_closeRule(a, &error);
    zxpol_closeRule(root, &error);
    zxpol_closeRuleHive(ruleHive, &error);
    zxpol_closeAddrListHive(listHive, &error);
    if (store != nullptr) zxreg_closeKey(store, &error);
    list = task = a = root = ruleHive = listHive = store = nullptr;
}

}  // namespace zxtest
