// Which mails two policies decide differently.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "analysis/finding.h"
#include "decisions/matcher.h"
#include "stored/store.h"

namespace tool {

// What a policy decides.
struct DecisionOutcome {
    std::string rule;                // its path; empty for none
    std::vector<std::string> tasks;  // full names, in the order in which they are to be done
    std::string failure;             // why the match fails, if it does

    // Two failures are the same, whatever their reasons.
    bool operator==(const DecisionOutcome& other) const {
        if (!failure.empty() || !other.failure.empty()) return !failure.empty() && !other.failure.empty();
        return rule == other.rule && tasks == other.tasks;
    }
    bool operator!=(const DecisionOutcome& other) const { return !(*this == other); }
};

// Mails that neither policy can tell apart, by what their addresses match.
struct MailKind {
    SampleMail mail;
    std::vector<std::string> senderMatches;  // patterns and lists of conditions
    std::vector<std::string> receiverMatches;
};

// Mails that one policy decides one way and the other another way.
struct DecisionChange {
    DecisionOutcome before;
    DecisionOutcome after;
    uint64_t count = 0;           // of the kinds of mails
    std::vector<MailKind> kinds;  // the first of them
};

struct DecisionDiff {
    uint64_t kinds = 0;                   // of all mails
    uint64_t changed = 0;                 // of those that are decided differently
    std::vector<DecisionChange> changes;  // those with the most kinds first
};

// Compares two policies in stores that nobody changes meanwhile, on all mails. Of each change `samples` kinds are told.
// Throws a ToolError, and an AnalysisLimit where the mails are of too many kinds.
DecisionDiff compareDecisions(const Store& before, const Store& after, const MatchOptions& options, size_t samples);

}  // namespace tool
