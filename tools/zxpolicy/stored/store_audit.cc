#include "stored/store_audit.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <optional>

#include "output/text.h"
#include "policy/policy_check.h"
#include "policy/policy_file.h"
#include "policy/policy_limits.h"
#include "stored/address_audit.h"
#include "stored/raw_key.h"

namespace tool {

namespace {

// A value that must be there: its type, and for a text the most bytes of it.
struct Expected {
    const char* name;
    uint32_t type;
    size_t most;
};

using ExpectedValues = std::vector<Expected>;

// What is wrong with a value that belongs to a family such as "condition1", or nothing; absent when it belongs to none.
using FamilyCheck = std::function<std::optional<std::string>(const RawValue&)>;

// What is wrong with the form of a value, or the empty text.
std::string formFault(const RawValue& value, uint32_t type, size_t most) {
    if (value.type != type) return "is of the wrong type";
    if (type == ZXREG_NUMBER && value.data.size() != sizeof(uint32_t)) return "is no number of 4 bytes";
    if (type != ZXREG_STRING) return "";
    if (!isText(value)) return "is no text";
    return textFault(textOf(value), most);
}

const ExpectedValues kCommonValues{
    {"displayName", ZXREG_STRING, kMaxName}, {"comment", ZXREG_STRING, kMaxComment}, {"type", ZXREG_NUMBER, 0}};

const ExpectedValues kDirectoryValues{{"server", ZXREG_STRING, kMaxName},      {"port", ZXREG_NUMBER, 0},
                                      {"schematype", ZXREG_NUMBER, 0},         {"searchroot", ZXREG_STRING, kMaxName},
                                      {"authentication", ZXREG_NUMBER, 0},     {"username", ZXREG_STRING, kMaxName},
                                      {"password", ZXREG_PROTECTED_STRING, 0}, {"filter", ZXREG_STRING, kMaxFilter}};

std::optional<std::string> noFamily(const RawValue&) {
    return std::nullopt;
}

FamilyCheck textFamily(const char* prefix, size_t most) {
    return [=](const RawValue& value) -> std::optional<std::string> {
        if (!isNumbered(value.name, prefix)) return std::nullopt;
        return formFault(value, ZXREG_STRING, most);
    };
}

std::string childPrefix(std::string prefix, const std::string& name) {
    return prefix.append(name).append("\\");
}

constexpr const char* kDeeper = "lies deeper than a policy file can say";

class Audit {
public:
    explicit Audit(_ZxPolComHandle* store) : _store(store) {}

    std::vector<std::string> run(ListParts parts) {
        if (const KeyHandle lists = openRawKey(_store, "AddressList"); lists && parts == ListParts::All)
            lookAtLists(lists.get());
        if (const KeyHandle classifications = openRawKey(_store, "Classification"))
            lookAtClassifications(classifications.get());
        if (const KeyHandle hive = openRawKey(_store, "Rule")) lookAtRuleHive(hive.get());
        return std::move(_problems);
    }

private:
    void add(const std::string& where, const std::string& text) { _problems.push_back(where + " " + text); }

    void lookAtValues(_ZxPolComHandle* key, const std::string& where, const ExpectedValues& expected,
                      const FamilyCheck& family) {
        lookAtValues(rawValues(key), where, expected, family);
    }

    void lookAtValues(const std::vector<RawValue>& values, const std::string& where, const ExpectedValues& expected,
                      const FamilyCheck& family) {
        std::vector<const char*> found;
        for (const RawValue& value : values) {
            const std::string subject = "has a value " + inQuotes(value.name, kMaxName);
            const auto wanted = std::find_if(expected.begin(), expected.end(),
                                             [&](const Expected& entry) { return value.name == entry.name; });
            const std::optional<std::string> familyFault = family(value);
            if (wanted != expected.end()) {
                found.push_back(wanted->name);
                const std::string fault = formFault(value, wanted->type, wanted->most);
                if (!fault.empty()) add(where, std::string(subject).append(" that ").append(fault));
            } else if (!familyFault) {
                add(where, subject + " that is no part of a policy");
            } else if (!familyFault->empty()) {
                add(where, subject + " that " + *familyFault);
            }
        }
        for (const Expected& entry : expected)
            if (std::find(found.begin(), found.end(), entry.name) == found.end())
                add(where, "lacks its value " + inQuotes(entry.name));
    }

    void lookAtSubkeys(_ZxPolComHandle* key, const std::string& where, const std::vector<std::string>& allowed) {
        for (const std::string& name : rawSubkeys(key))
            if (std::find(allowed.begin(), allowed.end(), name) == allowed.end())
                add(where, "has a key " + inQuotes(name, kMaxName) + " that is no part of a policy");
    }

    void lookAtLists(_ZxPolComHandle* hive) {
        lookAtValues(hive, "the address lists' key", {}, noFamily);
        for (const std::string& name : rawSubkeys(hive))
            if (const KeyHandle list = openRawKey(hive, name))
                lookAtList(list.get(), "address list " + inQuotes(name, kMaxName));
    }

