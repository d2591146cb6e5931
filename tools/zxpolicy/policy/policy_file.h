// The policy as a policy file holds it: plain data, independent of file and store.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "policy/yaml_tree.h"

namespace tool {

// Places do not take part in comparisons: they say where in a file something stands, not what it is.

struct Condition {
    std::string sender;
    std::string receiver;
    Place place;
    Place senderPlace = {};
    Place receiverPlace = {};
};

// A mark that switches a task off for a rule, by the task's full name.
struct InactiveMark {
    std::string task;
    Place place;
};

// A key without content of its own in a setting.
struct SettingKey {};

// One item of a setting: a key, a number, a text, or a list of texts.
using SettingItem = std::variant<SettingKey, uint32_t, std::string, std::vector<std::string>>;

// Orders paths so that everything below a key follows it at once: the backslash before all other characters.
struct PathOrder {
    bool operator()(const std::string& a, const std::string& b) const;
};

// The setting of a task or an action by path: names joined by backslashes. Every key above an item has an entry of its
// own.
using Setting = std::map<std::string, SettingItem, PathOrder>;

struct OutcomeText {
    std::string text;
    Place place;
};

struct Task {
    std::string name;
    std::string displayName;
    std::string comment;
    uint32_t filter = 0;
    bool enable = true;
    bool overridable = false;
    std::map<std::string, OutcomeText> outcomes;
    Setting setting;
    Place place;
};

struct Rule {
    std::string name;  // empty for the root
    std::string displayName;
    std::string comment;
    int32_t matchType = 0;
    std::vector<Condition> conditions;
    std::vector<InactiveMark> inactive;
    std::vector<Task> tasks;
    std::vector<Rule> rules;
    Place place;
};

// An address list described by directory settings.
struct DirectoryList {
    std::string displayName;
    std::string comment;
    std::string server;
    uint32_t port = 0;
    std::string searchroot;
    uint32_t authentication = 0;
    uint32_t schematype = 0;
    std::string username;
    std::optional<std::string> password;  // absent: not dumped, or to be left as it is
    std::string filter;
};

// An address list whose addresses are in the store.
struct NormalList {
    std::string displayName;
    std::string comment;
    std::optional<std::vector<std::string>> addresses;  // in user order; absent: to be left as they are
};

using AddressList = std::variant<NormalList, DirectoryList>;

// Something that a program does with mail of a classification.
struct Action {
    std::string name;
    std::string displayName;
    std::string comment;
    uint32_t actionType = 0;
    Setting setting;
};

struct Classification {
    std::string name;
    std::string displayName;
    std::string comment;
    std::vector<Action> actions;
};

// Which task of an exclusive filter type survives.
enum class FilterPriority : uint32_t { Ascending = 0, Descending = 1 };

struct Policy {
    std::map<std::string, AddressList> lists;
    std::vector<Classification> classifications;  // by unique names; their order is kept, but has no meaning
    std::map<uint32_t, FilterPriority> exclusiveFilters;
    Rule root;
};

bool operator==(const Condition& a, const Condition& b);
bool operator==(const OutcomeText& a, const OutcomeText& b);
bool operator==(const Action& a, const Action& b);
bool operator==(const Classification& a, const Classification& b);
bool operator==(const SettingKey& a, const SettingKey& b);
bool operator!=(const SettingKey& a, const SettingKey& b);

// The full path of a rule's child, and the full name of a rule's task: the path, a backslash that is not doubled
// after the root's, and the name.
std::string childName(const std::string& rulePath, const std::string& name);

// The tasks of the inactive marks, sorted.
std::vector<std::string> markedTasks(const Rule& rule);

// What first differs between two policies, as a text such as "the tasks of rule \Sales"; empty when they are equal.
// A password, or the addresses of a list, that one of them lacks count as equal, and so do addresses in another order
// or spelling, and classifications in another order.
std::string firstDifference(const Policy& a, const Policy& b);

}  // namespace tool
