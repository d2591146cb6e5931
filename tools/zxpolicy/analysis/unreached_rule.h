// The finding that no mail gets to a rule.
#pragma once

#include <cstdint>
#include <map>

#include "analysis/decision_space.h"
#include "analysis/finding.h"

namespace tool {

// How the mails that match a rule's conditions are decided, by the number of kinds of them.
using Answers = std::map<uint32_t, uint64_t>;

// Stands for an answer where rules above the rule do not match, so that best match never asks it.
constexpr uint32_t kNotAbove = UINT32_MAX - 2;

// Tells who answers instead, those with the most kinds of mails first. `isOfWellFormed` for a rule that mails with
// other addresses get to; the answers are those to the well-formed ones then.
Finding unreachedRule(const DecisionSpace& space, uint32_t rule, const Answers& answers, bool isBest,
                      bool isOfWellFormed);

}  // namespace tool
