#include "caller.h"

#include "calls.h"
#include "fail.h"
#include "zxregistry.h"

namespace fuzz {

namespace {

// The newest handles are closed first when there are more than that.
constexpr size_t kMostOpen = 24;

void close(_ZxPolComHandle* handle) {
    int error = ZXPOL_S_OK;
    switch (handle->kind) {
        case ZXREG_HANDLE_KEY:
            return zxreg_closeKey(handle, &error);
        case ZXPOL_HANDLE_RULE_HIVE:
            return zxpol_closeRuleHive(handle, &error);
        case ZXPOL_HANDLE_RULE:
            return zxpol_closeRule(handle, &error);
        case ZXPOL_HANDLE_TASK:
            return zxpol_closeTask(handle, &error);
        case ZXPOL_HANDLE_ADDRLIST_HIVE:
            return zxpol_closeAddrListHive(handle, &error);
        case ZXPOL_HANDLE_ADDRLIST:
            return zxpol_closeAddrList(handle, &error);
        case ZXPOL_HANDLE_CLASS_HIVE:
            return zxpol_closeClassificationHive(handle, &error);
        case ZXPOL_HANDLE_CLASSIFICATION:
            return zxpol_closeClassification(handle, &error);
        case ZXPOL_HANDLE_ACTION:
            return zxpol_closeAction(handle, &error);
        default:
            fail("a handle of an unknown kind");
    }
}

void closeOne(Arguments& with) {
    _ZxPolComHandle* handle = with.closing();
    if (handle != nullptr) close(handle);
}

_ZxPolComHandle* made(_ZxPolComHandle* handle) {
    require(handle != nullptr, "the policy cannot be made");
    return handle;
}

void makeRules(OpenHandles& open) {
    int error = ZXPOL_S_OK;
    _ZxPolRuleAttr rule = {};
    _ZxPolTaskAttr task = {};
    task.enable = 1;
    task.overridable = 1;
    const _ZxPolAddrPairCond pair = {"*@b.c", "*"};
    const unsigned char* conditions[] = {reinterpret_cast<const unsigned char*>(&pair), nullptr};
    open.push_back(made(zxpol_openRuleHive(open[0], 0, &error)));
    open.push_back(made(zxpol_openRootRule(open.back(), &error)));
    open.push_back(made(zxpol_createTask(open.back(), "t", &task, &error)));
    open.push_back(made(zxpol_createRule(open[2], "A", &rule, conditions, &error)));
    close(made(zxpol_createRule(open.back(), "B", &rule, conditions, &error)));
    close(made(zxpol_createTask(open.back(), "u", &task, &error)));
}

void makeListAndClassification(OpenHandles& open) {
    int error = ZXPOL_S_OK;
    const _ZxPolAddrListAttr list = {};
    const _ZxPolCommAttrib common = {};
    const _ZxPolActionAttr action = {};
    const char* addresses[] = {"a@b.c", "*@*.b.c", nullptr};
    open.push_back(made(zxpol_openAddrListHive(open[0], &error)));
    open.push_back(made(zxpol_createAddrList(open.back(), "L", &list, &error)));
    zxpol_insertAddress(open.back(), addresses, &error);
    open.push_back(made(zxpol_openClassificationHive(open[0], &error)));
    open.push_back(made(zxpol_createClassification(open.back(), "Infected", &common, &error)));
    open.push_back(made(zxpol_createAction(open.back(), "move", &action, &error)));
    require(error >= 0, "the policy cannot be filled");
}

}  // namespace

Caller::Caller() {
    int error = ZXREG_S_OK;
    _open.push_back(made(zxreg_openStore("memory:", &error)));
    makeRules(_open);
    makeListAndClassification(_open);
    // What an input sets for the process is not there for the next one.
    const _ZxPolMatchOption initial = {1, 0, 0, 0, 0};
    zxpol_setMatchOption(&initial, &error);
}

Caller::~Caller() {
    while (!_open.empty()) {
        close(_open.back());
        _open.pop_back();
    }
}

void Caller::call(Bytes& bytes) {
    // More of the numbers stand for closing than for any other call.
    const unsigned choice = bytes.byte();
    const std::vector<Call>& all = allCalls();
    Arguments arguments(bytes, _open);
    if (choice < all.size())
        all[choice](arguments);
    else
        closeOne(arguments);
    while (_open.size() > kMostOpen) {
        close(_open.back());
        _open.pop_back();
    }
}

}  // namespace fuzz
