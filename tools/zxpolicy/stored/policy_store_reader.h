// Store to model.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "policy/policy_file.h"
#include "stored/store.h"

namespace tool {

enum class Secrets { Leave, Read };

// How much of the address lists is read: for a change of rules their names are enough. A list of which nothing but the
// name was read stands in the policy as one without addresses to compare.
enum class ListParts { Names, All };

// A policy as a store holds it, or the reasons why no policy file can say it.
struct StoredPolicy {
    Policy policy;
    std::vector<std::string> problems;
};

// Reads the policy, which the caller knows not to change meanwhile. Throws a StoreError.
StoredPolicy readStoredPolicy(const Store& store, Secrets secrets, ListParts parts = ListParts::All);

// Reads a policy as it stood at one moment, whatever other processes do. Throws a StoreError.
StoredPolicy readPolicySnapshot(const Store& store, Secrets secrets, ListParts parts = ListParts::All);

// Throws a PolicyError naming the first problem and the number of the others, unless there are none.
void requireNoProblems(const std::vector<std::string>& problems, const std::string& what);

// The inactive marks of the rule whose key, seen from the store's, is `ruleKey`. Throws a StoreError.
std::vector<InactiveMark> readInactiveMarks(const Store& store, const std::string& ruleKey);

// The key of a child of a rule, seen from the store's.
std::string childRuleKey(const std::string& ruleKey, const std::string& name);

// The conditions of an open rule of match type 0. Throws a StoreError.
std::vector<Condition> readStoredConditions(const RuleHandle& rule, const std::string& where);

// The conditions of an open rule, whose key is `key`: all that are stored, or a StoreError. One of another match type
// must hold none.
std::vector<Condition> readAllConditions(const RuleHandle& rule, const KeyHandle& key, const std::string& where);

// The outcomes of an open task by name. Throws a StoreError.
std::map<std::string, OutcomeText> readStoredOutcomes(const TaskHandle& task, const std::string& where);

}  // namespace tool
