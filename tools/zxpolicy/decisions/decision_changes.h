// Receivers that two policies treat otherwise, grouped by what becomes of them.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "decisions/failed_mails.h"
#include "decisions/matcher.h"
#include "difference/sequence_diff.h"
#include "output/json.h"

namespace tool {

// Two decisions on one mail are compared receiver by receiver: by rule, and by the names of its tasks in their order.
// The rule before and the rule after tell the tasks, so there is one group for each such pair, whatever the traffic.
// That a mail cannot be matched is an outcome like a rule; it is the same one whatever the reason.
class DecisionChanges {
public:
    // Keeps the first `samples` pairs of sender and receiver of each group. Where `listing` is not null each changed
    // receiver becomes a line there: number of its line in the traffic, sender, receiver, rule before, rule after. In
    // place of a rule "no rule" may stand there, or a failure.
    DecisionChanges(uint32_t samples, std::ostream* listing) : _samples(samples), _listing(listing) {}

    // `line`: where the mail stands in the traffic.
    void add(uint64_t line, const Envelope& envelope, const Decision& before, const Decision& after);

    bool isEmpty() const { return _groups.empty(); }
    // Whether a mail could not be matched, before or after.
    bool hasFailed() const { return _failedBefore.mails() != 0 || _failedAfter.mails() != 0; }

    void print(std::ostream& out) const;
    Json json() const;

private:
    // What becomes of a receiver.
    struct Fate {
        std::string rule;  // its path, empty for none
        int failure;       // why the mail cannot be matched, or 0

        bool operator<(const Fate& other) const {
            return std::tie(rule, failure) < std::tie(other.rule, other.failure);
        }
        std::string text() const;
        Json ruleJson() const { return rule.empty() ? Json::null() : Json(rule); }
    };

    // Before and after.
    using Fates = std::pair<Fate, Fate>;

    struct Group {
        std::vector<DiffLine> tasks;
        uint64_t receivers = 0;
        uint64_t mails = 0;
        std::vector<std::pair<std::string, std::string>> samples;  // sender, receiver
    };

    using GroupEntry = std::pair<const Fates, Group>;

    void addReceiver(uint64_t line, const std::string& sender, const std::string& receiver, GroupEntry& entry);
    GroupEntry& groupOf(const Fates& fates, const MatchedRule* before, const MatchedRule* after);
    std::vector<const GroupEntry*> bySize() const;

    uint32_t _samples;
    std::ostream* _listing;
    uint64_t _mails = 0;
    uint64_t _receivers = 0;
    uint64_t _changedMails = 0;
    uint64_t _changedReceivers = 0;
    FailedMails _failedBefore;
    FailedMails _failedAfter;
    std::map<Fates, Group> _groups;
};

}  // namespace tool
