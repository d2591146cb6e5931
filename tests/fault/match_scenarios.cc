// Matching, with the collection of tasks.
#include "fault/scenario.h"

namespace zxtest {

namespace {

std::string nameOfTask(_ZxPolComHandle* task) {
    int error = ZXPOL_S_OK;
    _ZxPolTaskAttr attr{};
    zxpol_getTaskAttrib(task, &attr, &error);
    if (attr.setting != nullptr) zxreg_closeKey(attr.setting, &error);
    return attr.displayName;
}

std::string textOf(const _ZxPolMatchPair& pair) {
    std::string text = pair.rulePath + std::string(" <");
    for (char** receiver = pair.receivers; *receiver != nullptr; ++receiver)
        text += *receiver + std::string(" ");
    text += ">";
    for (uint32_t task = 0; task < pair.taskCount; ++task)
        text += " " + nameOfTask(pair.tasks[task]);
    return text + "\n";
}

Outcome match(World& world, uint32_t mode) {
    Outcome outcome;
    const char* receivers[] = {"x@x.example", "y@y.example", "carol@z.example", nullptr};
    _ZxPolMatchPair* pairs = nullptr;
    uint32_t count = 77;
    lib(zxpol_matchRuleByMailInfoEx, world.ruleHive, world.listHive, mode, "bob@a.example", receivers, &pairs, &count,
        &outcome.result);
    const bool failed = ZX_FAILURE(outcome.result) != 0;
    if (failed && (pairs != nullptr || count != 0)) outcome.violation = "outputs of a failed match";
    if ((pairs == nullptr) != (count == 0)) outcome.violation = "array and count disagree";
    for (uint32_t i = 0; i < count; ++i)
        outcome.answer += textOf(pairs[i]);
    int error = outcome.result;
    lib(zxpol_freeMatchPair, pairs, count, &error);
    return outcome;
}

Outcome matchFirst(World& world) {
    return match(world, 0);
}

Outcome matchBest(World& world) {
    return match(world, 1);
}

Outcome matchFirstByItsOwnFunction(World& world) {
    Outcome outcome;
    const char* receivers[] = {"somebody@elsewhere.example", nullptr};
    _ZxPolMatchPair* pairs = nullptr;
    uint32_t count = 0;
    lib(zxpol_matchRuleByMailInfo, world.ruleHive, world.listHive, "", receivers, &pairs, &count, &outcome.result);
    for (uint32_t i = 0; i < count; ++i)
        outcome.answer += textOf(pairs[i]);
    lib(zxpol_freeMatchPair, pairs, count, &outcome.result);
    return outcome;
}

// A rule below the root that cannot be checked is skipped, the end of its conditions is the end however it comes,
// the activity test answers "active" when it fails, and an exclusive filter type that cannot be read is none.
const Sites kSkipped = {"openKey *", "createKey *", "queryValue *", "enumValue *", "enumSubkey *"};

}  // namespace

const std::vector<Scenario>& matchScenarios() {
    static const std::vector<Scenario> all = {
        {"MatchFirst", Start::policy, Retry::succeeds, matchFirst, kSkipped},
        {"MatchBest", Start::policy, Retry::succeeds, matchBest, kSkipped},
        {"MatchFirstOfOneReceiver", Start::policy, Retry::succeeds, matchFirstByItsOwnFunction, kSkipped},
    };
    return all;
}

}  // namespace zxtest
