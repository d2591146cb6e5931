// Failures of a match: which are the outcome of one mail, and how they are told.
#pragma once

#include <string>

#include "decisions/envelope_reader.h"
#include "output/json.h"

namespace tool {

// Whether a match fails with this code by what the policy holds: a list in a condition that does not exist, has no name
// or cannot be asked. Another mail may be matched then. Other codes are failures of the store.
bool isFailureOfPolicy(int code);

// An object with name and code; null for success.
Json failureJson(int code);

// "cannot match a mail from SENDER to RECEIVERS", with the first few of them.
std::string cannotMatch(const Envelope& envelope);

}  // namespace tool
