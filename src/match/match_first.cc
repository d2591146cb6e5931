// First match: the tree is walked depth first, a rule's children before the rule, until a rule applies.
#include <memory>

#include "frame/reg_debug.h"
#include "match/rule_matcher.h"
#include "rules/child_walk.h"
#include "rules/rule.h"
#include "store/result.h"

using namespace zxpol;

// What a walk looks for, and where it puts what it finds.
struct ZxPolRuleMatcher::Mail {
    const char* sender;
    const char* receiver;
    std::string& matchedPath;
};

bool ZxPolRuleMatcher::matchInRuleTreeFirst(ZxPolRule* rule, const char* rulePath, const char* sender,
                                            const char* receiver, std::string& matchedPath, int* error) {
    if (error == nullptr) return false;
    *error = ZXPOL_S_OK;
    std::string path = rulePath;
    return _walkFirst(*rule, path, Mail{sender, receiver, matchedPath}, error);
}

// One frame for each level of the tree: everything big is in the functions that this one calls. `path` is that of
// `rule`, and is so again on return.
bool ZxPolRuleMatcher::_walkFirst(ZxPolRule& rule, std::string& path, const Mail& mail, int* error) {
    const size_t length = path.size();
    for (uint32_t index = 0;; ++index) {
        std::unique_ptr<ZxPolRule> child;
        const ChildStep step = openChild(rule, index, path, child, error);
        if (step == ChildStep::ended) break;
        if (step != ChildStep::opened) _tellPassedOver(path.c_str(), *error);
        if (step == ChildStep::failed) return false;
        const bool isMatched = step == ChildStep::opened && _walkFirst(*child, path, mail, error);
        path.resize(length);
        if (step == ChildStep::opened && (isMatched || failed(*error))) return isMatched;
    }
    return _checkFirst(rule, path, mail, error);
}

// Checks the rule itself, after its children.
__attribute__((noinline)) bool ZxPolRuleMatcher::_checkFirst(ZxPolRule& rule, const std::string& path, const Mail& mail,
                                                             int* error) {
    ZXPOL_DEBUG(2, "Checking rule %s", path.c_str());
    bool isMatched = matchInThisRule(&rule, mail.sender, mail.receiver, nullptr, error);
    if (failed(*error)) {
        if (path == kRootPath) return false;
        ZXPOL_DEBUG(2, "Fail to check rule %s (%#010x), ignore", path.c_str(), static_cast<unsigned>(*error));
        isMatched = false;
    }
    *error = ZXPOL_S_OK;
    if (!isMatched) return false;
    ZXPOL_DEBUG(2, "Matched in rule %s", path.c_str());
    mail.matchedPath = path;
    return true;
}
