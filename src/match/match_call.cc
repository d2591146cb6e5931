#include "match/match_call.h"

#include "addrlist/addr_list_hive.h"
#include "match/rule_matcher.h"
#include "rules/rule_hive.h"
#include "store/one_state.h"

namespace zxpol {

namespace {

// First match, where no two priorities are compared and no weights are asked for.
constexpr _ZxPolMatchOption kFirstMatch = {0, 0xFFFFFFFF, 0xFFFFFFFF, 0, 0};

// The options of a call: all but the mode are process-wide, and first match uses none.
_ZxPolMatchOption optionFor(uint32_t mode) {
    if (mode == 0) return kFirstMatch;
    _ZxPolMatchOption option = ZxPolRuleMatcher::mGlobalOption;
    option.matchMode = mode;
    return option;
}

}  // namespace

void FunctionObserver::onStep(const _ZxPolMatchStep& step) {
    _hasTold = true;
    _function(_context, &step);
}

void FunctionObserver::takeBack() {
    if (!_hasTold) return;
    _ZxPolMatchStep step{};
    step.kind = ZXPOL_STEP_RESTART;
    _function(_context, &step);
    _hasTold = false;
}

void matchMail(ZxPolRuleHive& rules, ZxPolAddrListHive& lists, uint32_t mode, const char* sender,
               const char** receivers, FunctionObserver* observer, _ZxPolMatchPair** pairs, uint32_t* count,
               int* error) {
    if (!ZxPolRuleMatcher::isComplete(sender, receivers, pairs, count)) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    *pairs = nullptr;
    *count = 0;
    const _ZxPolMatchOption option = optionFor(mode);
    const auto match = [&] {
        ZxPolRuleMatcher matcher(&lists, &rules, &option);
        matcher.setObserver(observer);
        matcher.match(sender, receivers, pairs, count, error);
    };
    const auto undo = [&] {
        if (observer != nullptr) observer->takeBack();
        ZxPolRuleMatcher::freeMatchPair(*pairs, *count, error);
        *pairs = nullptr;
        *count = 0;
    };
    // All of the answer comes from one policy: half of an edit by another process may let mails through that both the
    // policy before it and the one after it keep out.
    readOneState(rules.hiveKey(), lists.hiveKey(), error, match, undo);
}

}  // namespace zxpol