    void lookAtList(_ZxPolComHandle* key, const std::string& where) {
        const std::vector<RawValue> values = rawValues(key);
        const auto type = std::find_if(values.begin(), values.end(), [](const RawValue& value) {
            return value.name == "type" && value.type == ZXREG_NUMBER;
        });
        if (type != values.end() && numberOf(*type) > ZXPOL_ADDRLIST_DIRECTORY)
            return add(where, "is of type " + std::to_string(numberOf(*type)) + ", which is not known");
        if (type != values.end() && numberOf(*type) == ZXPOL_ADDRLIST_NORMAL)
            lookAtNormalList(values, where);
        else
            lookAtDirectoryList(values, where);
        lookAtSubkeys(key, where, {});
    }

    // A list whose kind was changed keeps the values of its old kind. They mean nothing.

    void lookAtNormalList(const std::vector<RawValue>& values, const std::string& where) {
        lookAtValues(values, where, kCommonValues, [](const RawValue& value) -> std::optional<std::string> {
            const bool isOfDirectory = std::any_of(kDirectoryValues.begin(), kDirectoryValues.end(),
                                                   [&](const Expected& entry) { return value.name == entry.name; });
            if (isOfDirectory) return "";
            if (!isAddressValue(value)) return std::nullopt;
            return addressValueFault(value);
        });
        for (const std::string& fault : storedAddressFaults(values))
            add(where, fault);
    }

    void lookAtDirectoryList(const std::vector<RawValue>& values, const std::string& where) {
        ExpectedValues expected = kCommonValues;
        expected.insert(expected.end(), kDirectoryValues.begin(), kDirectoryValues.end());
        lookAtValues(values, where, expected, [](const RawValue& value) -> std::optional<std::string> {
            return isAddressValue(value) ? std::make_optional<std::string>() : std::nullopt;
        });
    }

    void lookAtClassifications(_ZxPolComHandle* hive) {
        lookAtValues(hive, "the classifications' key", {}, noFamily);
        for (const std::string& name : rawSubkeys(hive))
            if (const KeyHandle classification = openRawKey(hive, name))
                lookAtClassification(classification.get(), "classification " + inQuotes(name, kMaxName));
    }

    void lookAtClassification(_ZxPolComHandle* key, const std::string& where) {
        lookAtValues(key, where, {{"displayName", ZXREG_STRING, kMaxName}, {"comment", ZXREG_STRING, kMaxComment}},
                     noFamily);
        lookAtSubkeys(key, where, {"actions"});
        forEachBelow(key, where, "actions", [&](_ZxPolComHandle* action, const std::string& name) {
            lookAtAction(action, "action " + inQuotes(name, kMaxName) + " of " + where);
        });
    }

    void lookAtAction(_ZxPolComHandle* key, const std::string& where) {
        lookAtValues(key, where,
                     {{"displayName", ZXREG_STRING, kMaxName},
                      {"comment", ZXREG_STRING, kMaxComment},
                      {"order", ZXREG_NUMBER, 0},
                      {"actionType", ZXREG_NUMBER, 0}},
                     noFamily);
        lookAtSubkeys(key, where, {"setting"});
        lookAtSettingKey(key, where);
    }

    void lookAtSettingKey(_ZxPolComHandle* key, const std::string& where) {
        if (const KeyHandle setting = openRawKey(key, "setting"))
            lookAtSetting(setting.get(), where, "", 1);
        else
            add(where, "lacks its key \"setting\"");
    }

    void lookAtRuleHive(_ZxPolComHandle* hive) {
        lookAtValues(hive, "the rules' key", {}, [](const RawValue& value) -> std::optional<std::string> {
            const bool isFilter = value.name.size() == 15 && value.name.compare(0, 7, "ExcluId") == 0 &&
                                  value.name.find_first_not_of("0123456789abcdef", 7) == std::string::npos;
            if (!isFilter) return std::nullopt;
            const std::string fault = formFault(value, ZXREG_NUMBER, 0);
            return fault.empty() && numberOf(value) > 1 ? "is neither 0 nor 1" : fault;
        });
        lookAtSubkeys(hive, "the rules' key", {"Mail"});
        if (const KeyHandle root = openRawKey(hive, "Mail")) lookAtRule(root.get(), "\\", 1);
    }

