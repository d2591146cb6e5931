// Comparing two policies by traffic, beside a match of each pair by both.
#include <gmock/gmock.h>

#include <map>
#include <nlohmann/json.hpp>
#include <random>
#include <sstream>
#include <tuple>

#include "change/apply.h"
#include "decisions/replay_command.h"
#include "decisions/task_lookup.h"
#include "output/text.h"
#include "policy/address_text.h"
#include "policy/policy_writer.h"
#include "random_policy.h"
#include "support/experiment.h"
#include "tool_fixture.h"

namespace tool {

namespace {

using Texts = std::vector<std::string>;

// What a policy decides on one pair: the rule's path, empty for none, and its tasks in order.
using Answer = std::pair<std::string, Texts>;

// Gives every task a display name that no other path has, by which the flat interface tells it.
class TaskNumbers {
public:
    void setNames(Rule& rule, const std::string& path) {
        for (Task& task : rule.tasks) {
            const std::string full = childName(path, task.name);
            task.displayName = std::to_string(_numbers.emplace(full, _numbers.size()).first->second);
            _names[task.displayName] = full;
        }
        for (Rule& child : rule.rules)
            setNames(child, childName(path, child.name));
    }

    const std::string& nameOf(const std::string& number) const { return _names.at(number); }

private:
    std::map<std::string, size_t> _numbers;
    std::map<std::string, std::string> _names;
};

// Asks for each pair by itself.
class Oracle {
public:
    Oracle(const Store& store, const TaskNumbers& numbers) : _numbers(numbers) {
        int result = ZXPOL_S_OK;
        _lists = ListHiveHandle(zxpol_openAddrListHive(store.key(), &result));
        _rules = RuleHiveHandle(zxpol_openRuleHive(store.key(), 0, &result));
        EXPECT_EQ(result, ZXPOL_S_OK);
    }

    Answer ask(uint32_t mode, const std::string& sender, const std::string& receiver) const {
        const char* receivers[] = {receiver.c_str(), nullptr};
        _ZxPolMatchPair* pairs = nullptr;
        uint32_t count = 0;
        int result = ZXPOL_S_OK;
        zxpol_matchRuleByMailInfoEx(_rules.get(), _lists.get(), mode, sender.c_str(), receivers, &pairs, &count,
                                    &result);
        EXPECT_EQ(result, ZXPOL_S_OK);
        Answer answer;
        if (count == 1) answer = {pairs[0].rulePath, tasksOf(pairs[0])};
        if (pairs != nullptr) zxpol_freeMatchPair(pairs, count, &result);
        return answer;
    }

private:
    Texts tasksOf(const _ZxPolMatchPair& pair) const {
        Texts tasks;
        for (uint32_t i = 0; i < pair.taskCount; ++i) {
            _ZxPolTaskAttr attr{};
            int result = ZXPOL_S_OK;
            zxpol_getTaskAttrib(pair.tasks[i], &attr, &result);
            EXPECT_EQ(result, ZXPOL_S_OK);
            tasks.push_back(_numbers.nameOf(attr.displayName));
            if (attr.setting != nullptr) zxreg_closeKey(attr.setting, &result);
        }
        return tasks;
    }

    const TaskNumbers& _numbers;
    ListHiveHandle _lists;
    RuleHiveHandle _rules;
};

// Two policies that have much in common, and traffic that their conditions tell apart.
class Pair {
public:
    explicit Pair(unsigned int seed) : _random(seed) {
        RandomPolicy policies(seed);
        before = policies.make();
        after = upTo(2) == 0 ? policies.make() : before;
        change(after.root, true);
        for (Policy* policy : {&before, &after}) {
            policy->lists["Staff"] = NormalList{"", "", Texts{upTo(1) == 0 ? "c@b.example" : "*@c.example"}};
            numbers.setNames(policy->root, "\\");
        }
    }

