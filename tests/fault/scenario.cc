#include "fault/scenario.h"

#include <stdexcept>

namespace zxtest {

namespace {

void append(Scenarios& all, const Scenarios& some) {
    all.insert(all.end(), some.begin(), some.end());
}

}  // namespace

Scenarios allScenarios() {
    Scenarios all;
    append(all, ruleScenarios());
    append(all, ruleStateScenarios());
    append(all, conditionScenarios());
    append(all, conditionStateScenarios());
    append(all, taskScenarios());
    append(all, taskStateScenarios());
    append(all, matchScenarios());
    append(all, addressListScenarios());
    append(all, normalListScenarios());
    append(all, listStateScenarios());
    append(all, classificationScenarios());
    append(all, classificationStateScenarios());
    return all;
}

namespace {

// Calls change(key, error) with an open key; whoever prepares a state must not fail.
template <class Change>
void inKey(World& world, const char* path, Change change) {
    int error = ZXREG_S_OK;
    _ZxPolComHandle* key = zxreg_openKey(world.store, path, &error);
    if (error >= 0) change(key, &error);
    if (error < 0) throw std::runtime_error(std::string("the state cannot be made: ") + path);
    zxreg_closeKey(key, &error);
}

}  // namespace

void deleteStoredValue(World& world, const char* key, const char* name) {
    inKey(world, key, [&](_ZxPolComHandle* at, int* error) { zxreg_deleteValue(at, name, error); });
}

void setStoredNumber(World& world, const char* key, const char* name, uint32_t number) {
    inKey(world, key, [&](_ZxPolComHandle* at, int* error) {
        zxreg_setValue(at, name, ZXREG_NUMBER, &number, sizeof number, error);
    });
}

void deleteStoredKey(World& world, const char* key, const char* name) {
    inKey(world, key, [&](_ZxPolComHandle* at, int* error) { zxreg_deleteKey(at, name, error); });
}

void settle(Outcome& outcome, _ZxPolComHandle* handle, int error, void (*close)(_ZxPolComHandle*, int*)) {
    outcome.result = error;
    outcome.answer += handle == nullptr ? "no handle" : "kind " + std::to_string(handle->kind);
    if ((handle != nullptr) != (ZX_SUCCESS(error) != 0)) outcome.violation = "a handle must come with a success only";
    if (handle == nullptr) return;
    int closed = error;
    lib(close, handle, &closed);
    if (closed != ZXPOL_S_OK) outcome.violation = "closing failed";
}

int walkResult(int error) {
    return (static_cast<uint32_t>(error) & 0xffffu) == 12 ? ZXPOL_S_OK : error;
}

Outcome walkNames(_ZxPolComHandle* handle, void (*enumerate)(_ZxPolComHandle*, uint32_t, char*, uint32_t*, int*)) {
    Outcome outcome;
    for (uint32_t index = 0;; ++index) {
        char name[ZXPOL_ADDRESS_SIZE];
        uint32_t size = sizeof name;
        lib(enumerate, handle, index, name, &size, &outcome.result);
        if (ZX_FAILURE(outcome.result) != 0) break;
        outcome.answer += name + std::string("|");
    }
    outcome.result = walkResult(outcome.result);
    return outcome;
}

}  // namespace zxtest
