#include "fault/scenario.h"

namespace zxtest {

namespace {

void append(std::vector<Scenario>& all, const std::vector<Scenario>& some) {
    all.insert(all.end(), some.begin(), some.end());
}

}  // namespace

std::vector<Scenario> allScenarios() {
    std::vector<Scenario> all;
    append(all, ruleScenarios());
    append(all, conditionScenarios());
    append(all, taskScenarios());
    append(all, matchScenarios());
    append(all, addressListScenarios());
    append(all, normalListScenarios());
    append(all, classificationScenarios());
    return all;
}

Sites positionsOf(const Sites& children) {
    Sites sites{"queryValue order"};
    for (const std::string& child : children)
        sites.push_back("openKey " + child);
    return sites;
}

Sites numberedNames() {
    return {"enumValue "};
}

Sites keysOfANewRule() {
    return {"createKey rules", "createKey inactive", "createKey tasks"};
}

Sites keysOfANewTask() {
    return {"createKey Classification", "createKey setting"};
}

Sites unreadConditions() {
    return numberedNames() + Sites{"queryValue condition*"};
}

Sites operator+(Sites some, const Sites& others) {
    some.insert(some.end(), others.begin(), others.end());
    return some;
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
        char name[ZXPOL_NAME_SIZE];
        uint32_t size = sizeof name;
        lib(enumerate, handle, index, name, &size, &outcome.result);
        if (ZX_FAILURE(outcome.result) != 0) break;
        outcome.answer += name + std::string("|");
    }
    outcome.result = walkResult(outcome.result);
    return outcome;
}

}  // namespace zxtest
