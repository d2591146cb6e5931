// How decisions are shown.
#pragma once

#include <iosfwd>

#include "decisions/matcher.h"

namespace tool {

class Json;

// Adds matches (rule, receivers, tasks) and unmatched to an object.
void addDecision(Json& json, const Decision& decision);

// One JSON object on one line: sender, matches (rule, receivers, tasks), unmatched.
void printJson(std::ostream& out, const Envelope& envelope, const Decision& decision);

// One mail for a person: each rule with its receivers and its tasks in order, then the receivers without a rule.
void printText(std::ostream& out, const Envelope& envelope, const Decision& decision);

}  // namespace tool
