#include "told_match.h"

#include <algorithm>

#include "fail.h"

namespace fuzz {

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

void ToldMatch::requireRecords(const _ZxPolMatchPair* pairs, uint32_t count) const {
    requireSame(_collections.size(), size_t{count}, "the rules told are not those found");
    requireSame(_receivers.size(), size_t{count}, "receivers of a rule that is not found");
    for (uint32_t i = 0; i < count; ++i) {
        const _ZxPolMatchPair& pair = pairs[i];
        const Collection& told = _collections[i];
        requireSame(told.rulePath, std::string(pair.rulePath), "a rule told is not the one found");
        requireSame(told.tasks.size(), size_t{pair.taskCount}, "the tasks told are not those found");
        std::vector<const char*> receivers;
        for (char** receiver = pair.receivers; *receiver != nullptr; ++receiver)
            receivers.push_back(*receiver);
        const auto decided = _receivers.find(told.rulePath);
        require(decided != _receivers.end(), "no receiver was told for a rule");
        requireSame(decided->second, receivers, "the receivers told are not those found");
    }
}

}  // namespace fuzz
