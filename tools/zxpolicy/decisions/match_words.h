// The words for the ways of matching, on the command line, in files of policy tests and in reports.
#pragma once

#include <algorithm>
#include <map>
#include <string>

#include "decisions/matcher.h"

namespace tool {

// Words and what they mean.
template <class Value>
using Words = std::map<std::string, Value>;

inline const Words<ZxPolMatchWeightType> kWeights{{"domain", ZXPOL_WEIGHT_DOMAIN_FIRST},
                                                  {"name", ZXPOL_WEIGHT_NAME_FIRST}};
inline const Words<ZxPolMatchPriorityType> kPriorities{{"total", ZXPOL_PRIORITY_TOTAL},
                                                       {"sender", ZXPOL_PRIORITY_SENDER_FIRST},
                                                       {"receiver", ZXPOL_PRIORITY_RECEIVER_FIRST}};

// The word that means this value, which must be among them.
template <class Value>
const std::string& wordFor(const Words<Value>& words, Value value) {
    return std::find_if(words.begin(), words.end(), [&](const auto& word) { return word.second == value; })->first;
}

}  // namespace tool
