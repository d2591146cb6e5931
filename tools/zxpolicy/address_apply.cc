#include "address_apply.h"

#include <algorithm>

#include "address_text.h"
#include "text.h"
#include "tool_error.h"

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
    return {addressesBeyond(current, keysOf(wanted)), addressesBeyond(wanted, keysOf(current))};
}

void changeAddresses(const ListHandle& list, const std::string& where, const AddressChanges& changes) {
    int result = ZXPOL_S_OK;
    if (!changes.removed.empty()) zxpol_removeAddress(list.get(), textArray(changes.removed).data(), &result);
    require(result, "cannot remove addresses from " + where);
    if (!changes.added.empty()) zxpol_insertAddress(list.get(), textArray(changes.added).data(), &result);
    require(result, "cannot insert addresses into " + where);
}

void describeAddresses(std::vector<std::string>& details, const AddressChanges& changes) {
    std::string text;
    if (!changes.added.empty()) text = described("added", changes.added);
    if (!changes.removed.empty()) text.append(text.empty() ? "" : ", ").append(described("removed", changes.removed));
    if (!text.empty()) details.push_back("addresses: " + text);
}

std::vector<const char*> textArray(const std::vector<std::string>& texts) {
    std::vector<const char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (const std::string& text : texts)
        pointers.push_back(text.c_str());
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace tool
