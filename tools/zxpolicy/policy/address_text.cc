#include "policy/address_text.h"

#include <algorithm>

#include "addrlist/normal_addr_list.h"
#include "output/text.h"
#include "pattern/rfc2822_checker.h"
#include "policy/policy_check.h"

namespace tool {

std::string senderFromText(const std::string& text) {
    return text == "<>" ? "" : text;
}

std::string senderToText(const std::string& sender) {
    return sender.empty() ? "<>" : oneLine(sender);
}

std::string addressKey(const std::string& address) {
    std::string key(address.size() + 1, '\0');
    ZxPolRfc2822Checker::stripLocalPartBoundary(key.data(), address.c_str());
    return lowerCase(key.c_str());
}

std::string addressFault(const std::string& address) {
    std::string fault = textFault(address, kMaxAddress);
    if (fault.empty() && !ZxPolNormalAddrList::_isAddressValid(address.c_str()))
        fault = "is no address, and no pattern such as *@example.com or *@*.example.com";
    return fault;
}

AddressKeys keysOf(const std::vector<std::string>& addresses) {
    AddressKeys keys;
    keys.reserve(addresses.size());
    for (const std::string& address : addresses)
        keys.insert(addressKey(address));
    return keys;
}

std::vector<std::string> addressesBeyond(const std::vector<std::string>& addresses, const AddressKeys& keys) {
    std::vector<std::string> beyond;
    for (const std::string& address : addresses)
        if (keys.count(addressKey(address)) == 0) beyond.push_back(address);
    return beyond;
}

bool sameAddresses(const std::vector<std::string>& a, const std::vector<std::string>& b) {
    return a == b || (a.size() == b.size() && addressesBeyond(a, keysOf(b)).empty());
}

}  // namespace tool
