// Address lists as the store has them.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "policy_store_reader.h"

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

// Throws a StoreError.
AddressList readStoredList(const Store& store, const ListHiveHandle& hive, const std::string& name, Secrets secrets);

}  // namespace tool
