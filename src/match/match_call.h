// What the flat functions that match a mail have in common.
#pragma once

#include <cstdint>

#include "match/match_observer.h"
#include "zxpolicy.h"

class ZxPolAddrListHive;
class ZxPolRuleHive;

namespace zxpol {

// Tells steps to a caller's function.
class FunctionObserver final : public ZxPolMatchObserver {
public:
    FunctionObserver(ZxPolMatchObserverFunction function, void* context) : _function(function), _context(context) {}

    void onStep(const _ZxPolMatchStep& step) override;

    // The attempt does not count: if it told something, that is void. Another one follows, or the match has failed.
    void takeBack();

private:
    ZxPolMatchObserverFunction _function;
    void* _context;
    bool _hasTold = false;
};

// Matches a mail by one state of the policy. The steps go to `observer`, which may be null. ZXPOL_E_INVALID_ARG: null
// sender, receivers, pairs or count.
void matchMail(ZxPolRuleHive& rules, ZxPolAddrListHive& lists, uint32_t mode, const char* sender,
               const char** receivers, FunctionObserver* observer, _ZxPolMatchPair** pairs, uint32_t* count,
               int* error);

}  // namespace zxpol