    // Another program may have nested rules and settings to any depth; what no file can say is not descended into.
    void lookAtRule(_ZxPolComHandle* key, const std::string& path, size_t depth) {
        const std::string where = "rule " + oneLine(path);
        if (depth > kMaxRuleDepth) return add(where, kDeeper);
        lookAtValues(key, where,
                     {{"displayName", ZXREG_STRING, kMaxName},
                      {"comment", ZXREG_STRING, kMaxComment},
                      {"order", ZXREG_NUMBER, 0},
                      {"matchType", ZXREG_NUMBER, 0}},
                     textFamily("condition", 2 * kMaxAddress + 1));
        lookAtMatchType(key, where);
        lookAtSubkeys(key, where, {"rules", "tasks", "inactive"});
        forEachBelow(key, where, "tasks", [&](_ZxPolComHandle* task, const std::string& name) {
            lookAtTask(task, "task " + oneLine(childName(path, name)));
        });
        const KeyHandle marks = openRawKey(key, "inactive");
        if (marks) {
            lookAtValues(marks.get(), "the inactive marks' key of " + where, {}, textFamily("inactive", kMaxName));
            lookAtSubkeys(marks.get(), "the inactive marks' key of " + where, {});
        } else {
            add(where, "lacks its key \"inactive\"");
        }
        forEachBelow(key, where, "rules", [&](_ZxPolComHandle* rule, const std::string& name) {
            lookAtRule(rule, childName(path, name), depth + 1);
        });
    }

    // A rule of another match type has no conditions that anyone could read.
    void lookAtMatchType(_ZxPolComHandle* key, const std::string& where) {
        const std::vector<RawValue> values = rawValues(key);
        const auto hasOtherType = [](const RawValue& value) {
            return value.name == "matchType" && value.type == ZXREG_NUMBER && numberOf(value) != 0;
        };
        const auto isCondition = [](const RawValue& value) { return isNumbered(value.name, "condition"); };
        if (std::any_of(values.begin(), values.end(), hasOtherType) &&
            std::any_of(values.begin(), values.end(), isCondition))
            add(where, "has conditions although its matchType is not 0");
    }

    template <class Visit>
    void forEachBelow(_ZxPolComHandle* key, const std::string& where, const char* container, Visit visit) {
        const KeyHandle parent = openRawKey(key, container);
        if (!parent) {
            add(where, "lacks its key " + inQuotes(container));
            return;
        }
        lookAtValues(parent.get(), "the " + std::string(container) + " key of " + where, {}, noFamily);
        for (const std::string& name : rawSubkeys(parent.get()))
            if (const KeyHandle child = openRawKey(parent.get(), name)) visit(child.get(), name);
    }

    void lookAtTask(_ZxPolComHandle* key, const std::string& where) {
        lookAtValues(key, where,
                     {{"displayName", ZXREG_STRING, kMaxName},
                      {"comment", ZXREG_STRING, kMaxComment},
                      {"order", ZXREG_NUMBER, 0},
                      {"filter", ZXREG_NUMBER, 0},
                      {"enable", ZXREG_NUMBER, 0},
                      {"overridable", ZXREG_NUMBER, 0}},
                     noFamily);
        for (const RawValue& value : rawValues(key)) {
            const bool isFlag = value.name == "enable" || value.name == "overridable";
            if (isFlag && value.type == ZXREG_NUMBER && numberOf(value) > 1)
                add(where, "has a value " + inQuotes(value.name) + " that is neither 0 nor 1");
        }
        lookAtSubkeys(key, where, {"setting", "Classification"});
        lookAtSettingKey(key, where);
        const KeyHandle outcomes = openRawKey(key, "Classification");
        if (!outcomes) return;
        lookAtSubkeys(outcomes.get(), "the outcomes' key of " + where, {});
        lookAtValues(outcomes.get(), "the outcomes' key of " + where, {}, [](const RawValue& value) {
            return std::make_optional(formFault(value, ZXREG_STRING, value.data.size()));
        });
    }

    void lookAtSetting(_ZxPolComHandle* key, const std::string& where, const std::string& prefix, size_t depth) {
        const std::vector<std::string> subkeys = rawSubkeys(key);
        const std::vector<RawValue> values = rawValues(key);
        if (depth > kMaxSettingDepth && !(subkeys.empty() && values.empty()))
            return add(where + ": what is below the setting " + inQuotes(prefix, 1024), kDeeper);
        std::vector<std::string> texts;
        for (const RawValue& value : values) {
            const std::string subject = "has a setting " + inQuotes(prefix + value.name, 1024);
            const bool isTwice = std::find(subkeys.begin(), subkeys.end(), value.name) != subkeys.end();
            if (isTwice) add(where, subject + " that is both a value and a key");
            if (value.name.find('\\') != std::string::npos) add(where, subject + " whose name contains a backslash");
            const std::string fault =
                value.type == ZXREG_PROTECTED_STRING ? "is protected, so that no file may say it"
                : value.type == ZXREG_MULTI_STRING
                    ? (splitTexts(value, texts) ? "" : "is no list of texts")
                    : formFault(value, value.type == ZXREG_NUMBER ? ZXREG_NUMBER : ZXREG_STRING, value.data.size());
            if (!fault.empty()) add(where, std::string(subject).append(" that ").append(fault));
        }
        for (const std::string& name : subkeys)
            if (const KeyHandle below = openRawKey(key, name))
                lookAtSetting(below.get(), where, childPrefix(prefix, name), depth + 1);
    }

    _ZxPolComHandle* _store;
    std::vector<std::string> _problems;
};

}  // namespace

std::vector<std::string> auditStore(_ZxPolComHandle* store, ListParts parts) {
    return Audit(store).run(parts);
}

}  // namespace tool