    std::string address() {
        const char* names[] = {"a", "A.b", "c", "\"a b\""};
        const char* domains[] = {"b.example", "x.b.example", "c.example", "d"};
        return std::string(names[upTo(3)]) + "@" + domains[upTo(3)];
    }

    // Lines of mails, each with the pairs that it stands for.
    std::string traffic(size_t mails) {
        std::string text;
        for (size_t i = 0; i < mails; ++i) {
            const std::string sender = upTo(5) == 0 ? "<>" : address();
            Texts receivers;
            for (size_t count = upTo(3) + 1; count > 0; --count)
                receivers.push_back(address());
            text += sender + '\t';
            for (const std::string& receiver : receivers) {
                text += receiver + (&receiver == &receivers.back() ? '\n' : ',');
                pairs.emplace_back(i + 1, sender, receiver);
            }
        }
        return text;
    }

    Policy before;
    Policy after;
    TaskNumbers numbers;
    std::vector<std::tuple<size_t, std::string, std::string>> pairs;  // line, sender, receiver

private:
    size_t upTo(size_t most) { return std::uniform_int_distribution<size_t>(0, most)(_random); }

    void change(Rule& rule, bool isRoot) {
        if (!rule.tasks.empty() && upTo(3) == 0) rule.tasks.pop_back();
        if (rule.tasks.size() > 1 && upTo(3) == 0) std::swap(rule.tasks.front(), rule.tasks.back());
        if (!rule.tasks.empty() && upTo(3) == 0) rule.tasks.front().enable = !rule.tasks.front().enable;
        if (!rule.conditions.empty() && upTo(3) == 0) rule.conditions.back() = {"*", "*@c.example", {}};
        if (!rule.rules.empty() && upTo(3) == 0) rule.rules.pop_back();
        if (!isRoot && upTo(5) == 0) rule.conditions.clear();
        for (Rule& child : rule.rules)
            change(child, false);
    }

    std::mt19937 _random;
};

std::string ruleOrNothing(const nlohmann::json& rule) {
    return rule.is_null() ? "" : rule.get<std::string>();
}

struct Group {
    size_t receivers = 0;
    std::set<size_t> mails;
    Answer before;
    Answer after;
};

Texts sorted(Texts texts) {
    std::sort(texts.begin(), texts.end());
    return texts;
}

// The texts of the first that the second has not, each as often.
Texts without(const Texts& some, const Texts& others) {
    Texts left;
    const Texts first = sorted(some);
    const Texts second = sorted(others);
    std::set_difference(first.begin(), first.end(), second.begin(), second.end(), std::back_inserter(left));
    return left;
}

class ReplayAgainstTest : public ToolTest {
protected:
    // Replays the pair's traffic; `expectSame` sees to it that the listing and the report are those of the oracle.
    void check(const std::string& beforeAt, const std::string& afterAt, Pair& pair, const Oracle& before,
               const Oracle& after, bool isBest) {
        ReplayOptions options;
        options.store = beforeAt;
        options.against = afterAt;
        options.changes = path("changes.tsv");
        options.envelopes = path("mails.tsv");
        options.tasks = lookupTasks;
        options.match.isBest = isBest;
        options.format = OutputFormat::Json;
        std::ostringstream out;
        std::ostringstream err;
        const ExitStatus status = runReplay(options, out, err);
        std::string listing;
        std::map<std::pair<std::string, std::string>, Group> groups;
        for (const auto& [line, sender, receiver] : pair.pairs) {
            const Answer was = before.ask(isBest ? 1 : 0, senderFromText(sender), receiver);
            const Answer becomes = after.ask(isBest ? 1 : 0, senderFromText(sender), receiver);
            if (was == becomes) continue;
            listing += std::to_string(line) + '\t' + sender + '\t' + oneLine(receiver) + '\t' + shown(was.first) +
                       '\t' + shown(becomes.first) + '\n';
            Group& group = groups[{was.first, becomes.first}];
            ++group.receivers;
            group.mails.insert(line);
            group.before = was;
            group.after = becomes;
        }
        EXPECT_EQ(read(path("changes.tsv")), listing);
        EXPECT_EQ(status, listing.empty() ? kSuccess : kAnswerIsNo);
        expectGroups(nlohmann::json::parse(out.str()), groups);
        changed += groups.size();
    }

