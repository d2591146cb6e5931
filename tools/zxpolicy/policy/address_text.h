// Addresses as texts: those of senders, which of a list are the same, and which it may hold.
#pragma once

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace tool {

// Takes <> for the null sender, the empty text.
std::string senderFromText(const std::string& text);
// The other way round, fit for a line.
std::string senderToText(const std::string& sender);

// What makes two addresses of a list the same: letter case and quotes around words of the local part do not count.
std::string addressKey(const std::string& address);

// What is wrong with an address for a list, as the rest of a sentence, or the empty text.
std::string addressFault(const std::string& address);

using AddressKeys = std::unordered_set<std::string>;
AddressKeys keysOf(const std::vector<std::string>& addresses);

// The addresses whose keys are not among `keys`, in their order.
std::vector<std::string> addressesBeyond(const std::vector<std::string>& addresses, const AddressKeys& keys);

// Whether two lists without duplicates hold the same addresses, in whatever order.
bool sameAddresses(const std::vector<std::string>& a, const std::vector<std::string>& b);

}  // namespace tool
