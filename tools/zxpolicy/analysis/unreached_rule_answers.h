// What becomes of the mails that match the conditions of a rule to which none gets.
#pragma once

#include <cstdint>
#include <map>
#include <tuple>
#include <vector>

#include "analysis/decision_space.h"

namespace tool {

struct Answer {
    enum class Kind {
        Taken,    // by a rule
        Failed,   // a rule, the one that they match or one above it, cannot be checked
        NotAbove  // rules above do not match, so that best match never asks the rule
    };

    Kind kind;
    uint32_t rule = 0;  // that takes them, or cannot be checked

    bool operator<(const Answer& other) const { return std::tie(kind, rule) < std::tie(other.kind, other.rule); }
};

// The answers, with the number of kinds of mails that each is for.
struct Answers {
    std::map<Answer, uint64_t> counts;
    bool hasFailures = false;  // mails on which the conditions fail are among them
};

class AnswerCounter {
public:
    AnswerCounter(const DecisionSpace& space, bool isBest) : _space(space), _isBest(isBest) {}

    // Adds the mails of one class of senders, by what is decided on each class of receivers, and of these the given
    // ones.
    void add(uint32_t rule, size_t sender, const std::vector<uint32_t>& decisions, const ClassBits& receivers,
             Answers& answers) const;

private:
    const std::vector<StoredRule>& rules() const { return _space.policy(0).rules; }
    ClassBits addAbove(uint32_t rule, size_t sender, ClassBits receivers, Answers& answers) const;
    bool isTakenBefore(uint32_t rule, uint32_t decision) const;

    const DecisionSpace& _space;
    bool _isBest;
};

}  // namespace tool
