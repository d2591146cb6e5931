#include "policy/policy_file.h"

#include <algorithm>
#include <tuple>

#include "policy/address_text.h"

namespace tool {

namespace {

auto plainFields(const DirectoryList& list) {
    return std::tie(list.displayName, list.comment, list.server, list.port, list.searchroot, list.authentication,
                    list.schematype, list.username, list.filter);
}

bool same(const DirectoryList& a, const DirectoryList& b) {
    const bool bothHavePasswords = a.password && b.password;
    return plainFields(a) == plainFields(b) && (!bothHavePasswords || a.password == b.password);
}

bool same(const NormalList& a, const NormalList& b) {
    const bool bothHaveAddresses = a.addresses && b.addresses;
    return std::tie(a.displayName, a.comment) == std::tie(b.displayName, b.comment) &&
           (!bothHaveAddresses || sameAddresses(*a.addresses, *b.addresses));
}

bool sameList(const AddressList& a, const AddressList& b) {
    if (a.index() != b.index()) return false;
    return std::visit([&](const auto& list) { return same(list, std::get<std::decay_t<decltype(list)>>(b)); }, a);
}

bool sameTask(const Task& a, const Task& b) {
    const auto fields = [](const Task& task) {
        return std::tie(task.name, task.displayName, task.comment, task.filter, task.enable, task.overridable,
                        task.outcomes, task.setting);
    };
    return fields(a) == fields(b);
}

std::map<std::string, Classification> byName(const std::vector<Classification>& classifications) {
    std::map<std::string, Classification> sorted;
    for (const Classification& classification : classifications)
        sorted.emplace(classification.name, classification);
    return sorted;
}

std::string ruleDifference(const std::string& path, const Rule& a, const Rule& b) {
    if (a.displayName != b.displayName || a.comment != b.comment || a.matchType != b.matchType)
        return "the attributes of rule " + path;
    if (a.conditions != b.conditions) return "the conditions of rule " + path;
    if (markedTasks(a) != markedTasks(b)) return "the inactive marks of rule " + path;
    if (!std::equal(a.tasks.begin(), a.tasks.end(), b.tasks.begin(), b.tasks.end(), sameTask))
        return "the tasks of rule " + path;
    const auto sameName = [](const Rule& x, const Rule& y) { return x.name == y.name; };
    if (!std::equal(a.rules.begin(), a.rules.end(), b.rules.begin(), b.rules.end(), sameName))
        return "the rules below rule " + path;
    for (size_t i = 0; i < a.rules.size(); ++i) {
        std::string found = ruleDifference(childName(path, a.rules[i].name), a.rules[i], b.rules[i]);
        if (!found.empty()) return found;
    }
    return "";
}

}  // namespace

bool PathOrder::operator()(const std::string& a, const std::string& b) const {
    const auto rank = [](char c) { return c == '\\' ? 0 : static_cast<unsigned char>(c) + 1; };
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                        [&](char x, char y) { return rank(x) < rank(y); });
}

bool operator==(const Condition& a, const Condition& b) {
    return a.sender == b.sender && a.receiver == b.receiver;
}
bool operator==(const OutcomeText& a, const OutcomeText& b) {
    return a.text == b.text;
}
bool operator==(const Action& a, const Action& b) {
    const auto fields = [](const Action& action) {
        return std::tie(action.name, action.displayName, action.comment, action.actionType, action.setting);
    };
    return fields(a) == fields(b);
}
bool operator==(const Classification& a, const Classification& b) {
    const auto fields = [](const Classification& entry) {
        return std::tie(entry.name, entry.displayName, entry.comment, entry.actions);
    };
    return fields(a) == fields(b);
}
bool operator==(const SettingKey&, const SettingKey&) {
    return true;
}
bool operator!=(const SettingKey&, const SettingKey&) {
    return false;
}

std::string childName(const std::string& rulePath, const std::string& name) {
    return rulePath == "\\" ? rulePath + name : rulePath + "\\" + name;
}

std::vector<std::string> markedTasks(const Rule& rule) {
    std::vector<std::string> tasks;
    tasks.reserve(rule.inactive.size());
    for (const InactiveMark& mark : rule.inactive)
        tasks.push_back(mark.task);
    std::sort(tasks.begin(), tasks.end());
    return tasks;
}

std::string firstDifference(const Policy& a, const Policy& b) {
    const auto sameEntry = [](const auto& x, const auto& y) {
        return x.first == y.first && sameList(x.second, y.second);
    };
    if (!std::equal(a.lists.begin(), a.lists.end(), b.lists.begin(), b.lists.end(), sameEntry))
        return "the address lists";
    if (byName(a.classifications) != byName(b.classifications)) return "the classifications";
    if (a.exclusiveFilters != b.exclusiveFilters) return "the exclusive filters";
    return ruleDifference("\\", a.root, b.root);
}

}  // namespace tool
