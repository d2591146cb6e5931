// Conditions by themselves: what they refer to, and whether they are patterns at all.
#include <set>

#include "analysis/lint.h"
#include "analysis/lint_text.h"
#include "list_store_reader.h"
#include "pattern/cond_wildcard_pattern.h"
#include "result_names.h"
#include "text.h"

namespace tool {

namespace {

class Conditions {
public:
    Conditions(const StoredRules& stored, std::vector<Finding>& findings) : _stored(stored), _findings(findings) {}

    void run() {
        for (const StoredRule& rule : _stored.rules) {
            if (rule.conditions.empty())
                _findings.push_back({Severity::Warning,
                                     "no-conditions",
                                     "rule " + oneLine(rule.path),
                                     "it has no condition: no mail matches it",
                                     "add conditions, or delete the rule",
                                     {rule.path}});
            for (size_t i = 0; i < rule.conditions.size(); ++i)
                lookAt(rule, i);
        }
    }

private:
    void lookAt(const StoredRule& rule, size_t number) {
        const StoredRule::Condition& condition = rule.conditions[number];
        const std::string place = conditionText(rule.path, number);
        if (condition.sender.empty() && condition.receiver.empty()) {
            _findings.push_back({Severity::Error,
                                 "unreadable-condition",
                                 place,
                                 "what is stored cannot be read as a condition, and matches empty addresses alone",
                                 "delete it, and write it anew",
                                 {rule.path}});
            return;
        }
        lookAtSide(rule, place, "sender", condition.sender);
        lookAtSide(rule, place, "receiver", condition.receiver);
    }

    void lookAtSide(const StoredRule& rule, const std::string& place, const std::string& side,
                    const std::string& text) {
        const std::optional<std::string> name = listAskedFor(text);
        if (name) return lookAtReference(rule, place, side, text, *name);
        if (ZxPolCondWildcardPattern::isPatternValid(text.c_str())) return;
        _findings.push_back({Severity::Warning,
                             "invalid-pattern",
                             place,
                             "the " + side + " " + inQuotes(text) + " is no pattern that the library would take",
                             "correct it: an address, *, name@*, *@domain, or with *.domain or [*] for the domain",
                             {rule.path}});
    }

    void lookAtReference(const StoredRule& rule, const std::string& place, const std::string& side,
                         const std::string& text, const std::string& name) {
        const std::string consequence = rule.path == "\\"
                                            ? "; a mail that gets to this condition cannot be matched at all"
                                            : "; a mail that gets to this condition passes over the rule";
        if (text.back() != ')' || text.size() < 3)
            _findings.push_back(
                {Severity::Warning,
                 "invalid-pattern",
                 place,
                 "the " + side + " " + inQuotes(text) + " is taken for a reference to " + listText(name),
                 "write the name of a list between parentheses",
                 {rule.path}});
        const ConditionList& list = _stored.lists.at(name);
        if (list.isDirectory) {
            _findings.push_back({Severity::Error,
                                 "directory-list",
                                 place,
                                 "the " + side + " names " + listText(name) +
                                     ", a directory list, which matching cannot look into" + consequence,
                                 "name a list whose addresses are in the store",
                                 {rule.path}});
        } else if (ZX_FAILURE(list.failure)) {
            _findings.push_back({Severity::Error,
                                 "missing-list",
                                 place,
                                 "the " + side + " names " + listText(name) + ", which " +
                                     (hasReason(list.failure, kReasonNotFound)
                                          ? std::string("does not exist")
                                          : std::string("cannot be opened (") + resultName(list.failure) + ")") +
                                     consequence,
                                 "make the list, or correct the name; letter case counts",
                                 {rule.path}});
        } else if (list.entries.empty() && _empty.insert(name).second) {
            _findings.push_back({Severity::Warning,
                                 "empty-list",
                                 place,
                                 "the " + side + " names " + listText(name) + ", which is empty and matches nothing",
                                 "add addresses, or remove the condition",
                                 {rule.path}});
        }
    }

    const StoredRules& _stored;
    std::vector<Finding>& _findings;
    std::set<std::string> _empty;
};

}  // namespace

void lintConditions(const StoredRules& rules, std::vector<Finding>& findings) {
    Conditions(rules, findings).run();
}

}  // namespace tool
