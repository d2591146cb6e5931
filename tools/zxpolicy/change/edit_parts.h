// What changes of rules, tasks, classifications and actions have in common.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "output/text.h"
#include "policy/policy_check.h"
#include "policy/policy_file.h"
#include "result_names.h"
#include "stored/policy_path.h"
#include "tool_error.h"
#include "zxpolicy.h"

namespace tool {

// What is to be set of the texts that everything has; absent: left as it is.
struct TextEdit {
    std::optional<std::string> displayName;
    std::optional<std::string> comment;
};

// Changes of settings, as the command line gives them: PATH=VALUE, the value written as in a policy file.
struct SettingEdit {
    std::vector<std::string> set;
    std::vector<std::string> removed;
};

// Throws a UsageError for a text that is too long.
void checkTexts(const TextEdit& texts);

// The two sides of NAME=VALUE; `what` names it in the UsageError that is thrown for anything else.
std::pair<std::string, std::string> splitAssignment(const std::string& text, const std::string& what);

// Throws a PolicyError for a setting to be removed that is not there, a UsageError for one that no file could say.
void editSetting(Setting& setting, const SettingEdit& edit, const std::string& what);

// Throws a PolicyError for something new, which `what` names, beside something of the same name.
[[noreturn]] void failForNamesake(const std::string& what, const std::string& other);

// Fails for a key that one of the map differs from in nothing but letter case.
template <class Map>
void requireNoNamesake(const Map& items, const std::string& key, const std::string& what) {
    for (const auto& [other, value] : items)
        if (other != key && lowerCase(other) == lowerCase(key)) failForNamesake(what, other);
}

// Whether an inactive mark is for the task of this full name.
bool isMarkFor(const InactiveMark& mark, const std::string& task);
// False when the rule has no such mark.
bool removeMark(Rule& rule, const std::string& task);

// The options with their path as the policy has it. Throws a UsageError.
template <class Options>
Options withFullPath(Options options) {
    options.path = fullPath(options.path);
    return options;
}

template <class Item>
void editTexts(Item& item, const TextEdit& texts) {
    checkTexts(texts);
    if (texts.displayName) item.displayName = *texts.displayName;
    if (texts.comment) item.comment = *texts.comment;
}

// Puts an item at a position from 1; without one, or behind the last, at the end.
template <class Item>
void insertAt(std::vector<Item>& items, Item item, std::optional<uint32_t> position) {
    const size_t index = position ? std::min<size_t>(*position - 1, items.size()) : items.size();
    items.insert(items.begin() + static_cast<std::ptrdiff_t>(index), std::move(item));
}

// Adds a new item of this name, which no sibling may have, in whatever letter case; `what` names it.
template <class Item>
void addNamed(std::vector<Item>& items, Item item, std::optional<uint32_t> position, const std::string& what) {
    const std::string fault = nameFault(item.name);
    if (!fault.empty()) throw UsageError("the name of " + what + " " + fault);
    for (const Item& other : items)
        if (lowerCase(other.name) == lowerCase(item.name)) failForNamesake(what, other.name);
    insertAt(items, std::move(item), position);
}

template <class Item>
void removeNamed(std::vector<Item>& items, const std::string& name, const std::string& what) {
    const auto found = findNamed(items, name);
    if (found == items.end()) failForMissing(what);
    items.erase(found);
}

template <class Item>
void moveNamed(std::vector<Item>& items, const std::string& name, std::optional<uint32_t> position,
               const std::string& what) {
    const auto found = findNamed(items, name);
    if (found == items.end()) failForMissing(what);
    Item item = std::move(*found);
    items.erase(found);
    insertAt(items, std::move(item), position);
}

}  // namespace tool
