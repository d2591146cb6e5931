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

// Whether a mail of the scenarios may be of the rule: \D cannot be checked, and nothing else is of \E but what goes to
// carol.
bool isPossible(const _ZxPolMatchPair& pair) {
    const std::string path = pair.rulePath;
    for (char** receiver = pair.receivers; *receiver != nullptr; ++receiver) {
        const std::string name = *receiver;
        if (path == "\\E" && name != "carol@z.example") return false;
        if (path == "\\A\\C" && name != "y@y.example") return false;
    }
    return path == "\\" || path == "\\A" || path == "\\A\\B" || path == "\\A\\C" || path == "\\E";
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
    for (uint32_t i = 0; i < count; ++i) {
        outcome.answer += textOf(pairs[i]);
        if (!isPossible(pairs[i])) outcome.violation = "matched " + textOf(pairs[i]);
    }
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

void ignoreText(const char*) {}

// One mail from a sender whom no other rule knows.
Outcome matchCarol(World& world, uint32_t mode) {
    Outcome outcome;
    const char* receivers[] = {"carol@z.example", nullptr};
    _ZxPolMatchPair* pairs = nullptr;
    uint32_t count = 77;
    lib(zxpol_matchRuleByMailInfoEx, world.ruleHive, world.listHive, mode, "s@elsewhere.example", receivers, &pairs,
        &count, &outcome.result);
    for (uint32_t i = 0; i < count; ++i) {
        outcome.answer += textOf(pairs[i]);
        if (!isPossible(pairs[i])) outcome.violation = "matched " + textOf(pairs[i]);
    }
    if ((pairs == nullptr) != (count == 0)) outcome.violation = "array and count disagree";
    int error = ZXPOL_S_OK;
    lib(zxpol_freeMatchPair, pairs, count, &error);
    return outcome;
}

// The same with other priorities and weights; the process gets back what it had.
Outcome matchWithOptions(World& world) {
    const _ZxPolMatchOption other{1, 1, 1, 0, 0}, usual{1, 0, 0, 0, 0};
    Outcome set = resultOf(zxpol_setMatchOption, &other);
    Outcome outcome = matchBest(world);
    if (set.result != ZXPOL_S_OK) outcome.violation = "options without store or memory failed";
    resultOf(zxpol_setMatchOption, &usual);
    return outcome;
}

// The same with all that is logged going to a function of the caller's.
Outcome matchWithDebugging(World& world) {
    int error = ZXPOL_S_OK;
    const ZxPolDebugFunction before = lib(zxpol_setDebugFunction, ignoreText, &error);
    Outcome outcome = matchCarol(world, 1);
    lib(zxpol_setDebugFunction, before, &error);
    if (error != ZXPOL_S_OK) outcome.violation = "the debug function was refused";
    return outcome;
}

// Takes the conditions of all rules that the mail to carol could be of.
void loseConditions(World& world) {
    deleteStoredValue(world, "Rule\\Mail", "condition1");
    deleteStoredValue(world, "Rule\\Mail\\rules\\E", "condition1");
}

// A rule below the root that cannot be checked is skipped, the end of its conditions is the end however it comes,
// the activity test answers "active" when it fails, and an exclusive filter type that cannot be read is none.
const Sites kSkipped = because("rule-skipped", {"openKey *", "createKey *", "queryValue *", "enumValue "});
const Sites kBest = kSkipped + because("best-so-far", {"enumSubkey "});

}  // namespace

const std::vector<Scenario>& matchScenarios() {
    static const std::vector<Scenario> all = {
        {"MatchFirst", Start::policy, Retry::completes, matchFirst, kSkipped},
        {"MatchBest", Start::policy, Retry::completes, matchBest, kBest},
        {"MatchFirstOfOneReceiver", Start::policy, Retry::completes, matchFirstByItsOwnFunction,
         because("rule-skipped", {"openKey *", "queryValue *", "enumValue "})},
        {"MatchFirstByTheReceiver", Start::policy, Retry::completes, [](World& world) { return matchCarol(world, 0); },
         kSkipped},
        {"MatchBestByTheReceiver", Start::policy, Retry::completes, [](World& world) { return matchCarol(world, 1); },
         kBest},
        {"MatchBestWithOptions", Start::policy, Retry::completes, matchWithOptions, kBest},
        {"MatchBestWithDebugFunction", Start::policy, Retry::completes, matchWithDebugging, kBest},
        {"MatchNothingFirst",
         Start::policy,
         Retry::completes,
         [](World& world) { return matchCarol(world, 0); },
         {},
         loseConditions},
        {"MatchNothingBest",
         Start::policy,
         Retry::completes,
         [](World& world) { return matchCarol(world, 1); },
         {},
         loseConditions},
    };
    return all;
}

}  // namespace zxtest
