// One call of the interface (or one walk) that is run again and again with a failure at every place.
#pragma once

#include <string>
#include <vector>

#include "fault/world.h"

namespace zxtest {

// What a call answered: its result, and all its outputs as a text.
struct Outcome {
    int result = ZXPOL_S_OK;
    std::string answer;
    std::string violation;  // a promise that the outputs broke, such as a handle together with a failure
};

// Whether the call, run again after it failed, may find its work partly done: deleted things are not found again.
enum class Retry { succeeds, mayNotFind };

struct Scenario {
    const char* name;
    Start start;
    Retry retry;
    Outcome (*act)(World& world);
    // Failing store calls that the interface passes over, as "operation name" (a * at the end: and any name that goes
    // on from there): the call may succeed, with another answer or another content of the store.
    std::vector<std::string> passedOver;
};

// What the interface passes over by design, as said once for all calls that build on it.
using Sites = std::vector<std::string>;

// A child whose position cannot be read counts as one that has none.
Sites positionsOf(const Sites& children);
// The names of numbered values are read up to the first failure, whatever it is.
Sites numberedNames();
// The keys below a new rule or task are made when they are first needed.
Sites keysOfANewRule();
Sites keysOfANewTask();
// A condition that is not known to be there and cannot be looked up is left out.
Sites unreadConditions();

Sites operator+(Sites some, const Sites& others);

// The scenarios of the families.
const std::vector<Scenario>& ruleScenarios();
const std::vector<Scenario>& conditionScenarios();
const std::vector<Scenario>& taskScenarios();
const std::vector<Scenario>& matchScenarios();
const std::vector<Scenario>& addressListScenarios();
const std::vector<Scenario>& normalListScenarios();
const std::vector<Scenario>& classificationScenarios();
std::vector<Scenario> allScenarios();

// Takes what an opening function returned: notes a broken promise, and closes it.
void settle(Outcome& outcome, _ZxPolComHandle* handle, int error, void (*close)(_ZxPolComHandle*, int*));

// Walks an enumeration of names to its end, which counts as a success.
Outcome walkNames(_ZxPolComHandle* handle, void (*enumerate)(_ZxPolComHandle*, uint32_t, char*, uint32_t*, int*));

// Ends a walk: the end of an enumeration is a success.
int walkResult(int error);

}  // namespace zxtest
