#include "match/rule_matcher.h"

#include <memory>

#include "frame/reg_debug.h"
#include "rules/child_walk.h"
#include "rules/rule.h"
#include "rules/rule_hive.h"
#include "store/one_state.h"
#include "store/result.h"

using namespace zxpol;

namespace {

constexpr unsigned kAppLevel = 2;
constexpr unsigned char kAppCategory = 1;

// The attributes are of no use to the match, but a rule whose comment or match type cannot be read is not one to act
// upon.
__attribute__((noinline)) void readAttributes(ZxPolRule& rule, int* error) {
    _ZxPolRuleAttr attr{};
    rule.getAttribute(&attr, error);
}

// Frees the exclusive filters when the tasks that hold them go, on whatever way.
class TableReset {
public:
    explicit TableReset(ZxPolRuleMatcher& matcher) : _matcher(matcher) {}
    ~TableReset() { _matcher._resetExcluTable(); }
    TableReset(const TableReset&) = delete;
    TableReset& operator=(const TableReset&) = delete;

private:
    ZxPolRuleMatcher& _matcher;
};

}  // namespace

_ZxPolMatchOption ZxPolRuleMatcher::mGlobalOption = {1, ZXPOL_PRIORITY_TOTAL, ZXPOL_WEIGHT_DOMAIN_FIRST, 0, 0};

void ZxPolRuleMatcher::setGlobalOption(const _ZxPolMatchOption& option) {
    mGlobalOption = option;
    // Which way a mail is matched is said by each call of the flat interface.
    mGlobalOption.matchMode = 1;
    if (option.priorityType > ZXPOL_PRIORITY_RECEIVER_FIRST) mGlobalOption.priorityType = ZXPOL_PRIORITY_TOTAL;
    if (option.weightType > ZXPOL_WEIGHT_NAME_FIRST) mGlobalOption.weightType = ZXPOL_WEIGHT_DOMAIN_FIRST;
}

ZxPolRuleMatcher::ZxPolRuleMatcher(ZxPolAddrListHive* addrListHive, ZxPolRuleHive* ruleHive,
                                   const _ZxPolMatchOption* option)
    : _addrListHive(addrListHive), _ruleHive(ruleHive), _option(option != nullptr ? *option : mGlobalOption) {
    if (_option.matchMode != 0) {
        ZXPOL_DEBUG(2, "Using Best match.");
    } else {
        ZXPOL_DEBUG(2, "Using First match.");
    }
    _excluTable = readExcluTable(*_ruleHive, &_excluResult);
}

ZxPolRuleMatcher::~ZxPolRuleMatcher() = default;

bool ZxPolRuleMatcher::match(const char* sender, const char** receivers, _ZxPolMatchPair** pairs, uint32_t* count,
                             int* error) {
    if (error == nullptr) return false;
    if (!isComplete(sender, receivers, pairs, count)) {
        *error = ZXPOL_E_INVALID_ARG;
        return false;
    }
    *pairs = nullptr;
    *count = 0;
    if (!isEnd(_excluResult)) _tellPassedOver(nullptr, _excluResult);
    MatchedRules matched;
    _groupReceivers(sender, receivers, matched, error);
    if (failed(*error)) return false;
    ZXPOL_DEBUG(2, "*****[Match %d rules]*****", static_cast<int>(matched.pairs().size()));
    if (matched.pairs().empty()) return true;

    MatchPairs built(matched.pairs().size());
    for (size_t index = 0; index < matched.pairs().size(); ++index) {
        _fillPair(index, matched.pairs()[index], built, error);
        if (failed(*error)) return false;
    }
    *count = built.count();
    *pairs = built.release();
    return true;
}

void ZxPolRuleMatcher::freeMatchPair(_ZxPolMatchPair* pairs, uint32_t count, int* /*error*/) {
    freePairs(pairs, count);
}

// The walk that the options ask for, from the root.
bool ZxPolRuleMatcher::_walk(ZxPolRule& root, const char* sender, const char* receiver, std::string& matchedPath,
                             int* error) {
    return _option.matchMode != 0 ? matchInRuleTreeBest(&root, kRootPath, sender, receiver, matchedPath, error)
                                  : matchInRuleTreeFirst(&root, kRootPath, sender, receiver, matchedPath, error);
}

// Walks the tree for each receiver and notes the rules found.
void ZxPolRuleMatcher::_groupReceivers(const char* sender, const char** receivers, MatchedRules& matched, int* error) {
    const std::unique_ptr<ZxPolRule> root(_ruleHive->openRootRule(error));
    if (failed(*error)) return;
    std::string matchedPath;
    for (uint32_t index = 0; receivers[index] != nullptr; ++index) {
        const char* receiver = receivers[index];
        const auto nameReceiver = [&](_ZxPolMatchStep& step) {
            step.receiver = receiver;
            step.receiverIndex = index;
        };
        _tell(ZXPOL_STEP_RECEIVER, nameReceiver);
        const bool isFound = _walk(*root, sender, receiver, matchedPath, error);
        // Rules were passed over for a list that was there all the time.
        if (_isDisturbed && succeeded(*error)) *error = kStateIsChanging;
        const bool isMatched = isFound && succeeded(*error);
        _tell(ZXPOL_STEP_RECEIVER_DECIDED, [&](_ZxPolMatchStep& step) {
            nameReceiver(step);
            step.isMatched = isMatched ? 1 : 0;
            step.rulePath = isMatched ? matchedPath.c_str() : nullptr;
            step.result = *error;
        });
        if (failed(*error)) return;
        if (isMatched) matched.add(matchedPath, receiver);
    }
}

void ZxPolRuleMatcher::_tellPassedOver(const char* rulePath, int result) const {
    _tell(ZXPOL_STEP_PASSED_OVER, [&](_ZxPolMatchStep& step) {
        step.rulePath = rulePath;
        step.result = result;
    });
}

// Makes the record of one matched rule.
void ZxPolRuleMatcher::_fillPair(size_t index, const _PrivMatchPair& matched, MatchPairs& pairs, int* error) {
    const char* path = matched.rulePath.c_str();
    const std::unique_ptr<ZxPolRule> rule(_ruleHive->openRuleByFullPath(path, error));
    if (failed(*error)) return;
    _tell(ZXPOL_STEP_COLLECTION, [&](_ZxPolMatchStep& step) { step.rulePath = path; });
    TaskList tasks;
    const TableReset reset(*this);
    _collectTasks(*rule, matched.rulePath, tasks, error);
    if (succeeded(*error)) readAttributes(*rule, error);
    if (failed(*error)) return;
    ZXPOL_DEBUG(2, "Matched rule%d - {%s} has %d tasks", static_cast<int>(index + 1), path,
                static_cast<int>(tasks.size()));
    ZxRegDebug::appLog(kAppLevel, kAppCategory, "%s : %s", "Matched rule", path);
    pairs.fill(index, matched, tasks);
}

// Collects the tasks of all rules from the root down to the matched one. The rules above it are named by the
// beginnings of its path that end with a backslash.
void ZxPolRuleMatcher::_collectTasks(ZxPolRule& matchedRule, const std::string& path, TaskList& tasks, int* error) {
    std::string prefix;
    for (size_t begin = 0; begin < path.size() && succeeded(*error);) {
        const size_t end = path.find('\\', begin);
        const size_t next = end == std::string::npos ? path.size() : end + 1;
        prefix.append(path, begin, next - begin);
        begin = next;
        getTasksInRule(&matchedRule, prefix.c_str(), tasks, error);
    }
}
