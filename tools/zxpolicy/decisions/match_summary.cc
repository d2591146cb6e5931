#include "decisions/match_summary.h"

#include <set>

namespace tool {

namespace {

template <class Count>
void addCount(Json& json, const Count& count) {
    json.add("receivers", count.receivers).add("mails", count.mails);
}

}  // namespace

void MatchSummary::add(const Envelope& envelope, const Decision& decision) {
    ++_mails;
    _receivers += envelope.receivers.size();
    if (decision.failure != 0) {
        _failed.add(envelope, decision.failure);
        return;
    }
    _unmatched.receivers += decision.unmatched.size();
    if (!decision.unmatched.empty()) ++_unmatched.mails;
    _latency.add(decision.duration);
    std::set<std::string> tasksOfMail;
    for (const MatchedRule& rule : decision.matches) {
        Count& count = _rules[rule.path];
        count.receivers += rule.receivers.size();
        ++count.mails;
        for (const std::string& task : rule.tasks) {
            _tasks[task].receivers += rule.receivers.size();
            if (tasksOfMail.insert(task).second) ++_tasks[task].mails;
        }
        if (_countsConditions) addConditions(rule);
    }
}

void MatchSummary::addConditions(const MatchedRule& rule) {
    std::map<uint32_t, uint64_t> receivers;
    for (const uint32_t condition : rule.conditions)
        ++receivers[condition];
    for (const auto& [condition, count] : receivers) {
        Count& sum = _conditions[{rule.path, condition}];
        sum.receivers += count;
        ++sum.mails;
    }
}

Json MatchSummary::ruleJson(const RuleNode& node) const {
    Json rule = Json::object({{"rule", node.path}});
    addCount(rule, ofRule(node.path));
    if (!_countsConditions) return rule;
    Json conditions = Json::array();
    for (uint32_t i = 0; i < node.conditions.size(); ++i) {
        Json condition = Json::object({{"condition", i + 1},
                                       {"senderPattern", node.conditions[i].sender},
                                       {"receiverPattern", node.conditions[i].receiver}});
        addCount(condition, ofCondition(node.path, i));
        conditions.add(condition);
    }
    return rule.add("conditions", conditions);
}

Json MatchSummary::json(const RuleNode& root) const {
    Json unmatched = Json::object({});
    addCount(unmatched, _unmatched);
    Json rules = Json::array();
    Json tasks = Json::array();
    forEachRule(root, [&](const RuleNode& node) {
        rules.add(ruleJson(node));
        for (const std::string& task : node.tasks) {
            Json json = Json::object({{"task", task}});
            addCount(json, ofTask(task));
            tasks.add(json);
        }
    });
    const auto nanoseconds = [&](double share) { return static_cast<uint64_t>(_latency.quantile(share).count()); };
    // What cannot be matched is no decision.
    const auto decided = static_cast<double>(_mails - _failed.mails());
    const double perMail = decided == 0 ? 0 : static_cast<double>(_receivers - _failed.receivers()) / decided;
    return Json::report({{"mails", _mails},
                         {"receivers", _receivers},
                         {"unmatched", unmatched},
                         {"failed", _failed.json()},
                         {"rules", rules},
                         {"tasks", tasks},
                         {"medianNanoseconds", nanoseconds(0.5)},
                         {"p99Nanoseconds", nanoseconds(0.99)},
                         {"mailsPerSecond", _latency.perSecond()},
                         {"receiversPerSecond", _latency.perSecond() * perMail}});
}

}  // namespace tool
