// The flat functions on matching.
#include "addrlist/addr_list_hive.h"
#include "frame/frame.h"
#include "match/rule_matcher.h"
#include "rules/rule_hive.h"
#include "store/one_state.h"

using namespace zxpol;

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

void zxpol_matchRuleByMailInfo(_ZxPolComHandle* ruleHive, _ZxPolComHandle* addrListHive, const char* sender,
                               const char** receivers, _ZxPolMatchPair** pairs, uint32_t* count, int* error) {
    zxpol_matchRuleByMailInfoEx(ruleHive, addrListHive, 0, sender, receivers, pairs, count, error);
}

void zxpol_matchRuleByMailInfoEx(_ZxPolComHandle* ruleHive, _ZxPolComHandle* addrListHive, uint32_t mode,
                                 const char* sender, const char** receivers, _ZxPolMatchPair** pairs, uint32_t* count,
                                 int* error) {
    frame::callWithTwo<ZxPolRuleHive, ZxPolAddrListHive>(
        ruleHive, addrListHive, error, [&](ZxPolRuleHive& rules, ZxPolAddrListHive& lists) {
            if (!ZxPolRuleMatcher::isComplete(sender, receivers, pairs, count)) {
                *error = ZXPOL_E_INVALID_ARG;
                return;
            }
            *pairs = nullptr;
            *count = 0;
            const _ZxPolMatchOption option = optionFor(mode);
            // All of the answer comes from one policy: half of an edit by another process may let mails through that
            // both the policy before it and the one after it keep out.
            readOneState(
                rules.hiveKey(), lists.hiveKey(), error,
                [&] { ZxPolRuleMatcher(&lists, &rules, &option).match(sender, receivers, pairs, count, error); },
                [&] {
                    ZxPolRuleMatcher::freeMatchPair(*pairs, *count, error);
                    *pairs = nullptr;
                    *count = 0;
                });
        });
}

void zxpol_setMatchOption(const _ZxPolMatchOption* option, int* error) {
    frame::run(error, [&] {
        if (option == nullptr) {
            *error = ZXPOL_E_INVALID_ARG;
            return;
        }
        ZxPolRuleMatcher::setGlobalOption(*option);
        *error = ZXPOL_S_OK;
    });
}

void zxpol_freeMatchPair(_ZxPolMatchPair* pairs, uint32_t count, int* error) {
    ZxPolRuleMatcher::freeMatchPair(pairs, count, error);
}
