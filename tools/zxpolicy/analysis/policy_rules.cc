#include "analysis/policy_rules.h"

#include <cstring>
#include <memory>
#include <optional>

#include "output/text.h"
#include "policy/policy_file.h"
#include "stored/list_store_reader.h"
#include "stored/names_of.h"
#include "stored/open_list.h"
#include "stored/policy_store_reader.h"

namespace tool {

namespace {

// Fills in the conditions that matching meets: a failure to read one is the end of them, and a text that is none leaves
// the one before it where it was.
void readConditions(const RuleHandle& handle, StoredRule& rule) {
    std::vector<StoredRule::Condition>& conditions = rule.conditions;
    for (uint32_t index = 0;; ++index) {
        _ZxPolAddrPairCond pair;
        // Sides without an end are nobody's.
        std::memset(&pair, 'x', sizeof pair);
        uint32_t size = sizeof pair;
        int result = ZXPOL_S_OK;
        zxpol_enumCondition(handle.get(), index, reinterpret_cast<unsigned char*>(&pair), &size, &result);
        rule.isOfOtherType = result == ZXPOL_E_NOT_SUPPORTED;
        if (ZX_FAILURE(result)) return;
        if (std::memchr(pair.sender, '\0', sizeof pair.sender) != nullptr) {
            conditions.push_back({pair.sender, pair.receiver});
        } else {
            conditions.push_back(conditions.empty() ? StoredRule::Condition{} : conditions.back());
            conditions.back().isReadable = false;
        }
    }
}

void addRule(const RuleHandle& handle, const std::string& path, const std::string& key, uint32_t parent,
             std::vector<StoredRule>& rules) {
    const auto number = static_cast<uint32_t>(rules.size());
    rules.push_back({path, key, parent, {}, {}});
    readConditions(handle, rules.back());
    if (number != 0) rules[parent].children.push_back(number);
    for (const std::string& name : namesOf(zxpol_enumRule, handle.get(), "the rules below rule " + oneLine(path))) {
        const std::string below = childName(path, name);
        int result = ZXPOL_S_OK;
        const RuleHandle child(zxpol_openRule(handle.get(), name.c_str(), &result));
        require(result, "cannot open rule " + oneLine(below));
        addRule(child, below, childRuleKey(key, name), number, rules);
    }
}

ConditionList readList(ZxPolAddrListHive& hive, const std::string& name) {
    ConditionList list;
    list.failure = ZXPOL_S_OK;
    const std::unique_ptr<ZxPolAddrList> opened(hive.openAddrList(name.c_str(), &list.failure));
    if (ZX_FAILURE(list.failure)) return list;
    opened->matchAddress("", nullptr, ZXPOL_WEIGHT_DOMAIN_FIRST, &list.failure);
    list.isDirectory = ZX_FAILURE(list.failure);
    if (!list.isDirectory) list.entries = readAddresses(enumerationOf(*opened), AddressOrder::User, listText(name));
    return list;
}

}  // namespace

std::optional<std::string> listAskedFor(const std::string& side) {
    if (side.empty() || side.front() != '(') return std::nullopt;
    return side.size() < 2 ? std::string() : side.substr(1, side.size() - 2);
}

StoredRules readStoredRules(const Store& store) {
    StoredRules stored;
    int result = ZXPOL_S_OK;
    const RuleHiveHandle hive(zxpol_openRuleHive(store.key(), 0, &result));
    const std::unique_ptr<ZxPolAddrListHive> lists(ZxPolAddrListHive::open(store.key(), &result));
    const RuleHandle root(zxpol_openRootRule(hive.get(), &result));
    require(result, "cannot open the policy in " + oneLine(store.location()));
    addRule(root, "\\", kRootRuleKey, 0, stored.rules);
    for (const StoredRule& rule : stored.rules) {
        for (const StoredRule::Condition& condition : rule.conditions) {
            for (const std::string& side : {condition.sender, condition.receiver}) {
                const std::optional<std::string> name = listAskedFor(side);
                if (name && stored.lists.count(*name) == 0) stored.lists.emplace(*name, readList(*lists, *name));
            }
        }
    }
    return stored;
}

}  // namespace tool
