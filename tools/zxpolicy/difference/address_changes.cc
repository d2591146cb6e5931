#include "difference/address_changes.h"

#include <algorithm>
#include <unordered_map>

#include "output/text.h"
#include "policy/address_text.h"

namespace tool {

namespace {

constexpr size_t kSamples = 3;

// Such as: added 5 ("a@b.c", "d@e.f", "g@h.i", ...)
std::string described(const char* word, const std::vector<std::string>& addresses) {
    std::string text = std::string(word) + " " + grouped(addresses.size());
    for (size_t i = 0; i < std::min(kSamples, addresses.size()); ++i)
        text += (i == 0 ? " (" : ", ") + inQuotes(addresses[i]);
    return text + (addresses.size() > kSamples ? ", ...)" : ")");
}

}  // namespace

AddressChanges addressChanges(const std::vector<std::string>& current, const std::vector<std::string>& wanted) {
    if (current == wanted) return {};
    // Making the keys takes the longest: each address has its key made once.
    std::unordered_map<std::string, size_t> indexOf;
    indexOf.reserve(current.size());
    for (size_t i = 0; i < current.size(); ++i)
        indexOf.emplace(addressKey(current[i]), i);
    AddressChanges changes;
    std::vector<bool> isKept(current.size(), false);
    for (const std::string& address : wanted) {
        const auto found = indexOf.find(addressKey(address));
        if (found == indexOf.end())
            changes.added.push_back(address);
        else
            isKept[found->second] = true;
    }
    for (size_t i = 0; i < current.size(); ++i)
        if (!isKept[i]) changes.removed.push_back(current[i]);
    return changes;
}

void describeAddresses(std::vector<std::string>& details, const AddressChanges& changes) {
    std::string text;
    if (!changes.added.empty()) text = described("added", changes.added);
    if (!changes.removed.empty()) text.append(text.empty() ? "" : ", ").append(described("removed", changes.removed));
    if (!text.empty()) details.push_back("addresses: " + text);
}

}  // namespace tool
