#include "decisions/decision_changes.h"

#include <algorithm>
#include <ostream>
#include <set>

#include "decisions/match_failure.h"
#include "output/text.h"
#include "policy/address_text.h"
#include "result_names.h"

namespace tool {

namespace {

const std::vector<std::string> kTasksOfNoRule;

std::string rulePathOf(const MatchedRule* rule) {
    return rule == nullptr ? "" : rule->path;
}

const std::vector<std::string>& ruleTasksOf(const MatchedRule* rule) {
    return rule == nullptr ? kTasksOfNoRule : rule->tasks;
}

const MatchedRule* ruleOfReceiver(const std::map<std::string_view, const MatchedRule*>& rules,
                                  const std::string& receiver) {
    const auto found = rules.find(receiver);
    return found == rules.end() ? nullptr : found->second;
}

// Whether the same becomes of a receiver by both decisions on its mail.
bool isTreatedAlike(const Decision& before, const MatchedRule* was, const Decision& after, const MatchedRule* becomes) {
    if (before.failure != 0 || after.failure != 0) return before.failure != 0 && after.failure != 0;
    return rulePathOf(was) == rulePathOf(becomes) && ruleTasksOf(was) == ruleTasksOf(becomes);
}

}  // namespace

std::string DecisionChanges::Fate::text() const {
    if (failure != 0) return "a failure (" + codeText(failure) + ")";
    return rule.empty() ? "no rule" : oneLine(rule);
}

DecisionChanges::GroupEntry& DecisionChanges::groupOf(const Fates& fates, const MatchedRule* before,
                                                      const MatchedRule* after) {
    const auto [entry, isNew] = _groups.try_emplace(fates);
    if (isNew) entry->second.tasks = diffOf(ruleTasksOf(before), ruleTasksOf(after));
    return *entry;
}

void DecisionChanges::addReceiver(uint64_t line, const std::string& sender, const std::string& receiver,
                                  GroupEntry& entry) {
    auto& [fates, group] = entry;
    ++_changedReceivers;
    ++group.receivers;
    const std::pair sample(sender, receiver);
    const bool isNew = std::find(group.samples.begin(), group.samples.end(), sample) == group.samples.end();
    if (isNew && group.samples.size() < _samples) group.samples.push_back(sample);
    if (_listing != nullptr)
        *_listing << line << '\t' << senderToText(sender) << '\t' << oneLine(receiver) << '\t' << fates.first.text()
                  << '\t' << fates.second.text() << '\n';
}

void DecisionChanges::add(uint64_t line, const Envelope& envelope, const Decision& before, const Decision& after) {
    ++_mails;
    _receivers += envelope.receivers.size();
    if (before.failure != 0) _failedBefore.add(envelope, before.failure);
    if (after.failure != 0) _failedAfter.add(envelope, after.failure);
    const auto rulesBefore = before.byReceiver();
    const auto rulesAfter = after.byReceiver();
    std::set<Group*> groupsOfMail;
    for (const std::string& receiver : envelope.receivers) {
        const MatchedRule* was = ruleOfReceiver(rulesBefore, receiver);
        const MatchedRule* becomes = ruleOfReceiver(rulesAfter, receiver);
        if (isTreatedAlike(before, was, after, becomes)) continue;
        const Fates fates{{rulePathOf(was), before.failure}, {rulePathOf(becomes), after.failure}};
        GroupEntry& entry = groupOf(fates, was, becomes);
        addReceiver(line, envelope.sender, receiver, entry);
        if (groupsOfMail.insert(&entry.second).second) ++entry.second.mails;
    }
    if (!groupsOfMail.empty()) ++_changedMails;
}

// Those with the most receivers first.
std::vector<const DecisionChanges::GroupEntry*> DecisionChanges::bySize() const {
    std::vector<const GroupEntry*> groups;
    for (const GroupEntry& entry : _groups)
        groups.push_back(&entry);
    std::stable_sort(groups.begin(), groups.end(), [](const GroupEntry* a, const GroupEntry* b) {
        return a->second.receivers > b->second.receivers;
    });
    return groups;
}

void DecisionChanges::print(std::ostream& out) const {
    out << counted(_mails, "mail") << ", " << counted(_receivers, "receiver")
        << "; treated otherwise: " << counted(_changedReceivers, "receiver") << " of " << counted(_changedMails, "mail")
        << '\n';
    for (const GroupEntry* entry : bySize()) {
        const auto& [fates, group] = *entry;
        out << '\n' << fates.first.text() << " -> " << fates.second.text() << '\n';
        out << "  " << counted(group.receivers, "receiver") << " of " << counted(group.mails, "mail") << '\n';
        for (const DiffLine& task : group.tasks)
            if (task.sign != ' ') out << "  " << task.sign << " task " << oneLine(task.text) << '\n';
        for (const auto& [sender, receiver] : group.samples)
            out << "  such as " << senderToText(sender) << " to " << oneLine(receiver) << '\n';
    }
    _failedBefore.print(out, " before");
    _failedAfter.print(out, " after");
}

Json DecisionChanges::json() const {
    Json groups = Json::array();
    for (const GroupEntry* entry : bySize()) {
        const auto& [fates, group] = *entry;
        Json samples = Json::array();
        for (const auto& [sender, receiver] : group.samples)
            samples.add(Json::object({{"sender", sender}, {"receiver", receiver}}));
        groups.add(Json::object({{"ruleBefore", fates.first.ruleJson()},
                                 {"ruleAfter", fates.second.ruleJson()},
                                 {"failureBefore", failureJson(fates.first.failure)},
                                 {"failureAfter", failureJson(fates.second.failure)},
                                 {"tasksRemoved", linesOf(group.tasks, '-')},
                                 {"tasksAdded", linesOf(group.tasks, '+')},
                                 {"receivers", group.receivers},
                                 {"mails", group.mails},
                                 {"samples", samples}}));
    }
    return Json::report({{"mails", _mails},
                         {"receivers", _receivers},
                         {"changedMails", _changedMails},
                         {"changedReceivers", _changedReceivers},
                         {"failed", Json::object({{"before", _failedBefore.json()}, {"after", _failedAfter.json()}})},
                         {"changes", groups}});
}

}  // namespace tool
