// Conditions by themselves: what they refer to, and whether they are patterns at all.
#include "analysis/lint_rules.h"
#include "analysis/lint_text.h"
#include "output/text.h"
#include "pattern/cond_wildcard_pattern.h"
#include "result_names.h"
#include "stored/list_store_reader.h"

namespace tool {

namespace {

class Conditions {
public:
    Conditions(const StoredRules& stored, const std::vector<RuleReach>& reaches, std::vector<Finding>& findings)
        : _stored(stored), _reaches(reaches), _findings(findings) {}

    void run() {
        for (uint32_t number = 0; number < _stored.rules.size(); ++number) {
            const StoredRule& rule = _stored.rules[number];
            _rule = rule.path;
            _place = "rule " + oneLine(rule.path);
            const std::string otherwise = isOfUse(number) ? "" : ", or delete the rule";
            if (rule.isOfOtherType)
                add(Severity::Warning, "no-conditions", "its matchType is not 0: no mail matches it",
                    "set its matchType to 0 and add conditions" + otherwise);
            else if (rule.conditions.empty())
                add(Severity::Warning, "no-conditions", "it has no condition: no mail matches it",
                    "add conditions" + otherwise);
            for (size_t i = 0; i < rule.conditions.size(); ++i) {
                _place = conditionText(rule.path, i);
                lookAt(rule.conditions[i], i);
            }
        }
    }

private:
    // Whether a rule that no mail matches has a use: the root holds all others, and mails may get to rules below.
    bool isOfUse(uint32_t rule) const {
        return rule == 0 || anyBelow(_stored.rules, rule, [&](uint32_t below) { return isReached(_reaches, below); });
    }

    void lookAt(const StoredRule::Condition& condition, size_t index) {
        if (!condition.isReadable && index > 0)
            return addUnreadable("what is stored cannot be read, and counts as condition " + std::to_string(index) +
                                 " once more");
        if (!condition.isReadable) return addUnreadable("what is stored cannot be read, and counts as two empty sides");
        if (condition.sender.empty() && condition.receiver.empty())
            return addUnreadable("both sides are empty, or too long, and it matches empty addresses alone");
        lookAtSide("sender", condition.sender);
        lookAtSide("receiver", condition.receiver);
    }

    void lookAtSide(const std::string& side, const std::string& text) {
        const std::optional<std::string> name = listAskedFor(text);
        if (name) return lookAtReference(side, text, *name);
        if (ZxPolCondWildcardPattern::isPatternValid(text.c_str())) return;
        add(Severity::Warning, "invalid-pattern",
            "the " + side + " " + inQuotes(text) + " is no pattern that the library would take",
            "correct it: an address, *, name@*, *@domain, or with *.domain or [*] for the domain");
    }

    void lookAtReference(const std::string& side, const std::string& text, const std::string& name) {
        if (text.back() != ')' || text.size() < 3)
            add(Severity::Warning, "invalid-pattern",
                "the " + side + " " + inQuotes(text) + " is taken for a reference to " + listText(name),
                "write the name of a list between parentheses");
        const std::string what = "the " + side + " names " + listText(name) + ", ";
        const std::string consequence = _rule == "\\" ? "; a mail that gets to this condition cannot be matched at all"
                                                      : "; a mail that gets to this condition passes over the rule";
        const ConditionList& list = _stored.lists.at(name);
        if (list.isDirectory)
            add(Severity::Error, "directory-list",
                what + "a directory list, which matching cannot look into" + consequence,
                "name a list whose addresses are in the store");
        else if (ZX_FAILURE(list.failure))
            add(Severity::Error, "missing-list",
                what + "which " +
                    (hasReason(list.failure, kReasonNotFound)
                         ? "does not exist"
                         : "cannot be opened (" + std::string(resultName(list.failure)) + ")") +
                    consequence,
                "make the list, or correct the name; letter case counts");
        else if (list.entries.empty())
            add(Severity::Warning, "empty-list", what + "which is empty and matches nothing",
                "add addresses, or remove the condition");
    }

    void addUnreadable(const std::string& text) {
        add(Severity::Error, "unreadable-condition", text, "delete it, and write it anew");
    }

    void add(Severity severity, const char* id, const std::string& text, const std::string& remedy) {
        _findings.push_back({severity, id, _place, text, remedy, {_rule}});
    }

    const StoredRules& _stored;
    const std::vector<RuleReach>& _reaches;
    std::vector<Finding>& _findings;
    std::string _rule;
    std::string _place;
};

}  // namespace

void lintConditions(const StoredRules& rules, const std::vector<RuleReach>& reaches, std::vector<Finding>& findings) {
    Conditions(rules, reaches, findings).run();
}

}  // namespace tool
