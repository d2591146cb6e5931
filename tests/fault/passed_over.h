// The failures of the store that the interface passes over by design, each kind with a name and a sentence in
// passed_over.tsv.
#pragma once

#include <initializer_list>
#include <map>
#include <string>
#include <vector>

namespace zxtest {

// A store call whose failure is passed over: the call of the interface may succeed in spite of it, with another answer
// or another content of the store, or it may report another failure.
struct Site {
    std::string reason;  // a name of the table
    std::string call;    // "operation name"; with a * at the end any name that goes on from there
};

using Sites = std::vector<Site>;

// The same reason for several calls.
Sites because(const char* reason, std::initializer_list<const char*> calls);
Sites operator+(Sites some, const Sites& others);

// Whether a site speaks of a call.
bool isAt(const Site& site, const std::string& call);

// The names of all reasons, with their sentences.
const std::map<std::string, std::string>& passedOver();

// The reason that holds everywhere: what the store calls absent is absent, and its end of an enumeration is the end.
constexpr const char* kAbsent = "absent";

// What several calls have in common.

// A child whose position cannot be read counts as one that has none.
Sites positionsOf(std::initializer_list<const char*> children);
// The keys below a new rule or task are made when they are first needed.
Sites keysOfANewRule();
Sites keysOfANewTask();
// What cannot be deleted keeps what it lies in, and the rest is deleted all the same.
Sites deletionOf(std::initializer_list<const char*> keys);
// A failed look-up among the conditions is as good as none.
Sites notFoundConditions();
// Conditions that a rule lost come back when the rules below it cannot be looked through.
Sites takenBack();
Sites takenBackFromBelow();
// The results of writing the attributes that all lists have are not looked at.
Sites commonAttributes();
// What cannot be read while the rules are searched refers to nothing.
Sites searchedRules();
Sites searchedConditions();
Sites searchedTasks();

}  // namespace zxtest
