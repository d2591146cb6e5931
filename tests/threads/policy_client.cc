#include "threads/policy_client.h"

#include <utility>

#include "support/records.h"
#include "zxregistry.h"

namespace threads {
namespace {

// Whether somebody else has deleted what a call is about.
bool isGone(int code) {
    return code == ZXREG_E_NOT_FOUND || code == ZXREG_E_DELETED;
}

const char* ruleOf(Policy policy) {
    return policy == Policy::byList ? "ByList" : "ByName";
}

size_t tasksOf(Policy policy) {
    return policy == Policy::byList ? 1 : 2;
}

// Closes a handle when the scope is left.
class Closing {
public:
    using Close = void (*)(_ZxPolComHandle*, int*);
    Closing(_ZxPolComHandle* handle, Close close) : _handle(handle), _close(close) {}
    ~Closing() {
        int ignored = ZXPOL_S_OK;
        if (_handle != nullptr) _close(_handle, &ignored);
    }
    Closing(const Closing&) = delete;
    Closing& operator=(const Closing&) = delete;
    _ZxPolComHandle* get() const { return _handle; }

private:
    _ZxPolComHandle* _handle;
    Close _close;
};

std::string lineOf(const _ZxPolMatchPair& pair) {
    size_t receivers = 0;
    while (pair.receivers[receivers] != nullptr)
        ++receivers;
    return std::string(pair.rulePath) + " " + std::to_string(receivers) + " " + std::to_string(pair.taskCount);
}

// An update that is taken back unless it is ended.
class Bracket {
public:
    explicit Bracket(_ZxPolComHandle* key) : _key(key) {
        int error = ZXREG_S_OK;
        zxreg_beginUpdate(_key, &error);
        check(error, "beginning an update");
    }
    ~Bracket() {
        int ignored = ZXREG_S_OK;
        if (_key != nullptr) zxreg_cancelUpdate(_key, &ignored);
    }
    Bracket(const Bracket&) = delete;
    Bracket& operator=(const Bracket&) = delete;
    void end() {
        int error = ZXREG_S_OK;
        zxreg_endUpdate(std::exchange(_key, nullptr), &error);
        check(error, "ending an update");
    }

private:
    _ZxPolComHandle* _key;
};

}  // namespace

PolicyClient::PolicyClient(const std::string& location) {
    int error = ZXPOL_S_OK;
    _store = zxreg_openStore(location.c_str(), &error);
    check(error, "opening the store");
    _rules = zxpol_openRuleHive(_store, 0, &error);
    _lists = zxpol_openAddrListHive(_store, &error);
    _root = zxpol_openRootRule(_rules, &error);
    if (error >= 0) return;
    _closeAll();
    check(error, "opening the hives");
}

PolicyClient::~PolicyClient() {
    _closeAll();
}

void PolicyClient::_closeAll() {
    int ignored = ZXPOL_S_OK;
    if (_root != nullptr) zxpol_closeRule(_root, &ignored);
    if (_lists != nullptr) zxpol_closeAddrListHive(_lists, &ignored);
    if (_rules != nullptr) zxpol_closeRuleHive(_rules, &ignored);
    zxreg_closeKey(_store, &ignored);
}

void PolicyClient::createList(const char* name) {
    const _ZxPolAddrListAttr attr = zxtest::normalAttr(name);
    int error = ZXPOL_S_OK;
    const Closing list(zxpol_createAddrList(_lists, name, &attr, &error), &zxpol_closeAddrList);
    check(error, "creating a list");
}

void PolicyClient::addRule(const std::string& name, const std::string& sender, const std::string& receiver) {
    _ZxPolRuleAttr attr = zxtest::ruleAttr(name);
    zxtest::CondList conditions{zxtest::pairOf(sender, receiver)};
    int error = ZXPOL_S_OK;
    const Closing rule(zxpol_createRule(_root, name.c_str(), &attr, conditions.get(), &error), &zxpol_closeRule);
    check(error, "creating a rule");
}

void PolicyClient::addTask(const std::string& rule, const std::string& name) {
    int error = ZXPOL_S_OK;
    const Closing owner(zxpol_openRule(_root, rule.c_str(), &error), &zxpol_closeRule);
    check(error, "opening a rule");
    _ZxPolTaskAttr attr = zxtest::taskAttr(name);
    const Closing task(zxpol_createTask(owner.get(), name.c_str(), &attr, &error), &zxpol_closeTask);
    check(error, "creating a task");
}

void PolicyClient::removeRule(const std::string& name) {
    int error = ZXPOL_S_OK;
    zxpol_deleteRule(_root, name.c_str(), &error);
    check(error, "deleting a rule");
}

void PolicyClient::putInPlace(Policy policy) {
    const Policy other = policy == Policy::byList ? Policy::byName : Policy::byList;
    Bracket bracket(_store);
    const Addresses names = childNames();
    for (const std::string& name : names) {
        if (name == ruleOf(other)) removeRule(name);
    }
    int error = ZXPOL_S_OK;
    const Closing list(zxpol_openAddrList(_lists, kNames, &error), &zxpol_closeAddrList);
    check(error, "opening the list");
    const Addresses swapped = {kSwapped};
    if (policy == Policy::byList)
        zxpol_insertAddress(list.get(), arrayOf(swapped).data(), &error);
    else
        zxpol_removeAddress(list.get(), arrayOf(swapped).data(), &error);
    if (error != ZXPOL_E_NOT_FOUND) check(error, "changing the list");
    addRule(ruleOf(policy), policy == Policy::byList ? std::string("(") + kNames + ")" : kSwapped, "*");
    if (policy == Policy::byName) {
        const _ZxPolAddrPairCond pair = zxtest::pairOf(std::string("(") + kNames + ")", "*");
        error = ZXPOL_S_OK;
        const Closing rule(zxpol_openRule(_root, ruleOf(policy), &error), &zxpol_closeRule);
        zxpol_addCondition(rule.get(), zxtest::bytesOf(pair), &error);
        check(error, "adding a condition");
    }
    for (size_t task = 0; task < tasksOf(policy); ++task)
        addTask(ruleOf(policy), "task" + std::to_string(task));
    bracket.end();
}

Addresses PolicyClient::match(uint32_t mode, const std::string& sender, const Addresses& receivers) const {
    _ZxPolMatchPair* pairs = nullptr;
    uint32_t count = 0;
    int error = ZXPOL_S_OK;
    zxpol_matchRuleByMailInfoEx(_rules, _lists, mode, sender.c_str(), arrayOf(receivers).data(), &pairs, &count,
                                &error);
    check(error, "matching");
    Addresses lines;
    for (uint32_t index = 0; index < count; ++index)
        lines.push_back(lineOf(pairs[index]));
    zxpol_freeMatchPair(pairs, count, &error);
    return lines;
}

bool PolicyClient::isReferredTo(const char* list) const {
    char path[ZXPOL_NAME_SIZE];
    uint32_t size = sizeof path;
    int error = ZXPOL_S_OK;
    const int isFound = zxpol_checkReferInRule(_store, ZXPOL_REF_ADDRLIST, list, path, &size, &error);
    check(error, "checking references");
    return isFound != 0;
}

Addresses PolicyClient::childNames() const {
    Addresses names;
    for (uint32_t index = 0;; ++index) {
        char name[ZXPOL_NAME_SIZE];
        uint32_t size = sizeof name;
        int error = ZXPOL_S_OK;
        zxpol_enumRule(_root, index, name, &size, &error);
        if (error == ZXPOL_E_NO_MORE_ITEMS) return names;
        check(error, "enumerating rules");
        names.emplace_back(name);
    }
}

std::string PolicyClient::firstCondition(const std::string& rule) const {
    int error = ZXPOL_S_OK;
    const Closing opened(zxpol_openRule(_root, rule.c_str(), &error), &zxpol_closeRule);
    if (isGone(error)) return "";
    check(error, "opening a rule");
    _ZxPolAddrPairCond pair{};
    uint32_t size = sizeof pair;
    zxpol_enumCondition(opened.get(), 0, reinterpret_cast<unsigned char*>(&pair), &size, &error);
    if (isGone(error) || error == ZXPOL_E_NO_MORE_ITEMS) return "";
    check(error, "reading a condition");
    return std::string(pair.sender) + " " + pair.receiver;
}

Addresses answerUnder(Policy policy, size_t receivers) {
    return {std::string("\\") + ruleOf(policy) + " " + std::to_string(receivers) + " " +
            std::to_string(tasksOf(policy))};
}

}  // namespace threads
