// Address lists as the store has them.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "stored/policy_store_reader.h"

namespace tool {

// Gives the address at an index of an open list: the last four arguments of the library's enumAddress.
using EnumerateAddress = std::function<void(uint32_t index, char* buffer, uint32_t* size, int* result)>;

enum class AddressOrder { User, Ascending };

// All addresses of a list, in the order asked for, whatever the environment asks for. `where` names the list in
// errors. Throws a StoreError.
std::vector<std::string> readAddresses(const EnumerateAddress& enumerate, AddressOrder order, const std::string& where);

// The number of addresses, found without reading all of them. Throws a StoreError.
uint32_t countAddresses(const EnumerateAddress& enumerate, const std::string& where);

// "address list NAME", the name in quotes.
std::string listText(const std::string& name);

// The names in the store's order. Makes no key where there is none. Throws a StoreError.
std::vector<std::string> readListNames(const Store& store);

// All lists by name, with their addresses. Makes no key where there is none. Throws a StoreError.
std::map<std::string, AddressList> readStoredLists(const Store& store, Secrets secrets);

}  // namespace tool
