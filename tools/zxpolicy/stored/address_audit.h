// Looks at the addresses that a store has for a list.
#pragma once

#include <string>
#include <vector>

#include "stored/raw_key.h"

namespace tool {

// Whether a value is one of those that hold the addresses of a list.
bool isAddressValue(const RawValue& value);

// What is wrong with the form of such a value, as the rest of a sentence, or the empty text.
std::string addressValueFault(const RawValue& value);

// One rest of a sentence for each address that is invalid or stands twice among the values of a list.
std::vector<std::string> storedAddressFaults(const std::vector<RawValue>& values);

}  // namespace tool