    size_t changed = 0;

private:
    static std::string shown(const std::string& rule) { return rule.empty() ? "no rule" : oneLine(rule); }

    static void expectGroups(const nlohmann::json& report,
                             const std::map<std::pair<std::string, std::string>, Group>& groups) {
        ASSERT_EQ(report["changes"].size(), groups.size());
        std::map<std::pair<std::string, std::string>, nlohmann::json> told;
        for (const auto& change : report["changes"])
            told[{ruleOrNothing(change["ruleBefore"]), ruleOrNothing(change["ruleAfter"])}] = change;
        // Names that are no UTF-8 come out otherwise in JSON: such groups are compared by number only.
        for (const auto& [rules, group] : groups) {
            const auto found = told.find(rules);
            if (found == told.end()) {
                EXPECT_FALSE(isUtf8(rules.first) && isUtf8(rules.second)) << rules.first << " -> " << rules.second;
                continue;
            }
            const nlohmann::json& change = found->second;
            EXPECT_EQ(change["receivers"], group.receivers);
            EXPECT_EQ(change["mails"], group.mails.size());
            if (!areUtf8(group.before.second) || !areUtf8(group.after.second)) continue;
            const auto removed = change["tasksRemoved"].get<Texts>();
            const auto added = change["tasksAdded"].get<Texts>();
            EXPECT_EQ(without(removed, added), without(group.before.second, group.after.second));
            EXPECT_EQ(without(added, removed), without(group.after.second, group.before.second));
        }
    }

    static bool areUtf8(const Texts& texts) {
        return std::all_of(texts.begin(), texts.end(), [](const std::string& text) { return isUtf8(text); });
    }
};

}  // namespace

TEST_F(ReplayAgainstTest, TellsExactlyThePairsThatBothPoliciesDecideOtherwise) {
    for (unsigned int seed = 1; seed <= 100; seed += zxtest::kStride) {
        SCOPED_TRACE(seed);
        Pair pair(seed);
        write("mails.tsv", pair.traffic(30));
        const Store before("memory:before", Store::Missing::Create);
        const Store after("memory:after", Store::Missing::Create);
        applyPolicy(before, "before", pair.before, false);
        applyPolicy(after, "after", pair.after, false);
        const Oracle was(before, pair.numbers);
        const Oracle becomes(after, pair.numbers);
        for (const bool isBest : {false, true})
            check("memory:before", "memory:after", pair, was, becomes, isBest);
        if (HasFailure()) return;
    }
    EXPECT_GT(changed, 200U / zxtest::kStride) << "too little differs to test anything";
}

TEST_F(ReplayAgainstTest, TellsTheSameOfStoresInFilesAndOfAPolicyFile) {
    for (unsigned int seed = 1001; seed <= 1010; ++seed) {
        SCOPED_TRACE(seed);
        Pair pair(seed);
        write("mails.tsv", pair.traffic(30));
        const std::string name = std::to_string(seed);
        const std::string beforeAt = "sqlite:" + path(name + "before.db");
        const std::string afterAt = "sqlite:" + path(name + "after.db");
        const Store before(beforeAt, Store::Missing::Create);
        const Store after(afterAt, Store::Missing::Create);
        applyPolicy(before, "before", pair.before, false);
        applyPolicy(after, "after", pair.after, false);
        const std::string file = write("after.yaml", writePolicy(pair.after));
        const Oracle was(before, pair.numbers);
        const Oracle becomes(after, pair.numbers);
        for (const std::string& against : {afterAt, file})
            check(beforeAt, against, pair, was, becomes, seed % 2 == 0);
        if (HasFailure()) return;
    }
    EXPECT_GT(changed, 20U) << "too little differs to test anything";
}

}  // namespace tool
