#include "told_match.h"

#include <algorithm>

#include "fail.h"
#include "support/fault_store.h"
#include "zxregistry.h"

namespace fuzz {

namespace {

// What designates a task, of which the flat interface does not tell the name: the identity of its key "setting".
uint64_t identityOf(_ZxPolComHandle* task) {
    int error = ZXPOL_S_OK;
    _ZxPolTaskAttr attributes = {};
    zxpol_getTaskAttrib(task, &attributes, &error);
    require(error >= 0 && attributes.setting != nullptr, "a task found has no setting");
    const uint64_t identity = zxreg_identity(attributes.setting, &error);
    zxreg_closeKey(attributes.setting, &error);
    require(error >= 0 && identity != 0, "a task found has no identity");
    return identity;
}

// The same of the task of this full name.
uint64_t identityOf(_ZxPolComHandle* rules, const std::string& fullName) {
    const size_t slash = fullName.rfind('\\');
    require(slash != std::string::npos, "a task told has no full name");
    const std::string path = slash == 0 ? "\\" : fullName.substr(0, slash);
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* rule = zxpol_openRuleByFullName(rules, path.c_str(), &error);
    _ZxPolComHandle* task = zxpol_openTask(rule, fullName.c_str() + slash + 1, &error);
    require(error >= 0, "a task told is not there");
    const uint64_t identity = identityOf(task);
    zxpol_closeTask(task, &error);
    zxpol_closeRule(rule, &error);
    return identity;
}

}  // namespace

void ToldMatch::hear(void* context, const _ZxPolMatchStep* step) {
    static_cast<ToldMatch*>(context)->hear(*step);
}

void ToldMatch::hear(const _ZxPolMatchStep& step) {
    switch (step.kind) {
        case ZXPOL_STEP_RESTART:
            *this = ToldMatch();
            break;
        case ZXPOL_STEP_RECEIVER_DECIDED:
            if (step.isMatched != 0) _receivers[step.rulePath].push_back(step.receiver);
            break;
        case ZXPOL_STEP_COLLECTION:
            _collections.push_back({step.rulePath, {}});
            break;
        case ZXPOL_STEP_TASK:
            hearTask(step);
            break;
        default:
            require(step.kind <= ZXPOL_STEP_PASSED_OVER, "a step of no kind");
    }
}

void ToldMatch::hearTask(const _ZxPolMatchStep& step) {
    require(!_collections.empty(), "a task of no rule");
    std::vector<std::string>& tasks = _collections.back().tasks;
    if (step.fate == ZXPOL_FATE_REPLACES) {
        const auto replaced = std::find(tasks.begin(), tasks.end(), step.otherPath);
        require(replaced != tasks.end(), "a task replaces none");
        tasks.erase(replaced);
    }
    if (step.fate == ZXPOL_FATE_TAKEN || step.fate == ZXPOL_FATE_REPLACES) tasks.emplace_back(step.taskPath);
}

void ToldMatch::requireRecords(_ZxPolComHandle* rules, const _ZxPolMatchPair* pairs, uint32_t count) const {
    const zxtest::UncountedCalls lookingOnly;
    requireSame(_collections.size(), size_t{count}, "the rules told are not those found");
    requireSame(_receivers.size(), size_t{count}, "receivers of a rule that is not found");
    for (uint32_t i = 0; i < count; ++i) {
        const _ZxPolMatchPair& pair = pairs[i];
        const Collection& told = _collections[i];
        requireSame(told.rulePath, std::string(pair.rulePath), "a rule told is not the one found");
        requireSame(told.tasks.size(), size_t{pair.taskCount}, "the tasks told are not as many as those found");
        for (uint32_t task = 0; task < pair.taskCount; ++task)
            requireSame(identityOf(rules, told.tasks[task]), identityOf(pair.tasks[task]),
                        "a task told is not the one found");
        std::vector<const char*> receivers;
        for (char** receiver = pair.receivers; *receiver != nullptr; ++receiver)
            receivers.push_back(*receiver);
        const auto decided = _receivers.find(told.rulePath);
        require(decided != _receivers.end(), "no receiver was told for a rule");
        requireSame(decided->second, receivers, "the receivers told are not those found");
    }
}

}  // namespace fuzz
