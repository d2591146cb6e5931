#include "difference/list_diff.h"

#include <algorithm>

#include "difference/address_changes.h"
#include "difference/attribute_differences.h"

namespace tool {

namespace {

using Details = std::vector<std::string>;

// The first few of those addresses.
AddressSamples samplesOf(const std::vector<std::string>& addresses, size_t most) {
    const auto end = addresses.begin() + static_cast<std::ptrdiff_t>(std::min(most, addresses.size()));
    return {addresses.size(), {addresses.begin(), end}};
}

// Those of a normal list, or null where it does not say them. No other list has any, nor has one that is not there.
const std::vector<std::string>* addressesOf(const AddressList* list) {
    static const std::vector<std::string> kNoAddresses;
    const auto* normal = list == nullptr ? nullptr : std::get_if<NormalList>(list);
    if (normal == nullptr) return &kNoAddresses;
    return normal->addresses ? &*normal->addresses : nullptr;
}

void comparePasswords(const AddressList& before, const AddressList& after, Details& details) {
    const auto* old = std::get_if<DirectoryList>(&before);
    const auto* now = std::get_if<DirectoryList>(&after);
    if (old != nullptr && now != nullptr && old->password && now->password && old->password != now->password)
        details.emplace_back("password");
}

// Either list may be missing.
void compareAddresses(const std::string& name, const AddressList* before, const AddressList* after, size_t samples,
                      Details& details, PolicyDiff& diff) {
    const std::vector<std::string>* old = addressesOf(before);
    const std::vector<std::string>* now = addressesOf(after);
    if (old == nullptr || now == nullptr) return;
    const AddressChanges changes = addressChanges(*old, *now);
    if (changes.added.empty() && changes.removed.empty()) return;
    countChanges(details, "addresses", changes.added.size(), changes.removed.size());
    diff.lists[name] = {samplesOf(changes.added, samples), samplesOf(changes.removed, samples)};
}

}  // namespace

void compareLists(const AddressLists& before, const AddressLists& after, size_t samples, PolicyDiff& diff) {
    static const AddressList kNoList;
    for (const auto& [name, list] : before) {
        if (after.count(name) != 0) continue;
        Details details;
        compareAddresses(name, &list, nullptr, samples, details, diff);
        diff.changes.add(Change::Kind::Deleted, kListWord, name, details);
    }
    for (const auto& [name, list] : after) {
        const auto found = before.find(name);
        const AddressList* old = found == before.end() ? nullptr : &found->second;
        Details details = attributeDifferences(old == nullptr ? kNoList : *old, list);
        if (old != nullptr) comparePasswords(*old, list, details);
        compareAddresses(name, old, &list, samples, details, diff);
        const auto kind = old == nullptr ? Change::Kind::Created : Change::Kind::Changed;
        if (old == nullptr || !details.empty()) diff.changes.add(kind, kListWord, name, details);
    }
}

}  // namespace tool
