// One call of the interface (or one walk) that is run again and again with a failure at every place.
#pragma once

#include <string>
#include <vector>

#include "fault/passed_over.h"
#include "fault/world.h"

namespace zxtest {

// What a call answered: its result, and all its outputs as a text.
struct Outcome {
    int result = ZXPOL_S_OK;
    std::string answer;
    std::string violation;  // a promise that the outputs broke, such as a handle together with a failure
};

// What the call, run again after it failed, comes to: the same as without the failure, or a success all the same (a
// move may leave two children in one place, a replacement old conditions behind a gap), or that it finds its work
// partly done, as deleted things are not found again, or the store stamped with our version.
enum class Retry { completes, succeeds, mayNotFind, stamped };

struct Scenario {
    const char* name;
    Start start;
    Retry retry;
    Outcome (*act)(World& world);
    Sites passedOver;
    // Makes the state that the call meets, with no failure.
    void (*prepare)(World& world) = nullptr;
};

// The scenarios of the families: the usual case of each function, and the same functions in other states.
using Scenarios = std::vector<Scenario>;
const Scenarios& ruleScenarios();
const Scenarios& ruleStateScenarios();
const Scenarios& conditionScenarios();
const Scenarios& conditionStateScenarios();
const Scenarios& taskScenarios();
const Scenarios& taskStateScenarios();
const Scenarios& matchScenarios();
const Scenarios& addressListScenarios();
const Scenarios& normalListScenarios();
const Scenarios& listStateScenarios();
const Scenarios& classificationScenarios();
const Scenarios& classificationStateScenarios();
Scenarios allScenarios();

// What a scenario's call reports when the store does not fail.
int resultOfCleanRun(const Scenario& scenario);

// Calls use(rule) with the rule at a path, which is opened and closed without counting.
template <class Use>
Outcome onRule(World& world, const char* path, Use use) {
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* rule = zxpol_openRuleByFullName(world.ruleHive, path, &error);
    Outcome outcome = use(rule);
    int closed = ZXPOL_S_OK;
    zxpol_closeRule(rule, &closed);
    return outcome;
}

// Changes the store behind the library's back: a value or key below the world's root by its path.
void deleteStoredValue(World& world, const char* key, const char* name);
void setStoredNumber(World& world, const char* key, const char* name, uint32_t number);
void deleteStoredKey(World& world, const char* key, const char* name);

// Takes what an opening function returned: notes a broken promise, and closes it.
void settle(Outcome& outcome, _ZxPolComHandle* handle, int error, void (*close)(_ZxPolComHandle*, int*));

// Calls an opening function and takes what it returned.
template <class Close, class Open, class... Arguments>
Outcome opening(Close close, Open open, Arguments... arguments) {
    Outcome outcome;
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* handle = lib(open, arguments..., &error);
    settle(outcome, handle, error, close);
    return outcome;
}

// Calls a function of which only the result counts.
template <class Function, class... Arguments>
Outcome resultOf(Function function, Arguments... arguments) {
    Outcome outcome;
    lib(function, arguments..., &outcome.result);
    return outcome;
}

// Walks an enumeration of names to its end, which counts as a success.
Outcome walkNames(_ZxPolComHandle* handle, void (*enumerate)(_ZxPolComHandle*, uint32_t, char*, uint32_t*, int*));

// Ends a walk: the end of an enumeration is a success.
int walkResult(int error);

}  // namespace zxtest
